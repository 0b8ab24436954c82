"""Takes from the shell: what is recorded, what is heard, and what goes wrong."""

import os
import resource
import shutil
import subprocess
import time

from desktop import DEFAULTS, LIBRARY, ZIVRA, Journey, run, until, window_named, xdotool
from movie import Movie, loudness

GREEN, RED = "00c000", "c00000"


def near(colour, expected, tolerance=12):
    return all(abs(one - other) <= tolerance for one, other in zip(colour, expected))


class Areas(Journey):
    def numbers(self, movie):
        return [frame.number for frame in movie.frames() if frame.number is not None]

    def assert_every_frame(self, movie, seconds=2):
        numbers = self.numbers(movie)
        shown = numbers[-1] - numbers[0] + 1
        self.assertGreaterEqual(len(set(numbers)), 0.9 * shown)
        self.assertAlmostEqual(movie.duration, seconds, delta=0.4)

    def test_the_whole_screen_frame_by_frame(self):
        self.scene()
        movie = self.recorded("--quality", 480)
        self.assertEqual(movie.size, (854, 480))
        self.assert_every_frame(movie)
        self.assertEqual((movie.streams("audio"), movie.streams("video")[0]["codec_name"]), ([], "h264"))
        self.assertEqual(movie.streams("video")[0]["color_space"], "smpte170m")

    def test_a_rectangle(self):
        self.scene("--geometry", "640x360+300+200", "--override-redirect", "--colour", GREEN)
        movie = self.recorded("--rect", "300,200,640,360")
        self.assertEqual(movie.size, (640, 360))
        self.assert_every_frame(movie)

    def test_a_window_whole_while_another_covers_it(self):
        self.scene("--geometry", "640x360+300+200", "--override-redirect", "--colour", GREEN)
        window = window_named("^Zivra scene$")[0]
        self.scene("--geometry", "500x300+350+250", "--override-redirect", "--still", "--colour", RED, title="cover")
        movie = self.recorded("--window", window)
        self.assertEqual(movie.size, (640, 360))
        self.assert_every_frame(movie)
        self.assertTrue(all(not near(frame.colour(0.5, 0.9), (0xc0, 0, 0)) for frame in movie.frames()))

    def test_a_still_screen_has_a_true_duration_and_its_colours(self):
        self.scene("--still", "--colour", GREEN)
        movie = self.recorded("--seconds", 3)
        self.assertAlmostEqual(movie.duration, 3, delta=0.3)
        self.assertLess(len(movie.times), 12)
        self.assertTrue(near(movie.frames()[-1].colour(0.8, 0.9), (0, 0xc0, 0)))

    def test_the_pointer_and_its_clicks(self):
        xdotool("mousemove", 960, 800)
        take = self.start(ZIVRA, "record", "--clicks", "--quality", "1080", stdout=subprocess.PIPE)
        time.sleep(1)
        for _ in range(3):
            xdotool("click", 1)
            time.sleep(0.2)
        movie = Movie(self.interrupt(take)[0].strip())
        ring = [max(frame.colour(0.5 + dx / 1920, 800 / 1080)[2] for dx in range(8, 28, 2))
                for frame in movie.frames(height=1080)[::2]]
        self.assertGreater(max(ring) - min(ring), 40, "a ring was to come and go")


