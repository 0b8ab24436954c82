"""Looks into a movie through ffprobe and ffmpeg: its tracks, its pictures and its sound."""

import array
import json
import math
import subprocess
from dataclasses import dataclass
from functools import cached_property

RATE = 48000
BURST_HERTZ = 2500


def _run(*command):
    return subprocess.run(command, check=True, capture_output=True).stdout


@dataclass
class Frame:
    """A decoded picture in 8-bit RGB. `time` is its presentation time in seconds."""

    time: float
    width: int
    height: int
    pixels: bytes

    def colour(self, x, y):
        """The mean colour of the 5x5 pixels around a point given as fractions of the sides."""
        column, row = int(x * self.width), int(y * self.height)
        places = [(3 * (r * self.width + c)) for r in range(row - 2, row + 3) for c in range(column - 2, column + 3)
                  if 0 <= r < self.height and 0 <= c < self.width]
        return tuple(sum(self.pixels[place + channel] for place in places) / len(places) for channel in range(3))

    def is_bright(self, x, y):
        return sum(self.colour(x, y)) > 3 * 128

    @property
    def number(self):
        """The number that the scene drew into the picture, or None when there is none to be read."""
        cells = [self.is_bright((cell + 0.5) / 18, 0.05) for cell in range(18)]
        bits = cells[1:17]
        if not cells[0] or sum(bits) % 2 != cells[17]:
            return None
        return int("".join("1" if bit else "0" for bit in bits), 2)

    @property
    def flashes(self):
        return self.is_bright(0.5, 0.15)


class Movie:
    def __init__(self, path):
        self.path = str(path)
        self.facts = json.loads(_run("ffprobe", "-v", "error", "-show_format", "-show_streams", "-of", "json", self.path))

    def streams(self, kind):
        return [stream for stream in self.facts["streams"] if stream["codec_type"] == kind]

    @property
    def duration(self):
        return float(self.facts["format"]["duration"])

    @property
    def size(self):
        video = self.streams("video")[0]
        return video["width"], video["height"]

    @cached_property
    def times(self):
        """The presentation times of the frames, in seconds."""
        lines = _run("ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "frame=pts_time", "-of",
                     "csv=p=0", self.path).decode().split()
        return [float(line.strip(",")) for line in lines]

    @cached_property
    def complaints(self):
        """What a full decode has to say; empty for a sound file."""
        return subprocess.run(["ffmpeg", "-v", "warning", "-i", self.path, "-fps_mode", "passthrough",
                               "-enc_time_base", "-1", "-f", "null", "-"], check=False,
                              capture_output=True).stderr.decode().strip()

    def frames(self, height=180):
        """All frames, scaled down."""
        width = max(2, round(self.size[0] * height / self.size[1] / 2) * 2)
        raw = _run("ffmpeg", "-v", "error", "-i", self.path, "-map", "0:v:0", "-fps_mode", "passthrough", "-vf",
                   f"scale={width}:{height}:flags=area", "-pix_fmt", "rgb24", "-f", "rawvideo", "-")
        size = width * height * 3
        return [Frame(time, width, height, raw[index * size:(index + 1) * size])
                for index, time in enumerate(self.times)]

    def sound(self, track=0):
        """The samples of an audio track, mono at 48 kHz, from the movie's time zero on."""
        return array.array("f", _run("ffmpeg", "-v", "error", "-i", self.path, "-map", f"0:a:{track}", "-af",
                                     "aresample=async=1:first_pts=0", "-ac", "1", "-ar", str(RATE), "-f", "f32le", "-"))


def loudness(samples, hertz):
    """How strong a tone is: its amplitude (Goertzel's algorithm)."""
    factor = 2 * math.cos(2 * math.pi * hertz / RATE)
    one = two = 0.0
    for sample in samples:
        one, two = sample + factor * one - two, one
    power = one * one + two * two - factor * one * two
    return 2 * math.sqrt(max(power, 0)) / max(len(samples), 1)


def burst_times(samples):
    """When the scene's bursts begin, in seconds."""
    step = RATE // 400
    strong = [loudness(samples[start:start + 2 * step], BURST_HERTZ) > 0.25
              for start in range(0, len(samples) - 2 * step, step)]
    return [(index + 1) * step / RATE for index in range(1, len(strong)) if strong[index] and not strong[index - 1]]


def flash_times(frames):
    return [frame.time for before, frame in zip(frames, frames[1:]) if frame.flashes and not before.flashes]


def sound_offsets(frames, samples):
    """For each flash: by how many seconds the burst that belongs to it comes after it."""
    bursts = burst_times(samples)
    return [min((burst - flash for burst in bursts), key=abs) for flash in flash_times(frames) if bursts]
