"""Inside a private desktop: uploads to a server on the loopback and prints what that cost. Started by scripts/bench."""

import json
import pathlib
import os
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "support"))

from cloud_server import CloudServer  # noqa: E402

CHUNK = 8 << 20
GIGABYTE = 1 << 30


def defaults(server):
    file = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "io.quillbeck.zivra" / "defaults.json"
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(json.dumps({"cloudServer": server.url}))


def upload(build, file):
    (file.parent / ".zivra-cloud.json").unlink(missing_ok=True)
    done = subprocess.run([build / "demo" / "upload" / "zivra-upload", file, "1|bench"], capture_output=True, text=True, check=True)
    return json.loads(done.stdout)


def ten_minutes(build, folder):
    """What we recorded of a moving screen in ten seconds, sixty times."""
    scene = subprocess.Popen([build / "demo" / "scene" / "zivra-scene"])
    time.sleep(2)
    part = subprocess.run([build / "zivra", "record", "--seconds", "10"], capture_output=True, text=True, check=True)
    scene.terminate()
    scene.wait()
    whole = folder / "long.mp4"
    subprocess.run(["ffmpeg", "-v", "error", "-stream_loop", "59", "-i", part.stdout.strip(), "-c", "copy", whole], check=True)
    return whole


def create_delay(build, folder):
    """Milliseconds from the hand-over of a ten-minute movie until the server has been asked for a link."""
    server = CloudServer(CHUNK, keeps=False)
    defaults(server)
    movie = ten_minutes(build, folder)
    delays = []
    for _ in range(5):
        server.requests.clear()
        begun = upload(build, movie)["begun"]
        delays.append(next(at for at, _, path, _ in server.requests if path == "/api/videos") - begun)
    server.close()
    return 1000 * statistics.median(delays)


def with_curl(server, folder):
    """Seconds that curl takes for the same chunks, on one connection."""
    parts = sorted(folder.glob("chunk.*"))
    urls = [argument for index, part in enumerate(parts)
            for argument in ("-T", part, f"{server.url}/api/videos/curl/chunks/{index}", "-o", "/dev/null")]
    begun = time.monotonic()
    subprocess.run(["curl", "-sS", "--fail", "-H", "Expect:", *urls], check=True)
    return time.monotonic() - begun


def big_upload(build, folder):
    """The throughput in MB/s of both, and the memory in KiB that an upload of a gigabyte takes."""
    server = CloudServer(CHUNK, keeps=False)
    defaults(server)
    file = folder / "big.mp4"
    with open("/dev/urandom", "rb") as source, open(file, "wb") as target:
        for index in range(GIGABYTE // CHUNK):
            chunk = source.read(CHUNK)
            target.write(chunk)
            (folder / f"chunk.{index:04}").write_bytes(chunk)
    ours, curls, growth = [], [], []
    for _ in range(3):
        report = upload(build, file)
        ours.append(report["ended"] - report["linked"])
        growth.append(report["peak"] - report["memory"])
        curls.append(with_curl(server, folder))
    server.close()
    return GIGABYTE / 1e6 / statistics.median(ours), GIGABYTE / 1e6 / statistics.median(curls), max(growth)


def main():
    build = pathlib.Path(sys.argv[1])
    folder = pathlib.Path.home()
    print(f"hand-over of a ten-minute movie to the call for its link: {create_delay(build, folder):.0f} ms (limit 150)")
    ours, curl, growth = big_upload(build, folder)
    print(f"one gigabyte: {ours:.0f} MB/s, curl {curl:.0f} MB/s: ratio {ours / curl:.2f} (limit 0.5)")
    print(f"memory it took: {growth / 1024:.1f} MiB, {growth * 1024 / CHUNK:.1f} chunks (limit 3)")


main()
