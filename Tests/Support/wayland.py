"""A Wayland client that moves the pointer and says when the compositor finds the user idle. It speaks the protocol over
a connection that the session made.

    the protocol              https://wayland.freedesktop.org/docs/html/
    zwlr_virtual_pointer      https://wayland.app/protocols/wlr-virtual-pointer-unstable-v1
    org_kde_kwin_fake_input   https://wayland.app/protocols/kde-fake-input
    org_kde_kwin_idle         https://wayland.app/protocols/kde-idle
    ext_idle_notifier         https://wayland.app/protocols/ext-idle-notify-v1"""

import struct
import threading
import time

BUTTONS = {"left": 0x110, "right": 0x111, "middle": 0x112}  # linux/input-event-codes.h
RETURN = 28
STEP = 8  # pixels


def milliseconds():
    return int(time.monotonic() * 1000) & 0xFFFFFFFF


def text(value):
    data = value.encode() + b"\0"
    return struct.pack("<I", len(data)) + data + b"\0" * (-len(data) % 4)


class Client:
    DISPLAY, REGISTRY = 1, 2

    def __init__(self, connection, width, height):
        self._size = width, height
        self._socket = connection
        self._last = self.REGISTRY
        self._handlers = {self.DISPLAY: self._failed, self.REGISTRY: self._announced}
        self._failure = ""
        self._globals = {}
        self._send(self.DISPLAY, 1, struct.pack("<I", self.REGISTRY))
        threading.Thread(target=self._read, daemon=True).start()
        self._sync()
        self._seat = self._bind("wl_seat", 1)
        self._make_pointer()
        self.at = 0, 0

    def _send(self, target, opcode, body=b""):
        self._socket.sendall(struct.pack("<IHH", target, opcode, 8 + len(body)) + body)

    def _new(self, handler=None):
        self._last += 1
        if handler:
            self._handlers[self._last] = handler
        return self._last

    def _failed(self, opcode, body):
        if opcode == 0:
            self._failure = body[12:].rstrip(b"\0").decode(errors="replace")

    def _announced(self, opcode, body):
        if opcode == 0:
            name, length = struct.unpack_from("<II", body)
            version = struct.unpack_from("<I", body, 8 + (length + 3) // 4 * 4)[0]
            self._globals.setdefault(body[8:7 + length].decode(), (name, version))

    def _bind(self, interface, version):
        name, offered = self._globals[interface]
        version = min(version, offered)
        created = self._new()
        self._send(self.REGISTRY, 0, struct.pack("<I", name) + text(interface) + struct.pack("<II", version, created))
        return created

    def _sync(self):
        done = threading.Event()
        callback = self._new(lambda *_: done.set())
        self._send(self.DISPLAY, 0, struct.pack("<I", callback))
        if not done.wait(10):
            raise OSError(f"the compositor does not answer: {self._failure}")

    def _read(self):
        data = b""
        while True:
            try:
                received = self._socket.recv(65536)
            except OSError:
                return
            if not received:
                return
            data += received
            while len(data) >= 8:
                target, opcode, length = struct.unpack_from("<IHH", data)
                if len(data) < length:
                    break
                if target in self._handlers:
                    self._handlers[target](opcode, data[8:length])
                data = data[length:]

    def _make_pointer(self):
        if "zwlr_virtual_pointer_manager_v1" in self._globals:
            manager = self._bind("zwlr_virtual_pointer_manager_v1", 1)
            self._pointer = self._new()
            self._send(manager, 0, struct.pack("<II", self._seat, self._pointer))
            self._fake_input = None
        else:
            self._fake_input = self._bind("org_kde_kwin_fake_input", 4)
            self._send(self._fake_input, 0, text("test") + text("test"))
        self._sync()

    def move(self, x, y):
        """As a hand does: Xwayland 22.1 puts a click elsewhere when the pointer jumped out of a window before."""
        from_x, from_y = self.at
        steps = max(abs(x - from_x), abs(y - from_y)) // STEP + 1
        for step in range(1, steps + 1):
            self._move(from_x + (x - from_x) * step // steps, from_y + (y - from_y) * step // steps)
        self.at = x, y

    def _move(self, x, y):
        if self._fake_input:
            self._send(self._fake_input, 9, struct.pack("<ii", x * 256, y * 256))
        else:
            self._send(self._pointer, 1, struct.pack("<IIIII", milliseconds(), x, y, *self._size))
            self._send(self._pointer, 4)
        self._sync()

    def button(self, name, pressed):
        if self._fake_input:
            self._send(self._fake_input, 2, struct.pack("<II", BUTTONS[name], pressed))
        else:
            self._send(self._pointer, 2, struct.pack("<III", milliseconds(), BUTTONS[name], pressed))
            self._send(self._pointer, 4)
        self._sync()

    def key(self, code):
        """Where there is fake input."""
        for state in (1, 0):
            self._send(self._fake_input, 10, struct.pack("<II", code, state))
        self._sync()

    def watch_idleness(self, after):
        """From now on: is_idle."""
        self.is_idle = False

        def heard(opcode, _):
            self.is_idle = opcode == 0

        if "ext_idle_notifier_v1" in self._globals:
            notifier, watch = self._bind("ext_idle_notifier_v1", 1), self._new(heard)
            self._send(notifier, 1, struct.pack("<III", watch, after * 1000, self._seat))
        else:
            notifier, watch = self._bind("org_kde_kwin_idle", 1), self._new(heard)
            self._send(notifier, 0, struct.pack("<III", watch, self._seat, after * 1000))
        self._sync()
