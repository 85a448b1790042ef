#!/usr/bin/python3
"""A StatusNotifierWatcher and the host of a panel, for tests, on the session bus of the environment.

As a module: `with StatusNotifierHost() as host: host.wait_for_items(); host.call("activate", x=5, y=5)`.
As a program: one JSON object a line on standard input, {"do": <command>, ...}; one a line on standard output, either
{"result": ...} or {"error": <text>}. {"ready": true} comes first, once the watcher has its name. See `Commands`.
"""

import json
import os
import subprocess
import sys
import time

WATCHER = "org.kde.StatusNotifierWatcher"
WATCHER_PATH = "/StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
ITEM_PATH = "/StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"
CALL_TIMEOUT = 5  # seconds
PYTHON = "/usr/bin/python3"  # the system's: another one in the path has no D-Bus


class StatusNotifierHost:
    """The program below as a child process."""

    def __init__(self, env=None, registered=True):
        arguments = [PYTHON, os.path.abspath(__file__)] + ([] if registered else ["--no-host"])
        self.process = subprocess.Popen(
            arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1, env=env
        )
        if not self.process.stdout.readline():
            raise RuntimeError("the host did not start: no session bus, or another watcher has the name")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends the watcher: its name goes at once."""
        self.process.stdin.close()
        self.process.wait(timeout=CALL_TIMEOUT)
        self.process.stdout.close()

    def call(self, command, **arguments):
        self.process.stdin.write(json.dumps({"do": command, **arguments}) + "\n")
        answer = json.loads(self.process.stdout.readline())
        if "error" in answer:
            raise RuntimeError(answer["error"])
        return answer["result"]

    def wait_for_items(self, count=1, timeout=5):
        """The items, once there are `count` of them."""
        deadline = time.monotonic() + timeout
        while True:
            items = self.call("items")
            if len(items) == count:
                return items
            if time.monotonic() > deadline:
                raise TimeoutError(f"{len(items)} items, not {count}: {items}")
            time.sleep(0.02)

    def pixel(self, size, x, y):
        """The item's picture of `size` pixels at a place given as a share of its sides: red, green, blue, alpha."""
        row, column = int(y * size), int(x * size)
        alpha, red, green, blue = self.call("icon", size=size)[row * size + column]
        return red, green, blue, alpha

    def menu_lines(self):
        """The lines of the item's menu as a panel shows them when it opens it: pairs of a number and properties."""
        self.call("menu", method="AboutToShow", arguments=[0])
        _, (_, _, lines) = self.call("menu", method="GetLayout", arguments=[0, -1, []])
        return [(number, properties) for number, properties, _ in lines]

    def kept_labels(self):
        """The labels that GNOME's panel shows: it asks for the layout without labels, reads those of lines that are new to
        it, and after that believes only what it is told changed."""
        return self.call("kept_labels")

    def choose(self, line):
        """The user clicks a line, by its number."""
        return self.call("menu", method="Event", arguments=[line, "clicked", "", 0])

    def wait_for_signal(self, name, timeout=5):
        """All signals since the last time that they were asked for, once `name` is among them."""
        deadline = time.monotonic() + timeout
        seen = []
        while name not in seen:
            if time.monotonic() > deadline:
                raise TimeoutError(f"no {name}, only {seen}")
            seen += self.call("signals")
            time.sleep(0.02)
        return seen


