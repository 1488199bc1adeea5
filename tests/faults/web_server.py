"""A web server on the loopback that serves a folder, or answers as it is told to."""

import http.server
import pathlib
import threading


class WebServer:
    """`answer`, where it is set, gets each request as its handler, and answers it."""

    def __init__(self):
        owner = self

        class Handler(http.server.SimpleHTTPRequestHandler):
            def do_GET(self):  # noqa: N802, the name is given
                if owner.answer is not None:
                    self.close_connection = True
                    owner.answer(self)
                    return
                path = owner.folder / self.path.split("?")[0].lstrip("/")
                if not path.is_file():
                    self.send_error(404)
                    return
                content = path.read_bytes()
                self.send_response(200)
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                self.wfile.write(content)

            def log_message(self, *_):
                pass

            def handle(self):
                try:
                    super().handle()
                except OSError:
                    pass  # The client is gone: that is what the faults are about.

        self.folder = pathlib.Path("/nonexistent")
        self.answer = None
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.server.owner = self
        self.server.daemon_threads = True
        self.url = f"http://127.0.0.1:{self.server.server_port}/"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def serve(self, folder):
        self.folder = folder

    def close(self):
        self.server.shutdown()
        self.server.server_close()
