"""The figures as JSON lines and as a table."""

import datetime
import json
import os
import pathlib
import platform
import re
import statistics

PEER = "ffmpeg-veryfast"
FIGURES = {"cpu_s": 3, "x_cpu_s": 3, "fps": 2, "dropped": 4, "rss_mb": 1, "mbit_s": 2, "ssim_db": 2}


def medians(runs):
    """One result for each scene and recorder, in the order they were first run."""
    kinds = dict.fromkeys((run["scene"], run["recorder"]) for run in runs)
    for scene, recorder in kinds:
        same = [run for run in runs if (run["scene"], run["recorder"]) == (scene, recorder)]
        yield {"scene": scene, "recorder": recorder} | {
            figure: round(statistics.median(run[figure] for run in same), digits)
            for figure, digits in FIGURES.items()}


def json_lines(results):
    return "".join(json.dumps(result) + "\n" for result in results)


def _row(result, results):
    peer = next((other for other in results if (other["scene"], other["recorder"]) == (result["scene"], PEER)), None)
    ratio = f"{result['cpu_s'] / peer['cpu_s']:.3f}" if peer and peer["cpu_s"] > 0 else ""
    is_still = result["scene"] == "still"
    cells = [result["scene"], result["recorder"], f"{result['cpu_s']:.2f}", ratio, f"{result['x_cpu_s']:.2f}",
             "" if is_still else f"{result['fps']:.1f}", "" if is_still else f"{100 * result['dropped']:.1f} %",
             f"{result['rss_mb']:.0f}", f"{result['mbit_s']:.2f}", f"{result['ssim_db']:.2f}"]
    return f"| {' | '.join(cells)} |"


def table(results):
    results = list(results)
    return "\n".join([
        "| scene | recorder | CPU s | ratio | X server s | frames/s | dropped | memory MB | Mbit/s | SSIM dB |",
        "| --- | --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |",
        *(_row(result, results) for result in results)])


def machine():
    cpu = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"), re.MULTILINE)
    release = platform.freedesktop_os_release()["PRETTY_NAME"]
    return f"{os.cpu_count()} cores ({cpu.group(1) if cpu else platform.machine()}), {release}, Xvfb"


def page(results, notes):
    paragraphs = "\n\n".join(notes)
    return f"""# Benchmarks

{datetime.date.today():%Y-%m-%d}, on {machine()}.

{table(results)}

{paragraphs}
"""
