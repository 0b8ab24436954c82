"""What is in a recorded movie of a scene: which of its frames, and how true they are."""

import json
import re
import subprocess
from functools import cached_property

CELLS = 18
STRIP = "crop=360:20:780:212" # where the scenes draw their number
FRAMES_COMPARED = 60


def _number(cells):
    bits = [cell > 128 for cell in cells]
    if not bits[0] or sum(bits[1:-1]) % 2 != bits[-1]:
        return None
    return sum(bit << (16 - place) for place, bit in enumerate(bits[1:-1], 1))


class Film:
    def __init__(self, path):
        self.path = path

    @cached_property
    def numbers(self):
        """The scene's number in each frame, None where it cannot be read."""
        cells = subprocess.run(
            ["ffmpeg", "-v", "error", "-i", self.path, "-map", "0:v:0", "-fps_mode", "passthrough", "-vf",
             f"{STRIP},scale={CELLS}:1:flags=area", "-pix_fmt", "gray", "-f", "rawvideo", "-"],
            check=True, capture_output=True).stdout
        return [_number(cells[start:start + CELLS]) for start in range(0, len(cells), CELLS)]

    @cached_property
    def megabits_per_second(self):
        facts = json.loads(subprocess.run(
            ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "stream=duration:packet=size",
             "-of", "json", self.path], check=True, capture_output=True).stdout)
        size = sum(int(packet["size"]) for packet in facts["packets"])
        return size * 8 / float(facts["streams"][0]["duration"]) / 1e6

    def arrivals(self, shown):
        """Distinct frames a second, and the share of the frames that were shown meanwhile and are missing."""
        present = {number for number in self.numbers if number is not None}
        span = [number for number in shown if min(present) <= number <= max(present)]
        if len(span) < 2:
            return 0.0, 0.0
        seconds = (span[-1] - span[0] + 1) / 30
        return len(present) / seconds, 1 - len(present.intersection(span)) / len(span)

    def similarity(self, scene_program, scene, area="null"):
        """The structural similarity (SSIM) of the brightness of frames spread over the movie to the true ones,
        in dB. The true ones are converted to 12 bits, so that no recorder gains by rounding as the reference
        does. Brightness alone: what halving the colour's resolution loses is no fault of an encoder. `area` is
        a filter that both pass first."""
        readable = [index for index, number in enumerate(self.numbers) if number is not None]
        count = min(FRAMES_COMPARED, len(readable))
        chosen = [readable[index * len(readable) // count] for index in range(count)]
        wanted = "+".join(f"eq(n,{index})" for index in chosen)
        graph = (f"[0:v]select='{wanted}',settb=1/30,setpts=N,format=yuv420p12,{area}[movie];"
                 f"[1:v]scale=out_color_matrix=bt601:out_range=tv,format=yuv420p12,settb=1/30,setpts=N,{area}[truth];"
                 "[movie][truth]ssim")
        with subprocess.Popen([scene_program, scene, "--dump", ",".join(str(self.numbers[index]) for index in chosen)],
                              stdout=subprocess.PIPE) as truth:
            report = subprocess.run(
                ["ffmpeg", "-hide_banner", "-nostats", "-i", self.path, "-f", "rawvideo", "-pixel_format",
                 "bgr0", "-video_size", "1920x1080", "-framerate", "30", "-i", "pipe:0", "-lavfi", graph,
                 "-fps_mode", "passthrough", "-f", "null", "-"],
                check=True, stdin=truth.stdout, stderr=subprocess.PIPE).stderr.decode()
        found = re.search(r"SSIM Y:\S+ \((\S+)\)", report)
        return float(found.group(1))

    def overlay_faults(self):
        """How many frames show the overlays' bar, and how many lack a part of the sheet's stroke."""
        bar = self._cells("crop=1920:160:0:920", 96, 8)
        stroke = self._cells("crop=400:20:100:600", 20, 1)
        shows_bar = [any(red > 200 and blue > 200 and green < 60 for red, green, blue in frame) for frame in bar]
        has_stroke = [all(green > 200 and red < 60 and blue < 60 for red, green, blue in frame) for frame in stroke]
        return sum(shows_bar), len(has_stroke) - sum(has_stroke)

    def _cells(self, area, columns, rows):
        """For each frame the mean colours of the cells that an area is divided into."""
        raw = subprocess.run(
            ["ffmpeg", "-v", "error", "-i", self.path, "-map", "0:v:0", "-fps_mode", "passthrough", "-vf",
             f"{area},scale={columns}:{rows}:flags=area", "-pix_fmt", "rgb24", "-f", "rawvideo", "-"],
            check=True, capture_output=True).stdout
        size = columns * rows * 3
        return [[tuple(raw[cell:cell + 3]) for cell in range(start, start + size, 3)]
                for start in range(0, len(raw), size)]
