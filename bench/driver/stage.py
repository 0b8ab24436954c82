"""What is on the screen while recorders are measured."""

import time
from contextlib import ExitStack

from processes import Program

OVERLAYS = "full+overlays"
NAMES = ["still", "small", "scroll", "full", OVERLAYS]


class Stage:
    """A scene; with its overlays also a compositor, which transparent windows need. The other scenes have none: its
    work is no recorder's."""

    def __init__(self, name, tools):
        self.name = name
        self.scene = name.removesuffix("+overlays")
        self.scene_program = tools / "zivra-bench-scene"
        self.excluded = None # the number of the window that is to be left out
        self._stack = ExitStack()
        self._shown = self._stack.enter_context(Program(self.scene_program, self.scene))
        self._shown.run_for(2)
        if self.has_overlays:
            self._stack.enter_context(Program("picom", "--config", "/dev/null", "--backend", "xrender"))
            time.sleep(1)
            overlays = self._stack.enter_context(Program(tools / "zivra-bench-overlays"))
            overlays.run_for(1)
            self.excluded = overlays.output.strip()

    @property
    def has_overlays(self):
        return self.name == OVERLAYS

    @property
    def compared_area(self):
        """A filter for the part of the picture that no overlay touches."""
        return "crop=1280:900:640:0" if self.has_overlays else "null"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._stack.close()

    def close(self):
        """Ends it, and returns the numbers of the frames that were on the screen."""
        self._stack.close()
        return [int(line) for line in self._shown.output.split()]
