"""The program in the tray: its hot keys, its icon, its URLs."""

import os
import statistics
import subprocess
import time

from desktop import ZIVRA, Journey, clipboard, run, until, window_named, xdotool
from movie import Movie, burst_times, flash_times, loudness


class HotKeys(Journey):
    def test_from_a_hot_key_to_a_movie_on_the_clipboard(self):
        self.scene("--tone", 660)
        self.resident(systemAudio=True, micEnabled=True)
        self.press("l", then=3)
        self.press("l")
        movie = self.handed_over()
        self.assertAlmostEqual(movie.duration, 3, delta=0.5)
        self.assertEqual(movie.size, (1920, 1080))
        self.assertGreater(loudness(movie.sound(), 660), 0.05)
        self.assert_in_step(movie)
        self.assertIn("copy\nfile://", clipboard("x-special/gnome-copied-files"))

    def test_a_countdown_comes_first(self):
        self.scene("--still")
        self.resident(countdown=True, countdownSeconds=1)
        self.press("l", then=0.7)
        self.assertEqual(self.files(), [])
        self.press("l", then=2)
        self.press("l")
        self.assertLess(self.handed_over().duration, 2.4)

    def test_a_pause_leaves_no_gap_and_no_jump(self):
        self.scene("--tone", 0)
        self.resident(systemAudio=True)
        self.press("l", then=3)
        self.press("p", then=2.5)
        self.press("p", then=3)
        self.press("l")
        movie = self.handed_over()
        self.assertAlmostEqual(movie.duration, 6, delta=0.6)
        frames, sound = movie.frames(), movie.sound()
        self.assertLess(max(after - before for before, after in zip(movie.times, movie.times[1:])), 0.12)
        numbers = [(frame.time, frame.number) for frame in frames if frame.number is not None]
        jumps = [(time_, after - before) for (_, before), (time_, after) in zip(numbers, numbers[1:]) if after - before > 20]
        self.assertEqual(len(jumps), 1, "one cut, where the pause was")
        cut = jumps[0][0]
        self.assertAlmostEqual(jumps[0][1] / 30, 2.5, delta=0.5)
        bursts = burst_times(sound)
        for part in (lambda time_: time_ < cut - 0.1, lambda time_: time_ > cut + 0.1):
            offsets = [min(abs(burst - flash) for burst in bursts) for flash in filter(part, flash_times(frames))]
            self.assertLess(statistics.median(offsets), 0.040, (offsets, cut))

    def test_restart_begins_anew(self):
        self.scene()
        self.resident()
        self.press("l", then=2.5)
        self.press("r", then=2)
        self.press("l")
        movie = self.handed_over()
        self.assertAlmostEqual(movie.duration, 2, delta=0.5)

    def test_cancel_asks_and_both_answers_hold(self):
        self.scene("--geometry", "400x300+50+50")
        self.resident()
        self.press("l", then=2)
        self.press("c")
        until("the question", lambda: window_named("Zivra$"))
        time.sleep(0.5)
        xdotool("key", "Escape")
        until("the answer", lambda: len(window_named("^Zivra$")) == 0)
        time.sleep(1)
        self.press("l")
        self.assertAlmostEqual(self.handed_over().duration, 3, delta=0.6)

        time.sleep(1.1)
        self.press("l", then=1.5)
        self.assertEqual(len(self.files()), 2)
        self.press("c")
        until("the question", lambda: window_named("^Zivra$"))
        time.sleep(0.5)
        xdotool("key", "Return")
        until("the file's removal", lambda: len(self.files()) == 1)

    def test_the_program_ends_in_words_when_quitting_mid_take(self):
        self.scene()
        program = self.resident()
        self.press("l", then=3)
        program.terminate()
        program.wait(timeout=10)
        self.assertGreater(Movie(self.files()[0]).times[-1], 1)


class Tray(Journey):
    def setUp(self):
        super().setUp()
        self.start("trayer", "--edge", "top", "--align", "right", "--width", "200", "--widthtype", "pixel", "--height", "40")
        until("the tray", lambda: run("xdotool", "search", "--class", "trayer").stdout.split())

    def icon(self):
        """The middle of the icon: the one thing in the tray that is not its background."""
        tray = run("xdotool", "search", "--class", "trayer").stdout.split()[-1]
        children = run("xwininfo", "-id", tray, "-tree").stdout
        self.assertTrue(children)
        for line in children.splitlines():
            if "zivra" in line.lower():
                window = line.split()[0]
                shape = dict(part.split("=") for part in xdotool("getwindowgeometry", "--shell", int(window, 16)).split())
                return int(shape["X"]) + int(shape["WIDTH"]) // 2, int(shape["Y"]) + int(shape["HEIGHT"]) // 2
        return None

    def click(self, button):
        x, y = until("the icon", self.icon)
        xdotool("mousemove", x, y)
        time.sleep(0.2)
        xdotool("click", button)

    def test_a_left_click_finishes_and_the_menu_does_not(self):
        self.scene("--geometry", "400x300+50+50")
        program = self.resident()
        until("the icon", self.icon)
        self.press("l", then=1.5)
        self.click(3)
        time.sleep(0.7)
        xdotool("key", "Escape")
        self.assertEqual(clipboard("text/uri-list"), "")
        self.click(1)
        self.handed_over()
        self.click(3)
        time.sleep(0.7)
        xdotool("key", "Up")
        xdotool("key", "Return")
        self.assertEqual(program.wait(timeout=10), 0, "the menu's last entry quits")


class Routes(Journey):
    def test_a_second_start_hands_over_and_ends(self):
        program = self.resident()
        for urls in ([], ["zivra://record"], ["zivra://settings/shortcuts", "zivra://connect"], ["zivra://auth?token=x&state=y"]):
            second = run(ZIVRA, *urls)
            self.assertEqual((second.returncode, second.stderr), (0, ""), urls)
        self.assertEqual(run(ZIVRA, "movie.mp4").returncode, 2)
        self.assertIsNone(program.poll())
        self.press("l", then=1.5)
        self.press("l")
        self.handed_over()

    def test_without_a_bus_and_without_a_display(self):
        bare = {key: value for key, value in os.environ.items() if key != "DISPLAY"}
        done = run(ZIVRA, env=bare)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr.count("\n"), 1)
        lonely = {**os.environ, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}
        program = self.start(ZIVRA, env=lonely, stderr=subprocess.DEVNULL)
        time.sleep(2)
        self.assertIsNone(program.poll())
