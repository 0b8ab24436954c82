"""The recorders that are compared. Each has a name, a command, and a way to find its movie."""

import os
import pathlib


class Zivra:
    name = "zivra"

    def __init__(self, program):
        self._program = program

    def command(self, folder):
        del folder # it records into the desktop's folder for videos
        return [self._program, "record"]

    def movie(self, folder, output):
        del folder
        return pathlib.Path(output.strip().splitlines()[-1])


class FFmpeg:
    def __init__(self, preset, pixel_format=None):
        self.name = f"ffmpeg-{preset}" + (f"-{pixel_format}" if pixel_format else "")
        self._preset = preset
        self._pixel_format = ["-pix_fmt", pixel_format] if pixel_format else []

    def command(self, folder):
        return ["ffmpeg", "-v", "error", "-nostdin", "-y", "-f", "x11grab", "-framerate", "30", "-i",
                os.environ["DISPLAY"], "-c:v", "libx264", "-preset", self._preset, "-b:v", "9331200", "-g", "60",
                *self._pixel_format, self.movie(folder, "")]

    def movie(self, folder, output):
        del output
        return folder / f"{self.name}.mp4"
