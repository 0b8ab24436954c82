"""The recorders that are compared. Each has a name, a command, and the place of its movie."""

import os
import pathlib


class Zivra:
    """The program itself, or, where a window is to be left out, its recorder alone, which can be told so."""

    name = "zivra"

    def __init__(self, program, tools):
        self._program = program
        self._tools = tools

    def command(self, folder, excluded):
        if excluded is None:
            return [self._program, "record"]
        return [self._tools / "zivra-bench-record", folder / "excluding.mp4", excluded]

    def movie(self, folder, output):
        return pathlib.Path(output.strip()) if output else folder / "excluding.mp4"


class FFmpeg:
    """Records whatever is on the screen. Without a pixel format it keeps the colours' full resolution, which
    many players do not show."""

    def __init__(self, preset, pixel_format=None):
        self.name = f"ffmpeg-{preset}" + (f"-{pixel_format}" if pixel_format else "")
        self._preset = preset
        self._pixel_format = ["-pix_fmt", pixel_format] if pixel_format else []

    def command(self, folder, excluded):
        del excluded # it cannot
        return ["ffmpeg", "-v", "error", "-nostdin", "-y", "-f", "x11grab", "-framerate", "30", "-i",
                os.environ["DISPLAY"], "-c:v", "libx264", "-preset", self._preset, "-b:v", "9331200", "-g", "60",
                *self._pixel_format, self.movie(folder, "")]

    def movie(self, folder, output):
        del output
        return folder / f"{self.name}.mp4"
