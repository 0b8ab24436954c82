"""What is on the screen while recording, driven by a real pointer: the bar, the pen, the area, the bubble."""

import os
import random
import time
from pathlib import Path

from desktop import Journey, Screenshot, panel, run, until, window_named, xdotool

REFERENCES = Path(__file__).resolve().parents[2] / "docs" / "overlays"


class Overlays(Journey):
    """A terminal has the keyboard all the time; what is typed must reach it."""

    def setUp(self):
        super().setUp()
        self.typed = Path(os.environ["HOME"]) / "typed"
        self.typed.unlink(missing_ok=True)
        self.start("xterm", "-geometry", "60x12+1000+120", "-T", "Work", "-e", "sh", "-c", f"stty -echo; cat >{self.typed}")
        until("the terminal", lambda: window_named("^Work$"))
        self.click(1100, 200)
        self.letters = 0

    @staticmethod
    def click(x, y, then=0.15):
        xdotool("mousemove", x, y, "click", 1)
        time.sleep(then)

    def assert_keyboard_untouched(self):
        """The terminal gets the next letter too."""
        xdotool("key", "z")
        self.letters += 1

    def tearDown(self):
        if self.letters:
            xdotool("key", "Return")
            until("the letters", lambda: self.typed.read_text() == "z" * self.letters + "\n", 3)

    def bar(self):
        return until("the bar", lambda: panel("Controls"))

    def press_button(self, name, then=0.15):
        """By its distance from the foot of a bar without a palette and camera, or from the head of any bar."""
        x, y, width, height = self.bar()
        places = {"finish": y + 33, "pause": y + 101, "restart": y + 139, "trash": y + 177, "draw": y + 228,
                  "red": y + 260, "blue": y + 340, "eraser": y + height - 37}
        self.click(x + width // 2, places[name], then)

    @staticmethod
    def draw(*points):
        xdotool("mousemove", *points[0], "mousedown", 1)
        for x, y in points[1:]:
            xdotool("mousemove", x, y)
            time.sleep(0.01)
        xdotool("mouseup", 1)

    @staticmethod
    def stacking():
        """The bar, the sheet and the terminal in its frame, the topmost first."""
        work = run("xwininfo", "-tree", "-id", window_named("^Work$")[0]).stdout
        frame = work.split("Parent window id: ")[1].split()[0]
        names = {'"Controls': "bar", '"Drawing': "sheet", f"{frame} ": "terminal"}
        children = run("xwininfo", "-root", "-children").stdout.splitlines()
        return [name for line in children for part, name in names.items() if part in line]

    def assert_looks_like(self, name, left, top, width, height, tolerance=6):
        """A part of the screen comes to be as in the reference picture, but for the odd pixel of an edge."""
        reference = REFERENCES / f"{name}.png"
        if os.environ.get("ZIVRA_NEW_REFERENCES"):
            Screenshot(left, top, width, height).save(reference)
            return
        until(f"the look of {name}", lambda: Screenshot(left, top, width, height).difference(reference) < tolerance, 3)


class Bar(Overlays):
    def test_the_bar_is_in_no_frame_and_strokes_are(self):
        self.resident()
        self.press("l", then=1)
        x, y, width, height = self.bar()
        self.assertEqual((x, y + height), (12, 1080 - 24))
        self.assert_keyboard_untouched()
        xdotool("mousemove", x + 30, y + 101)
        until("the tooltip", lambda: panel("Tooltip"))
        self.press_button("pause")
        self.assert_keyboard_untouched()
        self.press_button("pause")
        self.press_button("draw", then=0.3)
        self.assertGreater(self.bar()[3], height, "there is no palette")
        self.draw((400, 400), (500, 420), (600, 400), (700, 420))
        self.press_button("blue")
        self.draw((400, 600), (700, 600))
        self.assert_keyboard_untouched()
        time.sleep(0.5)
        self.press_button("eraser")
        self.assert_keyboard_untouched()
        time.sleep(0.4)
        self.press_button("draw", then=0.3)
        self.click(1100, 200)
        x, y, width, height = self.bar()
        xdotool("mousemove", x + 30, y + 75, "mousedown", 1, "mousemove", x + 330, y - 25, "mouseup", 1)
        until("the drag", lambda: self.bar()[:2] == (x + 300, y - 100))
        self.press_button("trash", then=0.7)
        until("the question", lambda: window_named("^Zivra$"))
        xdotool("key", "Escape")
        time.sleep(0.3)
        self.press_button("finish")
        self.assert_keyboard_untouched()
        movie = self.handed_over()
        frames = movie.frames(height=270)
        # A stroke is a quarter of the surroundings whose mean is looked at. Only what changes makes frames.
        seen = {"red": sum(1 for frame in frames if frame.colour(600 / 1920, 400 / 1080)[0] > bare(frame)[0] + 15),
                "blue": sum(1 for frame in frames if frame.colour(550 / 1920, 600 / 1080)[2] > bare(frame)[2] + 15)}
        self.assertGreater(min(seen.values()), 0, seen)
        for frame in frames:
            # Beside where the pointer goes: the bar, a tooltip, the dragged bar, the question.
            for place in ((25, 880), (25, 940), (110, 896), (325, 800), (960, 450), (960, 400)):
                self.assertTrue(near(frame.colour(place[0] / 1920, place[1] / 1080), bare(frame)),
                                f"something of ours is at {place} after {frame.time} s")
        self.assertTrue(near(frames[-1].colour(600 / 1920, 400 / 1080), bare(frames[-1])), "the eraser")

    def test_two_hundred_steps_leave_everything_in_its_place(self):
        program = self.resident()
        self.press("l", then=1)
        dice = random.Random(5)
        memory = []
        for step in range(200):
            action = dice.randrange(6)
            if action == 0:
                self.press_button("pause", then=0.02)
            elif action == 1:
                self.press_button("draw", then=0.05)
                self.draw((500, 500), (dice.randrange(400, 900), dice.randrange(300, 900)))
                self.press_button("draw", then=0.05)
            elif action == 2:
                run("xdotool", "windowraise", window_named("^Work$")[0])
            elif action == 3:
                x, y, width, _ = self.bar()
                to = dice.randrange(10, 900), dice.randrange(250, 600)
                xdotool("mousemove", x + width // 2, y + 75, "mousedown", 1, "mousemove", *to, "mouseup", 1)
            elif action == 4:
                self.press("p", then=0.02)
            else:
                self.assert_keyboard_untouched()
            if step % 50 == 49:
                memory.append(resident_kilobytes(program))
        time.sleep(0.5)
        self.assertEqual(self.stacking(), ["bar", "sheet", "terminal"])
        self.assertLess(memory[-1], memory[0] + 30_000, "kilobytes")


class Bubble(Overlays):
    """The camera is the drawn one."""

    def setUp(self):
        super().setUp()
        os.environ["ZIVRA_DEMO_CAMERA"] = "1"
        self.addCleanup(os.environ.pop, "ZIVRA_DEMO_CAMERA")

    def bubble(self):
        return until("the bubble", lambda: panel("Camera"))

    def press_pill(self, name):
        """By its distance from the middle of the bubble's foot; the pill is there once the mouse is."""
        x, y, width, height = self.bubble()
        places = {"small": -39, "medium": -15, "large": 10, "close": 39}
        xdotool("mousemove", x + width // 2, y + height // 2)
        time.sleep(0.3)
        self.click(x + width // 2 + places[name], y + height - 38)
        self.assert_keyboard_untouched()

    def drag_bubble(self, across, down):
        x, y, width, height = self.bubble()
        grip = x + width // 2, y + height // 2
        xdotool("mousemove", *grip, "mousedown", 1, "mousemove", grip[0] + across, grip[1] + down, "mouseup", 1)
        until("the drag", lambda: self.bubble()[:2] == (x + across, y + down))

    def test_it_is_dragged_resized_and_closed_and_is_in_the_movie(self):
        self.resident(mode="screenAndCamera", countdown=True, countdownSeconds=9)
        self.press("l")
        self.assertEqual(self.bubble(), (84, 1080 - 24 - 240, 240, 240))
        x, y, _, _ = until("the countdown", lambda: panel("Countdown"))
        self.click(x + 93, y + 245)
        until("the end of the countdown", lambda: not panel("Countdown"))
        self.assert_keyboard_untouched()
        self.press("l")
        until("the countdown", lambda: panel("Countdown"))
        self.click(x + 170, y + 245)
        self.assert_keyboard_untouched()
        self.bar()
        self.drag_bubble(400, -200)
        self.assert_keyboard_untouched()
        self.press_pill("large")
        until("the growth", lambda: self.bubble() == (484, 496, 360, 360))
        time.sleep(0.5)
        self.press_pill("medium")
        until("the change", lambda: self.bubble() == (484, 616, 240, 240))
        self.press_pill("small")
        until("the change", lambda: self.bubble() == (484, 696, 160, 160))
        self.press_pill("close")
        until("the end of the bubble", lambda: not panel("Camera"))
        time.sleep(0.5)
        x, y, width, height = self.bar()
        self.click(x + width // 2, y + height - 33)
        self.assert_keyboard_untouched()
        self.assertEqual(self.bubble(), (484, 696, 160, 160))
        time.sleep(0.5)
        self.press("l")
        frames = self.handed_over().frames(height=270)
        self.assertTrue(near(frames[-1].colour(84 / 1920, 936 / 1080), bare(frames[-1])), "where it was at first")
        # Above the small bubble there is a part of the large one only; in the small one's middle there is either.
        large = [not near(frame.colour(664 / 1920, 600 / 1080), bare(frame)) for frame in frames]
        either = [not near(frame.colour(564 / 1920, 776 / 1080), bare(frame)) for frame in frames]
        self.assertIn(True, large)
        self.assertFalse(large[-1])
        self.assertTrue(either[-1])
        self.assertIn(False, either[large.index(True):], "while it was closed")

    def test_ten_restarts_leave_one_of_each(self):
        program = self.resident(mode="screenAndCamera")
        self.press("l", then=1)
        memory = []
        for _ in range(10):
            before = self.files()
            self.press("r", then=1.1)  # names have seconds
            until("the next take", lambda: self.files() and self.files() != before)
            memory.append(resident_kilobytes(program))
        for title in ("Camera", "Controls", "Drawing"):
            self.assertEqual(len(window_named(f"^{title}$")), 1, title)
        self.assertLess(memory[-1], memory[0] + 60_000, memory)
        self.press_pill("close")
        self.press_button("restart", then=1)
        self.assert_keyboard_untouched()
        x, y, width, height = self.bar()
        self.click(x + width // 2, y + height - 33, then=1)
        self.bubble()
        self.press("l")
        frames = self.handed_over().frames(height=270)
        self.assertTrue(all(near(frame.colour(204 / 1920, 936 / 1080), bare(frame)) for frame in frames),
                        "it was hidden when the take began")


class Area(Overlays):
    def test_an_area_is_dragged_out_and_recorded(self):
        self.resident(captureArea="customArea")
        self.press("l", then=0.8)
        self.draw((300, 200), (301, 200))
        xdotool("key", "Escape")
        until("the end of the choice", lambda: not panel("Area Selector"))
        self.assert_keyboard_untouched()
        for button in (42, 145):
            self.press("l", then=0.8)
            self.draw((900, 650), (600, 500), (301, 201))
            self.click(301 + button, 650 + 31)
            until("the end of the choice", lambda: not panel("Area Selector"))
            self.assert_keyboard_untouched()
        self.bar()
        self.assert_keyboard_untouched()
        time.sleep(1.5)
        self.press_button("finish")
        self.assertEqual(self.handed_over().size, (600, 450))


class Monitors(Overlays):
    """Two displays, the right one smaller and lower; the mouse is on it. The server has them as one."""

    LEFT, TOP, WIDTH, HEIGHT = 720, 90, 1200, 900

    def setUp(self):
        super().setUp()
        os.environ["ZIVRA_DEMO_CAMERA"] = "1"
        self.addCleanup(os.environ.pop, "ZIVRA_DEMO_CAMERA")
        for name, shape, output in (("left", "720/200x1080/300+0+0", "screen"), ("right", "1200/300x900/250+720+90", "none")):
            xrandr = run("xrandr", "--setmonitor", name, shape, output)
            self.assertEqual(xrandr.returncode, 0, xrandr.stderr)
            self.addCleanup(run, "xrandr", "--delmonitor", name)

    def take_on_the_right(self, scale):
        """Everything is where it belongs on that display, at this many pixels a point."""
        run("xrdb", "-nocpp", "-merge", "-", input=f"Xft.dpi:\t{round(96 * scale)}\n")
        self.resident(mode="screenAndCamera", captureArea="customArea", countdown=True, countdownSeconds=9)
        whole = (self.LEFT, self.TOP, self.WIDTH, self.HEIGHT)
        foot = self.TOP + self.HEIGHT - 24 * scale
        self.press("l")
        self.assertEqual(until("the selector", lambda: panel("Area Selector")), whole)
        self.draw((1001, 301), (1100, 400), (1302, 602))
        time.sleep(0.2)
        self.assertEqual(len(set(Screenshot(1900, 100, 2, 860).pixels)), 1, "the dimmed parts meet with a seam")
        xdotool("key", "Return")
        side, height = 260 * scale, 290 * scale
        x, y, *size = until("the countdown", lambda: panel("Countdown"))
        self.assertEqual(size, [side, height])
        self.assertAlmostEqual(x, self.LEFT + (self.WIDTH - side) / 2, delta=scale)
        self.assertAlmostEqual(y, self.TOP + (self.HEIGHT - height) / 2, delta=scale)
        self.click(x + 170 * scale, y + 245 * scale)
        x, y, width, height = self.bar()
        self.assertAlmostEqual(x, self.LEFT + 12 * scale, delta=scale)
        self.assertAlmostEqual(y + height, foot, delta=scale)
        self.assertEqual(panel("Drawing"), whole)
        x, y, *size = panel("Camera")
        self.assertEqual(size, [240 * scale] * 2)
        self.assertAlmostEqual(x, self.LEFT + 84 * scale, delta=scale)
        self.assertAlmostEqual(y + size[1], foot, delta=scale)
        grip = x + size[0] // 2, y + size[1] // 2
        xdotool("mousemove", *grip, "mousedown", 1)
        for step in range(1, 11):
            xdotool("mousemove", grip[0] - 55 * step, grip[1] - 20 * step)
            time.sleep(0.02)
        xdotool("mouseup", 1)
        until("the drag to the other display", lambda: all(
            abs(is_at - was) <= 2 * scale for is_at, was in zip(panel("Camera"), (x - 550, y - 200, *size))))
        self.assert_keyboard_untouched()
        time.sleep(0.5)
        self.press("l")
        for side in self.handed_over().size:
            self.assertAlmostEqual(side, 301, delta=3)  # whole points, an even number of pixels

    def test_at_one_pixel_a_point(self):
        self.take_on_the_right(1)

    def test_at_one_and_a_half(self):
        self.take_on_the_right(1.5)


class Looks(Overlays):
    def test_each_overlay_looks_as_it_was_signed_off(self):
        self.resident(mode="screenOnly", countdown=True, countdownSeconds=2)
        xdotool("mousemove", 1500, 900)
        self.press("l", then=0.5)
        self.assert_looks_like("countdown", 830, 395, 260, 290)
        time.sleep(2.2)
        x, y, width, height = self.bar()
        self.press("p", then=0.6)
        self.assert_looks_like("bar-paused", x, y + 75, width, height - 75)
        xdotool("mousemove", x + 30, y + 177)
        until("the tooltip", lambda: panel("Tooltip"))
        time.sleep(0.3)
        self.assert_looks_like("tooltip", x, y + 150, 200, 54)
        self.press_button("draw", then=0.3)
        self.press_button("blue")
        xdotool("mousemove", 1500, 900)
        time.sleep(0.3)
        x, y, width, height = self.bar()
        self.assert_looks_like("bar-drawing", x, y + 75, width, height - 75)
        self.draw((300, 700), (400, 640), (500, 720), (600, 640), (700, 700))
        time.sleep(0.2)
        self.assert_looks_like("strokes", 280, 600, 440, 160)
        self.press("l")
        self.handed_over()

    def test_the_bubble_without_a_camera(self):
        self.resident(mode="screenAndCamera", bubbleSize="small")
        self.press("l", then=0.8)
        x, y, width, height = until("the bubble", lambda: panel("Camera"))
        xdotool("mousemove", x + width // 2, y + height // 2)
        time.sleep(0.4)
        self.assert_looks_like("bubble-pill", x, y, width, height)
        self.click(x + width // 2 + 39, y + height - 38)
        xdotool("mousemove", 1500, 900)
        time.sleep(0.4)
        x, y, width, height = self.bar()
        self.assert_looks_like("bar-camera-hidden", x, y + 75, width, height - 75)
        self.press("l")
        self.handed_over()

    def test_the_preview_of_the_camera_alone(self):
        self.resident(mode="cameraOnly")
        self.press("l", then=0.8)
        xdotool("mousemove", 1500, 900)
        time.sleep(0.4)
        self.assert_looks_like("preview", *until("the preview", lambda: panel("Camera")))
        x, y, width, height = self.bar()
        self.assert_looks_like("bar-camera-alone", x, y + 75, width, height - 75)

    def test_the_area_selector(self):
        self.resident(captureArea="customArea")
        self.press("l", then=0.8)
        self.assert_looks_like("area-hint", 780, 470, 360, 140)
        self.draw((300, 300), (500, 500), (700, 560))
        xdotool("mousemove", 1500, 900)
        time.sleep(0.3)
        self.assert_looks_like("area-selected", 280, 260, 440, 360)
        xdotool("key", "Escape")


def resident_kilobytes(process):
    return int(Path(f"/proc/{process.pid}/status").read_text().split("VmRSS:")[1].split()[0])


def bare(frame):
    """The colour of the desktop where nothing is ever in front of it."""
    return frame.colour(0.9, 0.9)


def near(colour, other, tolerance=10):
    return all(abs(one - two) <= tolerance for one, two in zip(colour, other))
