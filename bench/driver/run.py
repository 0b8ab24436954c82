"""Inside a private desktop: shows each scene, records it with each recorder, and prints and writes what they cost and
what came of it. Started by scripts/bench."""

import argparse
import os
import pathlib
import statistics
import sys
import time

import report
from film import Film
from processes import Program, cpu_seconds, x_server
from recorders import FFmpeg, Zivra

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCENES = ["still", "small", "scroll", "full"]
SETTLE = 1.5 # seconds from the start of a recorder to its measurement
SECONDS = 10


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("--quick", action="store_true", help="one repetition instead of three")
    parser.add_argument("--repeat", type=int, help="how many repetitions")
    parser.add_argument("--scenes", default=",".join(SCENES), help="default: %(default)s")
    parser.add_argument("--recorders", help="default: all")
    parser.add_argument("--zivra", help="the program to measure, instead of this build's")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    options.repeat = options.repeat or (1 if options.quick else 3)
    options.scenes = options.scenes.split(",")
    return options


def recorders(options):
    known = [Zivra(options.zivra or options.build / "zivra"), FFmpeg("veryfast"), FFmpeg("superfast")]
    wanted = options.recorders.split(",") if options.recorders else [recorder.name for recorder in known]
    return [recorder for recorder in known if recorder.name in wanted]


def record(recorder, folder):
    """Runs a recorder for the measured seconds. Returns its movie and its costs."""
    server = x_server()
    with Program(*recorder.command(folder)) as program:
        program.run_for(SETTLE)
        began, x_began, start = cpu_seconds(program.pid), cpu_seconds(server), time.monotonic()
        program.run_for(SECONDS)
        ended, x_ended, seconds = cpu_seconds(program.pid), cpu_seconds(server), time.monotonic() - start
        output = program.stop()
    scale = SECONDS / seconds
    return recorder.movie(folder, output), {"cpu_s": (ended - began) * scale, "x_cpu_s": (x_ended - x_began) * scale,
                                            "rss_mb": program.peak_memory / 2**20}


def x_alone():
    """What the server does without a recorder, in the same time."""
    server = x_server()
    began, start = cpu_seconds(server), time.monotonic()
    time.sleep(SECONDS / 2)
    return (cpu_seconds(server) - began) * SECONDS / (time.monotonic() - start)


def round_of(scene, options, folder):
    """Every recorder once, one after the other, on the same scene."""
    scene_program = options.build / "bench" / "zivra-bench-scene"
    movies = []
    with Program(scene_program, scene) as shown:
        shown.run_for(3)
        idle = x_alone()
        for recorder in recorders(options):
            movie, costs = record(recorder, folder)
            costs["x_cpu_s"] -= idle
            movies.append((recorder.name, Film(movie), costs))
        numbers = [int(line) for line in shown.stop().split()]
    for name, film, costs in movies:
        fps, dropped = film.arrivals(numbers)
        run = {"scene": scene, "recorder": name, **costs, "fps": fps, "dropped": dropped,
               "mbit_s": film.megabits_per_second, "ssim_db": film.similarity(scene_program, scene)}
        film.path.unlink()
        print(f"{scene} {name}: " + ", ".join(f"{figure} {run[figure]:.3f}" for figure in report.FIGURES),
              file=sys.stderr)
        yield run


def main():
    options = arguments()
    folder = ROOT / "build" / "bench"
    runs = [run for _ in range(options.repeat) for scene in options.scenes for run in round_of(scene, options, folder)]
    results = list(report.medians(runs))
    print(report.table(results))
    (folder / "results.jsonl").write_text(report.json_lines(results), encoding="utf-8")


main()
