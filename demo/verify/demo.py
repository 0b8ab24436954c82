"""Says what is in the demo's movie, and ends with 1 when it is not what was shown and played."""

import sys
from pathlib import Path
from urllib.parse import unquote, urlparse

from movie import Movie, loudness

movie = Movie(Path(unquote(urlparse(sys.argv[1]).path)))
frames = movie.frames()
numbers = {frame.number for frame in frames} - {None}
video, audio = movie.streams("video"), movie.streams("audio")
rate = len(numbers) / movie.duration
print(f"{movie.path}\n  {movie.duration:.2f} s, {movie.size[0]}x{movie.size[1]}, {len(frames)} frames "
      f"({rate:.1f} different ones a second)\n  tracks: "
      + ", ".join(stream["codec_name"] for stream in video + audio))

wrong = []
if not 4.5 <= movie.duration <= 5.5:
    wrong.append("its duration is not five seconds")
if [stream["codec_name"] for stream in video] != ["h264"] or movie.size[1] > 1080:
    wrong.append("its picture is not H.264 of at most 1080 lines")
if [stream["codec_name"] for stream in audio] != ["aac"]:
    wrong.append("it has not exactly one AAC track")
elif loudness(movie.sound(), 660) < 0.05:
    wrong.append("the tone is not in it")
if rate < 25:
    wrong.append("it shows fewer than 25 pictures a second")
if movie.complaints:
    wrong.append("it does not decode cleanly: " + movie.complaints)
for complaint in wrong:
    print(f"demo: {complaint}", file=sys.stderr)
sys.exit(1 if wrong else 0)
