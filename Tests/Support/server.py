"""An HTTP server that answers as a test says."""

import contextlib
import http.server
import ssl
import threading
import time


class Server(contextlib.AbstractContextManager):
    """Answers each path with what `answers` has for it: a function of the request's handler; 404 for all others."""

    def __init__(self, certificate=None, address=("127.0.0.1", 0)):
        """`certificate`: a file with it and its key, to speak TLS."""
        self.answers = {}
        self.requests = []  # paths, in the order of their arrival
        self.connections = 0
        self.on_request = lambda path: None
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def setup(self):
                server.connections += 1
                super().setup()

            def do_GET(self):
                server.on_request(self.path)
                server.requests.append(self.path)
                self.close_connection = True
                with contextlib.suppress(ConnectionError, ssl.SSLError):
                    server.answers.get(self.path, answer(404))(self)

            def log_message(self, *_):
                pass

        class Listener(http.server.ThreadingHTTPServer):
            request_queue_size = 64

            def handle_error(self, *_):
                pass  # clients that go away

        self._listener = Listener(address, Handler)
        self.scheme = "http"
        if certificate:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(certificate)
            self._listener.socket = context.wrap_socket(self._listener.socket, server_side=True,
                                                        do_handshake_on_connect=False)
            self.scheme = "https"
        self.port = self._listener.server_address[1]
        self.base = f"{self.scheme}://127.0.0.1:{self.port}"
        threading.Thread(target=self._listener.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True).start()

    def __exit__(self, *_):
        self._listener.shutdown()
        self._listener.socket.close()  # handlers that wait for a client that will not go away are daemons


def answer(status, body=b"", **headers):
    def act(handler):
        handler.send_response(status)
        handler.send_header("Content-Length", len(body))
        for name, value in headers.items():
            handler.send_header(name, value)
        handler.end_headers()
        if status not in (204, 304):
            handler.wfile.write(body)
    return act


def wait_until_closed(handler):
    handler.connection.settimeout(600)
    with contextlib.suppress(OSError):
        while handler.connection.recv(1024):
            pass


class Silence:
    """Sends so much of an answer and then nothing more; `ended` is when the client had enough."""

    def __init__(self, head=b""):
        self.head = head
        self.began = self.ended = None

    def __call__(self, handler):
        handler.connection.sendall(self.head)
        self.began = time.monotonic()
        wait_until_closed(handler)
        self.ended = time.monotonic()


def in_drops(body, pieces, pause):
    """The answer in so many pieces, with pauses between them."""
    def act(handler):
        handler.send_response(200)
        handler.send_header("Content-Length", len(body))
        handler.end_headers()
        size = -(-len(body) // pieces)
        for begin in range(0, len(body), size):
            if begin:
                time.sleep(pause)
            handler.wfile.write(body[begin:begin + size])
            handler.wfile.flush()
    return act


def cut(body):
    """Half of what was promised."""
    def act(handler):
        handler.send_response(200)
        handler.send_header("Content-Length", len(body))
        handler.end_headers()
        handler.wfile.write(body[:len(body) // 2])
    return act
