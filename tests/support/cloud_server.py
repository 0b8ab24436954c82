"""A cloud server on the loopback for programs that are driven from outside."""

import http.server
import json
import threading
import time


class CloudServer:
    """Keeps the chunks of each video where it is told to, and when what was asked for."""

    def __init__(self, chunk_size=8 << 20, keeps=True):
        self.requests = []  # (seconds on the monotonic clock, method, path, bytes)
        self.chunks = {}  # of each video, by index
        self.ready = set()
        self.delay = 0.0  # seconds before a chunk is answered
        self.before_chunk = lambda: None
        self._chunk_size = chunk_size
        self._keeps = keeps
        owner = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"
            rbufsize = 1 << 20
            disable_nagle_algorithm = True

            def do_any(self):
                owner.requests.append((time.monotonic(), self.command, self.path, int(self.headers.get("Content-Length") or 0)))
                body = self.rfile.read(owner.requests[-1][3])
                answer = json.dumps(owner.answer(self.command, self.path.split("/")[1:], body)).encode()
                self.send_response(200)
                self.send_header("Content-Type", "application/json")
                self.send_header("Content-Length", str(len(answer)))
                self.end_headers()
                self.wfile.write(answer)

            do_GET = do_POST = do_PUT = do_any

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self.url = f"http://127.0.0.1:{self._server.server_port}"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def answer(self, method, path, body):
        if path == ["api", "user"]:
            return {"name": "Ada", "email": "ada@zivra.example"}
        if method == "POST" and path == ["api", "videos"]:
            name = f"v{len(self.chunks) + 1}"
            self.chunks[name] = {}
            return {"data": {"id": name, "share_url": f"{self.url}/s/{name}"}, "upload": {"chunk_size": self._chunk_size}}
        if method == "PUT":
            self.before_chunk()
            time.sleep(self.delay)
            if self._keeps:
                self.chunks.setdefault(path[2], {})[int(path[4])] = body
        if path[-1] == "complete" and len(self.chunks[path[2]]) == json.loads(body)["chunks"]:
            self.ready.add(path[2])
        return {}

    def movie(self, name):
        return b"".join(part for _, part in sorted(self.chunks[name].items()))

    def close(self):
        self._server.shutdown()
        self._server.server_close()
