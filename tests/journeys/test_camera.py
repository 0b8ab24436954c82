"""Takes of the camera: the drawn one, whose flashes fall on the same seconds as the scene's bursts."""

import os
import statistics

from desktop import Journey
from movie import burst_times, flash_times


class Camera(Journey):
    def setUp(self):
        super().setUp()
        os.environ["ZIVRA_DEMO_CAMERA"] = "1"
        self.addCleanup(os.environ.pop, "ZIVRA_DEMO_CAMERA")

    def test_two_pauses_leave_no_gap_and_sound_and_picture_in_step(self):
        takes = [float(seconds) for seconds in os.environ.get("ZIVRA_CAMERA_TAKES", "3 3 3").split()]
        self.scene("--geometry", "10x10+0+0", "--override-redirect", "--on-the-second", "--tone", 0, "--sink", "zivra_mic_feed")
        self.resident(mode="cameraOnly", quality=720, micEnabled=True)
        self.press("l", then=takes[0])
        for seconds in takes[1:]:
            self.press("p", then=1.5)
            self.press("p", then=seconds)
        self.press("l")
        movie = self.handed_over()
        self.assertEqual((movie.size, movie.streams("video")[0]["codec_name"], movie.complaints), ((1280, 720), "h264", ""))
        self.assertAlmostEqual(movie.duration, sum(takes), delta=0.8)
        self.assertLess(max(after - before for before, after in zip(movie.times, movie.times[1:])), 0.12)

        frames = movie.frames()
        steps = [(frame.time, frame.number - before.number) for before, frame in zip(frames, frames[1:])]
        cuts = [time for time, step in steps if step > 20]
        self.assertEqual(len(cuts), 2)
        self.assertLess(sum(step - 1 for _, step in steps if step <= 20), 0.01 * len(frames) + 3, "dropped frames")
        bursts, flashes = burst_times(movie.sound()), flash_times(frames)
        for begin, end in zip([0, *cuts], [*cuts, movie.duration]):
            offsets = [min((burst - flash for burst in bursts), key=abs) for flash in flashes if begin + 0.1 < flash < end - 0.1]
            self.assertLess(abs(statistics.median(offsets)), 0.040, (offsets, cuts))
