"""The program and a cloud server: signing in, the link at once, an upload that outlives the program."""

import json
import os
import re
import subprocess
import tempfile
from pathlib import Path

from cloud_server import CloudServer
from desktop import LIBRARY, ZIVRA, Journey, clipboard, run, until
from movie import Movie


class Cloud(Journey):
    def setUp(self):
        super().setUp()
        vault = self.start("gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets",
                           stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        vault.stdin.write("password")
        vault.stdin.close()
        vault.stdin = None
        until("the vault", lambda: "true" in run("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                                                 "org.freedesktop.DBus.NameHasOwner", "string:org.freedesktop.secrets").stdout)
        self.server = CloudServer(chunk_size=50_000)
        self.addCleanup(self.server.close)
        self.browsed = self.browser()

    def browser(self):
        """The file with the addresses that the program opens from now on."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        opener = Path(folder.name) / "xdg-open"
        opener.write_text(f'#!/bin/sh\necho "$1" >>{folder.name}/browsed\n')
        opener.chmod(0o755)
        before = os.environ["PATH"]
        os.environ["PATH"] = f"{folder.name}:{before}"
        self.addCleanup(os.environ.__setitem__, "PATH", before)
        return Path(folder.name) / "browsed"

    def users_asked_for(self):
        return sum(path == "/api/user" for _, _, path, _ in self.server.requests)

    def test_the_link_comes_first_and_survives_the_program(self):
        self.scene("--geometry", "400x300+50+50")
        program = self.resident(cloudServer=self.server.url)
        run(ZIVRA, "zivra://connect")
        page = until("the page to sign in", lambda: self.browsed.exists() and self.browsed.read_text())
        self.assertTrue(page.startswith(self.server.url + "/desktop/connect?"), page)
        state = re.search("state=([^&]*)", page)[1]
        run(ZIVRA, f"zivra://auth?token=1%7Csecret&state={state}")
        until("the user's name", self.users_asked_for)

        links = []
        self.server.before_chunk = lambda: links.append(clipboard("UTF8_STRING"))
        self.server.delay = 0.3
        self.press("l", then=3)
        self.press("l")
        until("the second chunk", lambda: len(links) > 1)
        program.kill()
        program.wait()
        self.assertEqual(links[0], self.server.url + "/s/v1", "before the first chunk was answered")
        movie = self.files()[0]
        self.assertGreater(Movie(movie).times[-1], 2)

        asked = self.users_asked_for()
        program = self.resident(cloudServer=self.server.url)
        until("the user's name by the kept token", lambda: self.users_asked_for() > asked)
        index = LIBRARY / ".zivra-cloud.json"
        self.assertEqual(json.loads(index.read_text())[movie.name]["status"], "uploading")
        self.server.delay = 0
        again = run(os.environ["ZIVRA_UPLOAD"], movie, "1|secret")
        self.assertEqual((again.returncode, json.loads(again.stdout)["link"]), (0, links[0]))
        self.assertEqual(self.server.ready, {"v1"})
        self.assertEqual(self.server.movie("v1"), movie.read_bytes())
        told = program.terminate() or program.communicate(timeout=20)[1]
        for place in (told, *(file.read_bytes().decode(errors="replace") for file in Path(os.environ["HOME"]).rglob("*.json"))):
            self.assertNotIn("secret", place)
