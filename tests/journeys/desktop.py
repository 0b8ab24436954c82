"""Drives the program and the private desktop around it."""

import json
import math
import os
import signal
import statistics
import subprocess
import time
import unittest
from pathlib import Path

from movie import Movie, sound_offsets

ZIVRA = os.environ["ZIVRA"]
LIBRARY = Path(subprocess.run(["xdg-user-dir", "VIDEOS"], check=True, capture_output=True, text=True).stdout.strip()) / "Zivra"
DEFAULTS = Path(os.environ["XDG_CONFIG_HOME"]) / "io.quillbeck.zivra" / "defaults.json"
SETTINGS = {"mode": "screenOnly", "countdown": False, "micEnabled": False, "showPanelOnLaunch": False,
            "openLibraryAfterRecording": False}


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, timeout=60, check=False, **options)


def xdotool(*arguments):
    return subprocess.run(["xdotool", *map(str, arguments)], check=True, capture_output=True, text=True).stdout.strip()


def until(what, condition, seconds=15):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.02)
    raise AssertionError(f"{what} did not happen")


def window_named(title):
    return run("xdotool", "search", "--onlyvisible", "--name", title).stdout.split()


def panel(title):
    """Left, top, width and height of one of our panels while it is on the screen, else None."""
    found = window_named(f"^{title}$")
    if not found:
        return None
    shape = dict(part.split("=") for part in xdotool("getwindowgeometry", "--shell", found[0]).split())
    return tuple(int(shape[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))


class Screenshot:
    """A part of the screen as it is now, without the pointer."""

    def __init__(self, left, top, width, height):
        self.size = f"{width}x{height}"
        self.pixels = self._decode("-f", "x11grab", "-draw_mouse", "0", "-video_size", self.size, "-i",
                                   f"{os.environ['DISPLAY']}+{left},{top}", "-frames:v", "1")

    @staticmethod
    def _decode(*source):
        return subprocess.run(["ffmpeg", "-nostdin", "-v", "error", *source, "-pix_fmt", "rgb24", "-f", "rawvideo", "-"],
                              check=True, capture_output=True).stdout

    def save(self, path):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "rgb24", "-s", self.size, "-i", "-",
                        "-update", "1", str(path)], check=True, input=self.pixels)

    def difference(self, path):
        """How far off the pixels are, as a square mean, from 0 to 255."""
        other = self._decode("-i", str(path))
        if len(other) != len(self.pixels):
            return 255
        return math.sqrt(sum((one - two) ** 2 for one, two in zip(self.pixels, other)) / len(other))


def clipboard(kind):
    return run("xclip", "-selection", "clipboard", "-o", "-t", kind).stdout


class Journey(unittest.TestCase):
    """Each test begins with an empty library and the settings above, and ends what it started."""

    def setUp(self):
        self.write_settings()
        LIBRARY.mkdir(parents=True, exist_ok=True)
        for movie in LIBRARY.iterdir():
            movie.unlink()

    def start(self, *command, **options):
        process = subprocess.Popen(command, text=True, **options)

        def end():
            if process.poll() is None:
                process.terminate()
            process.communicate(timeout=20)

        self.addCleanup(end)
        return process

    def scene(self, *arguments, title="Zivra scene"):
        process = self.start(os.environ["ZIVRA_SCENE"], "--title", title, *map(str, arguments))
        until("the scene", lambda: window_named(f"^{title}$"))
        time.sleep(1.2)  # its sound has settled
        return process

    def record(self, *arguments, seconds=2):
        """A take from the shell: the finished process."""
        return run(ZIVRA, "record", "--seconds", str(seconds), *map(str, arguments))

    def recorded(self, *arguments, seconds=2):
        """The movie of a take from the shell."""
        done = self.record(*arguments, seconds=seconds)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        movie = Movie(done.stdout.strip())
        self.assertEqual(movie.complaints, "")
        return movie

    def write_settings(self, **others):
        DEFAULTS.parent.mkdir(parents=True, exist_ok=True)
        DEFAULTS.write_text(json.dumps({**SETTINGS, **others}))

    def resident(self, **settings):
        """The program in the tray, with its hot keys working."""
        self.write_settings(**settings)
        process = self.start(ZIVRA, stderr=subprocess.PIPE)
        until("the program", self.is_resident)
        return process

    @staticmethod
    def is_resident():
        """It answers, which it does once it has its hot keys."""
        asked = run("dbus-send", "--session", "--print-reply", "--dest=io.quillbeck.zivra", "/io/quillbeck/zivra",
                    "org.freedesktop.DBus.Introspectable.Introspect")
        return "org.freedesktop.Application" in asked.stdout

    @staticmethod
    def press(key, then=0.0):
        """One of the program's hot keys; then the user waits."""
        xdotool("key", f"alt+shift+{key}")
        time.sleep(then)

    @staticmethod
    def files():
        return sorted(LIBRARY.glob("[!.]*"))

    def handed_over(self):
        """The movie that the clipboard refers to, once it does."""
        until("the movie on the clipboard", lambda: "file://" in clipboard("text/uri-list"))
        self.assertEqual(len(self.files()), 1)
        return Movie(self.files()[0])

    def assert_in_step(self, movie, tolerance=0.040):
        """Flashes and bursts belong together; a busy machine may be late with one."""
        offsets = sound_offsets(movie.frames(), movie.sound())
        self.assertTrue(offsets, "no flash was seen or no burst heard")
        self.assertLess(abs(statistics.median(offsets)), tolerance, offsets)
        return offsets

    def interrupt(self, process):
        process.send_signal(signal.SIGINT)
        return process.communicate(timeout=30)