def serve(registered):
    import dbus
    import dbus.mainloop.glib
    import dbus.service
    from gi.repository import GLib

    loop = GLib.MainLoop()
    bus = dbus.SessionBus(mainloop=dbus.mainloop.glib.DBusGMainLoop())

    class Watcher(dbus.service.Object):
        def __init__(self):
            name = dbus.service.BusName(WATCHER, bus, do_not_queue=True)
            super().__init__(name, WATCHER_PATH)
            self.items = {}  # the service each item gave: the match on its owner
            self.host_registered = registered
            self.refuses = False

        @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
        def RegisterStatusNotifierItem(self, service, sender):
            if self.refuses:
                raise dbus.DBusException("refused", name="org.freedesktop.DBus.Error.AccessDenied")
            if service.startswith("/"):
                service = sender
            if service not in self.items:
                self.items[service] = bus.watch_name_owner(service, lambda owner: owner or self.forget(service))
                self.StatusNotifierItemRegistered(service + ITEM_PATH)

        @dbus.service.method(WATCHER, in_signature="s")
        def RegisterStatusNotifierHost(self, service):
            self.set_host_registered(True)

        @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
        def Get(self, interface, name):
            return self.GetAll(interface)[name]

        @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
        def GetAll(self, interface):
            return {
                "RegisteredStatusNotifierItems": dbus.Array([s + ITEM_PATH for s in self.items], signature="s"),
                "IsStatusNotifierHostRegistered": dbus.Boolean(self.host_registered),
                "ProtocolVersion": dbus.Int32(0),
            }

        @dbus.service.signal(WATCHER, signature="s")
        def StatusNotifierItemRegistered(self, service):
            pass

        @dbus.service.signal(WATCHER, signature="s")
        def StatusNotifierItemUnregistered(self, service):
            pass

        @dbus.service.signal(WATCHER)
        def StatusNotifierHostRegistered(self):
            pass

        @dbus.service.signal(WATCHER)
        def StatusNotifierHostUnregistered(self):
            pass

        def set_host_registered(self, value):
            self.host_registered = value
            if value:
                self.StatusNotifierHostRegistered()
            else:
                self.StatusNotifierHostUnregistered()

        def forget(self, service):
            if service in self.items:
                self.items.pop(service).cancel()
                self.StatusNotifierItemUnregistered(service + ITEM_PATH)

    def plain(value):
        """For JSON."""
        if isinstance(value, dbus.Boolean):
            return bool(value)
        if isinstance(value, dict):
            return {str(key): plain(entry) for key, entry in value.items()}
        if isinstance(value, (tuple, list)):
            return [plain(entry) for entry in value]
        return int(value) if isinstance(value, int) else str(value)

    class Commands:
        """`item`, where a command takes it, is a name out of `items`; the first one when it is left out."""

        def __init__(self, watcher):
            self.watcher = watcher
            self.seen = []
            self.labels = {}
            bus.add_signal_receiver(self._keep, "ItemsPropertiesUpdated", MENU)
            for interface in (ITEM, MENU):
                bus.add_signal_receiver(
                    lambda *_, member: self.seen.append(str(member)), dbus_interface=interface, member_keyword="member"
                )

        def items(self):
            return list(self.watcher.items)

        def signals(self):
            """The names of the signals of items and menus since the last time."""
            seen, self.seen = self.seen, []
            return seen

        def properties(self, item=None):
            """All but the pictures; of these, the sizes."""
            everything = self._call(item, PROPERTIES, "GetAll", ITEM)
            for name, value in everything.items():
                if name.endswith("Pixmap"):
                    everything[name] = [[width, height] for width, height, _ in value]
            return plain(everything)

        def menu(self, method, arguments, item=None):
            """What a method of the item's menu answers; it must say itself what arguments it takes."""
            proxy = bus.get_object(item or next(iter(self.watcher.items)), self._menu_path(item))
            return plain(proxy.get_dbus_method(method, MENU)(*arguments, timeout=CALL_TIMEOUT))

        def kept_labels(self):
            self.menu("AboutToShow", [0])
            _, (_, _, lines) = self.menu("GetLayout", [0, -1, ["type", "children-display"]])
            new = [number for number, _, _ in lines if number not in self.labels]
            if new:
                for number, properties in self.menu("GetGroupProperties", [new, ["label"]]):
                    self.labels[number] = properties.get("label")
            return [self.labels[number] for number, _, _ in lines if self.labels[number]]

        def _keep(self, updated, _removed):
            for number, properties in plain(updated):
                if "label" in properties:
                    self.labels[number] = properties["label"]

        def menu_properties(self, item=None):
            return plain(self._call(item, PROPERTIES, "GetAll", MENU, path=self._menu_path(item)))

        def introspect(self, item=None):
            return str(self._call(item, "org.freedesktop.DBus.Introspectable", "Introspect"))

        def icon(self, size, item=None):
            """The pixels of the picture of `size` pixels, row by row: alpha, red, green, blue."""
            for width, _, argb in self._call(item, PROPERTIES, "Get", ITEM, "IconPixmap"):
                if width == size:
                    return [list(bytes(argb[at : at + 4])) for at in range(0, len(argb), 4)]
            raise ValueError(f"no picture of {size} pixels")

        def activate(self, x=0, y=0, item=None):
            """How long the item took to answer, in milliseconds; so for the next one."""
            return self._timed(item, "Activate", x, y)

        def context_menu(self, x=0, y=0, item=None):
            return self._timed(item, "ContextMenu", x, y)

        def secondary_activate(self, x=0, y=0, item=None):
            return self._timed(item, "SecondaryActivate", x, y)

        def scroll(self, delta, orientation="vertical", item=None):
            return self._timed(item, "Scroll", delta, orientation)

        def set_host_registered(self, value):
            """The panel goes or comes, the watcher stays."""
            self.watcher.set_host_registered(value)

        def refuse(self, value):
            """Whether the watcher refuses items that register from now on."""
            self.watcher.refuses = value

        def hang(self, seconds):
            """Answers nothing for that long, after this command."""
            GLib.idle_add(lambda: time.sleep(seconds))

        def _timed(self, item, method, *arguments):
            start = time.monotonic()
            self._call(item, ITEM, method, *arguments)
            return round((time.monotonic() - start) * 1000, 2)

        def _menu_path(self, item):
            return self._call(item, PROPERTIES, "Get", ITEM, "Menu")

        def _call(self, item, interface, method, *arguments, path=ITEM_PATH):
            service = item or next(iter(self.watcher.items))
            proxy = bus.get_object(service, path, introspect=False)
            return proxy.get_dbus_method(method, interface)(*arguments, timeout=CALL_TIMEOUT)

    def answer(commands, line):
        request = json.loads(line)
        command = request.pop("do")
        if command.startswith("_") or not hasattr(commands, command):
            raise ValueError(f"no command {command}")
        return getattr(commands, command)(**request)

    def tell(message):
        print(json.dumps(message), flush=True)

    def readable(stream, _condition):
        line = stream.readline()
        if not line:
            loop.quit()
            return False
        try:
            tell({"result": answer(commands, line)})
        except Exception as error:  # whatever it is, it is the test's to judge
            tell({"error": f"{type(error).__name__}: {error}"})
        return True

    commands = Commands(Watcher())
    # Unbuffered, so that no line waits in a buffer that the loop does not see.
    commands_in = os.fdopen(os.dup(sys.stdin.fileno()), "rb", buffering=0)
    GLib.io_add_watch(commands_in.fileno(), GLib.IO_IN | GLib.IO_HUP, lambda _fd, c: readable(commands_in, c))
    tell({"ready": True})
    loop.run()


if __name__ == "__main__":
    serve(registered="--no-host" not in sys.argv[1:])