class Sounds(Journey):
    def test_system_sound_and_microphone_become_one_track(self):
        self.scene("--tone", 660)
        self.scene("--geometry", "10x10+0+0", "--override-redirect", "--tone", 1500, "--sink", "zivra_mic_feed", title="voice")
        movie = self.recorded("--system-audio", "--microphone", seconds=4)
        self.assertEqual(len(movie.streams("audio")), 1)
        sound = movie.sound()
        self.assertGreater(loudness(sound, 660), 0.05)
        self.assertGreater(loudness(sound, 1500), 0.05)
        self.assert_in_step(movie)
        self.assertEqual([path.name for path in LIBRARY.iterdir()], [os.path.basename(movie.path)])

    def test_each_source_alone_hears_only_its_own(self):
        self.scene("--tone", 660)
        self.scene("--geometry", "10x10+0+0", "--override-redirect", "--tone", 1500, "--sink", "zivra_mic_feed", title="voice")
        computer = self.recorded("--system-audio").sound()
        time.sleep(1)  # names have a resolution of a second
        voice = self.recorded("--microphone", "zivra_mic").sound()
        self.assertGreater(loudness(computer, 660), 20 * loudness(computer, 1500))
        self.assertGreater(loudness(voice, 1500), 20 * loudness(voice, 660))

    def test_a_microphone_that_is_unplugged_does_not_end_the_take(self):
        self.scene()
        # A module that goes away takes its device with it, which is what unplugging is.
        take = self.start(ZIVRA, "record", "--seconds", "4", "--microphone", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(2)
        modules = run("pactl", "list", "short", "modules").stdout.splitlines()
        remap = next(line for line in modules if "module-remap-source" in line)
        run("pactl", "unload-module", remap.split()[0])
        self.addCleanup(run, "pactl", "load-module", "module-remap-source", "master=zivra_mic_feed.monitor",
                        "source_name=zivra_mic")
        out, err = take.communicate(timeout=30)
        self.assertEqual((take.returncode, err), (0, ""))
        movie = Movie(out.strip())
        self.assertAlmostEqual(movie.duration, 4, delta=0.4)
        self.assertAlmostEqual(float(movie.streams("audio")[0]["duration"]), 4, delta=0.5)


class BadLuck(Journey):
    def test_words_and_statuses(self):
        for arguments in (["--quality", "9"], ["--frames"], ["--window", "0"], ["--mode", "camera"]):
            done = run(ZIVRA, "record", *arguments)
            self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (2, "", 1), arguments)
        gone = run(ZIVRA, "record", "--window", "0x7fffff")
        self.assertEqual((gone.returncode, gone.stdout), (1, ""))
        self.assertIn("Choose a window to record first.", gone.stderr)
        self.assertIn("no display", run(ZIVRA, "record", "--display", "4242").stderr)
        self.assertIn("no microphone", run(ZIVRA, "record", "--microphone", "nobody").stderr)
        self.assertIn("--seconds", run(ZIVRA, "--help").stdout)
        self.assertRegex(run(ZIVRA, "--version").stdout, r"^Zivra \d")

    def test_a_library_that_cannot_be_made(self):
        shutil.rmtree(LIBRARY)
        LIBRARY.write_text("in the way")
        self.addCleanup(lambda: (LIBRARY.unlink(), LIBRARY.mkdir()))
        done = self.record(seconds=20)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("couldn't be saved", done.stderr)
        self.assertEqual(LIBRARY.read_text(), "in the way")

    def test_a_file_that_may_not_grow_keeps_what_it_has(self):
        self.scene()
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (150_000, 150_000))
        done = run(ZIVRA, "record", "--seconds", "30", preexec_fn=limit)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertNotEqual(done.stderr, "")
        movie = Movie(done.stdout.strip())
        self.assertGreater(movie.duration, 0.5)
        self.assertEqual(movie.complaints, "")

    def take_on_its_own_server(self, *arguments):
        """A take that has begun, its X server, and the environment of programs there."""
        server = self.start("Xvfb", "-displayfd", "1", "-screen", "0", "800x600x24", "-nolisten", "tcp",
                            stdout=subprocess.PIPE)
        there = {**os.environ, "DISPLAY": ":" + server.stdout.readline().strip()}
        take = self.start(ZIVRA, "record", *arguments, env=there, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(3)
        return take, server, there

    def test_an_x_server_that_goes_away(self):
        take, server, _ = self.take_on_its_own_server()
        server.kill()
        out, err = take.communicate(timeout=30)
        self.assertIn("X server", err)
        self.assertEqual(take.returncode, 0)
        self.assertGreater(Movie(out.strip()).duration, 1.9)

    def test_a_display_that_changes_size_keeps_the_old_rectangle(self):
        take, _, there = self.take_on_its_own_server("--seconds", "5")
        for change in (["--newmode", "small", "60", *["640"] * 4, *["480"] * 4], ["--addmode", "screen", "small"],
                       ["--output", "screen", "--mode", "small", "--fb", "640x480"]):
            self.assertEqual(run("xrandr", *change, env=there).returncode, 0)
        out, err = take.communicate(timeout=30)
        self.assertEqual((take.returncode, err), (0, ""))
        movie = Movie(out.strip())
        self.assertEqual((movie.size, movie.complaints), ((800, 600), ""))
        self.assertAlmostEqual(movie.duration, 5, delta=0.4)

    def test_a_window_that_closes(self):
        scene = self.scene("--geometry", "320x240+50+50", title="short-lived")
        take = self.start(ZIVRA, "record", "--window", window_named("^short-lived$")[0], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE)
        time.sleep(2)
        scene.terminate()
        out, err = take.communicate(timeout=30)
        self.assertIn("closed", err)
        self.assertGreater(Movie(out.strip()).duration, 1)

    def test_damaged_settings_are_set_aside(self):
        DEFAULTS.write_text("{ not json")
        self.scene("--still")
        self.recorded(seconds=1)
        self.assertTrue([path for path in DEFAULTS.parent.iterdir() if path != DEFAULTS])

    def test_killed_in_the_middle_the_file_still_plays(self):
        self.scene()
        take = self.start(ZIVRA, "record", "--system-audio", stdout=subprocess.PIPE)
        time.sleep(4)
        take.kill()
        movie = Movie(until("the file", self.files)[0])
        self.assertGreater(movie.times[-1], 2.0)
        self.assertEqual(movie.complaints, "")
