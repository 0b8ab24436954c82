"""Inside a private desktop: shows each scene, records it with each recorder, and prints and writes what they cost and
what came of it. Started by scripts/bench."""

import argparse
import pathlib
import sys
import time

import report
import stage
from film import Film
from processes import Program, cpu_seconds, x_server
from recorders import FFmpeg, Zivra

ROOT = pathlib.Path(__file__).resolve().parents[2]
SETTLE = 1.5 # seconds from the start of a recorder to its measurement
SECONDS = 10 # measured


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("--quick", action="store_true", help="once instead of three times, and fewer recorders")
    parser.add_argument("--repeat", type=int, help="how many times")
    parser.add_argument("--scenes", help=f"some of {','.join(stage.NAMES)}")
    parser.add_argument("--recorders", help="some of zivra,ffmpeg-veryfast,ffmpeg-superfast, and the latter two with "
                        "-yuv420p")
    parser.add_argument("--zivra", help="the program to measure, instead of this build's")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    return parser.parse_args()


class Bench:
    def __init__(self, options):
        self._tools = options.build / "bench"
        self._is_quick = options.quick
        self._repeat = options.repeat or (1 if options.quick else 3)
        self._scenes = options.scenes.split(",") if options.scenes else stage.NAMES
        self._wanted = options.recorders.split(",") if options.recorders else None
        self._known = [Zivra(options.zivra or options.build / "zivra", self._tools),
                       FFmpeg("veryfast"), FFmpeg("superfast"),
                       FFmpeg("veryfast", "yuv420p"), FFmpeg("superfast", "yuv420p")]
        self._movies = pathlib.Path.home() # the private desktop's, which vanishes with it
        self.is_whole = not (options.scenes or options.recorders or options.zivra)
        self.overlay_frames = 0
        self.overlay_faults = []

    def runs(self):
        return [run for _ in range(self._repeat) for scene in self._scenes for run in self._round(scene)]

    def _recorders(self, scene):
        if self._wanted:
            return [recorder for recorder in self._known if recorder.name in self._wanted]
        takes_all = not self._is_quick and scene in ("small", "full")
        return self._known if takes_all else self._known[:3]

    def _round(self, scene):
        """Every recorder once, one after the other, on the same scene."""
        takes = []
        with stage.Stage(scene, self._tools) as shown:
            idle = x_alone()
            for recorder in self._recorders(scene):
                movie, costs = self._record(recorder, shown)
                costs["x_cpu_s"] -= idle
                takes.append((recorder.name, Film(movie), costs))
            numbers = shown.close()
        for name, film, costs in takes:
            fps, dropped = film.arrivals(numbers)
            run = {"scene": scene, "recorder": name, **costs, "fps": fps, "dropped": dropped,
                   "mbit_s": film.megabits_per_second,
                   "ssim_db": film.similarity(shown.scene_program, shown.scene, shown.compared_area)}
            if shown.has_overlays and name == Zivra.name:
                self._check_overlays(film)
            film.path.unlink()
            print(f"{scene} {name}: " + ", ".join(f"{figure} {run[figure]:.3f}" for figure in report.FIGURES),
                  file=sys.stderr)
            yield run

    def _record(self, recorder, shown):
        """Runs a recorder for the measured seconds. Returns its movie and its costs."""
        server = x_server()
        with Program(*recorder.command(self._movies, shown.excluded)) as program:
            program.run_for(SETTLE)
            began, x_began, start = cpu_seconds(program.pid), cpu_seconds(server), time.monotonic()
            program.run_for(SECONDS)
            ended, x_ended, seconds = cpu_seconds(program.pid), cpu_seconds(server), time.monotonic() - start
            program.stop()
            costs = {"cpu_s": (ended - began) * SECONDS / seconds, "x_cpu_s": (x_ended - x_began) * SECONDS / seconds,
                     "rss_mb": program.peak_memory / 2**20}
            return recorder.movie(self._movies, program.output), costs

    def _check_overlays(self, film):
        with_bar, without_stroke = film.overlay_faults()
        self.overlay_frames += len(film.numbers)
        if with_bar:
            self.overlay_faults.append(f"{with_bar} frames show the excluded bar")
        if without_stroke:
            self.overlay_faults.append(f"{without_stroke} frames lack the kept stroke")

    def notes(self):
        how = f"""Each scene shows 30 frames a second on a 1920x1080 X server without a screen, and each recorder
records it in the same run, one after the other; the figures are medians of {self._repeat} such rounds. CPU time is that of {SECONDS} seconds
that begin {SETTLE} seconds after the recorder's start; *ratio* is that to `ffmpeg-veryfast`. *X server* is what the
server spends more than with the scene alone. The scenes draw the number of each frame into it: *frames/s* counts the
distinct ones in the movie, *dropped* those shown during the take and missing in it, and SSIM compares the brightness of
frames spread over the movie with the true ones of their numbers. `ffmpeg-veryfast` and `ffmpeg-superfast` are
`ffmpeg -f x11grab -framerate 30 -c:v libx264 -preset PRESET -b:v 9331200 -g 60`, which encodes the colours in full
resolution (4:4:4); with `-yuv420p` they are told `-pix_fmt yuv420p`, what Zivra makes and every player shows."""
        overlays = f"""In `{stage.OVERLAYS}` a compositor runs, Zivra leaves out an opaque bar that is dragged about and keeps a transparent
sheet with a stroke; ffmpeg records both. SSIM is that of the part beside them. Of Zivra's {self.overlay_frames} frames
there, """
        overlays += "; ".join(self.overlay_faults) or "none shows the bar, and all show the stroke"
        return [how, overlays + "."]


def x_alone():
    """What the server spends without a recorder, in the same time."""
    server = x_server()
    began, start = cpu_seconds(server), time.monotonic()
    time.sleep(SECONDS / 2)
    return (cpu_seconds(server) - began) * SECONDS / (time.monotonic() - start)


def main():
    bench = Bench(arguments())
    results = list(report.medians(bench.runs()))
    print(report.table(results))
    (ROOT / "build" / "bench" / "results.jsonl").write_text(report.json_lines(results), encoding="utf-8")
    if bench.is_whole:
        (ROOT / "bench" / "RESULTS.md").write_text(report.page(results, bench.notes()), encoding="utf-8")
    if bench.overlay_faults:
        sys.exit("bench: " + "; ".join(bench.overlay_faults))


main()
