"""What all desktops have in common for a test: a session, a pointer, pictures of the screen, a panel with a cup, and
ways to see that idleness had an effect. Each desktop says in its own file how it has them."""

import re
import time

from machine import wait_for
from pictures import Box, clusters, differing, grown, read_xwd
from trees import USER
import wayland

WIDTH, HEIGHT = 1280, 800
DISPLAY = ":1"
WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "/StatusNotifierItem"
MINUTE = 60

X_SESSION = f"""#!/bin/sh
# An X server whose picture lies in a file, and a session on it.
export DISPLAY={DISPLAY}
rm -f /tmp/.X1-lock
Xvfb $DISPLAY -screen 0 {WIDTH}x{HEIGHT}x24 -fbdir /tmp -nolisten tcp -noreset "-s" 0 &
server=$!
until xdpyinfo >/dev/null 2>&1; do sleep 0.2; done
dbus-update-activation-environment --systemd DISPLAY XDG_CURRENT_DESKTOP XDG_SESSION_TYPE
"$@"
kill $server
wait $server
"""


class Desktop:
    name = title = ""
    packages = ()
    versions = ()  # packages whose versions the table names
    kind = "x11"
    desktop = ""  # XDG_CURRENT_DESKTOP
    command = ()
    panel = ""  # the process that shows it
    has_tray = True
    has_input = True  # a pointer and keys that a test can move and press
    starts_at_login = True  # reads the XDG autostart folder
    toggle_button = "left"
    menu_button = "right"
    longest_idle = 150  # seconds in which everything idle has come
    layer = None  # the name of the layer, where several share one
    only = None  # the checks of a desktop that is another's variant
    expected = {}  # checks that cannot pass there, and why

    def __init__(self, machine):
        self.machine = machine

    # What each desktop says.

    def prepare(self):
        """Before the system is booted: its settings."""

    def logged_in(self):
        """After each login, once the panel is there."""

    def probes(self):
        """What comes when the user is idle: {name: a function that says whether it has come}."""
        raise NotImplementedError

    def restart_panel(self):
        raise NotImplementedError

    def log_out(self):
        raise NotImplementedError

    def wake(self):
        """After idleness: as if the user were back."""
        self.nudge()

    def picture(self):
        raise NotImplementedError

    def move(self, x, y):
        raise NotImplementedError

    def button(self, name, pressed):
        raise NotImplementedError

    def press_return(self):
        raise NotImplementedError

    def windows(self):
        """The titles of the windows on the screen."""
        raise NotImplementedError

    # What follows from that.

    def log_in(self):
        self.machine.log_in(self.kind, self.desktop, self.command)
        self.ready()
        wait_for(lambda: self.machine.processes(self.panel), f"the panel ({self.panel})", 90)
        if self.has_tray:
            wait_for(self.tray_is_there, "a tray", 60)
        self.machine.join_session()
        self.logged_in()
        self.settle()

    def ready(self):
        """Waits until the session can be driven."""

    def tray_is_there(self):
        return WATCHER in self.machine.names()

    def settle(self, seconds=20):
        """Until nothing moves on the screen."""
        end, before = time.monotonic() + seconds, None
        while time.monotonic() < end:
            now = self.picture()
            if before and len(differing(before, now)) < 500:
                return now
            before = now
            time.sleep(0.7)
        return before

    def nudge(self):
        self.move(WIDTH // 2 + 20, HEIGHT // 2)
        self.move(WIDTH // 2, HEIGHT // 2)

    def click(self, point, button="left", double=False):
        self.move(*point)
        time.sleep(0.3)
        for _ in range(2 if double else 1):
            self.button(button, True)
            time.sleep(0.03)
            self.button(button, False)
            time.sleep(0.05)

    def items(self):
        """The status notifier items of the product: (name on the bus, path)."""
        names = [name for name in self.machine.names() if name.startswith("org.kde.StatusNotifierItem-")]
        return [(name, ITEM) for name in names]

    def tray_windows(self):
        """The product's icons in an X11 tray, as boxes."""
        return []

    def flip(self, before):
        """Switches by the item itself, not by a click: only to find where the cup is, and how it looks."""
        name, path = self.items()[0]
        self.machine.call(name, path, "org.kde.StatusNotifierItem", "Activate", "ii", "0", "0")
        wait_for(lambda: self.picture() != before, "another picture after a switch", 10)
        return self.settle()

    def find_cup(self):
        """Where the cup is: what changes on the screen each time that it is switched."""
        if self.tray_windows():
            return self.tray_windows()[0]
        if not self.items():
            return None
        pictures = [self.settle()]
        for _ in range(4):
            pictures.append(self.flip(pictures[-1]))
        changed = differing(*pictures[:2]).intersection(*(differing(*pair) for pair in zip(pictures[1:], pictures[2:])))
        boxes = [box for box in clusters(changed)
                 if 4 <= box.right - box.left <= 64 and 4 <= box.bottom - box.top <= 64]
        return grown(boxes[0], 4) if boxes else None

    def suspended(self):
        """A probe: whether logind was asked to suspend since this was made."""
        before = self.machine.suspends()
        return lambda: self.machine.suspends() > before


class XWindows:
    """What is on an X server, also on one that a Wayland compositor has."""

    def xdotool(self, *command, check=True):
        return self.machine.user("xdotool", *map(str, command), check=check)

    def windows(self):
        """Those that can be seen, but not the icon in a tray."""
        found = self.xdotool("search", "--onlyvisible", "--class", "vantorel", check=False).split()
        return [self.xdotool("getwindowname", window, check=False).strip() for window in found
                if not self._icon(window)]

    def tray_windows(self):
        found = self.xdotool("search", "--onlyvisible", "--class", "vantorel", check=False).split()
        return [box for box in map(self._icon, found) if box]

    def _icon(self, window):
        """The box of a window that is as large as an icon."""
        answer = self.xdotool("getwindowgeometry", "--shell", window, check=False)
        found = {key: int(value) for key, value in re.findall(r"(X|Y|WIDTH|HEIGHT)=(\d+)", answer)}
        if len(found) == 4 and 8 <= found["WIDTH"] <= 64 and 8 <= found["HEIGHT"] <= 64:
            return Box(found["X"], found["Y"], found["X"] + found["WIDTH"], found["Y"] + found["HEIGHT"])
        return None


class X11(XWindows, Desktop):
    """On Xvfb."""

    session = ()
    common = ()

    @property
    def command(self):
        return ("/usr/local/bin/x-session", *self.session)

    def __init__(self, machine):
        super().__init__(machine)
        machine.environment["DISPLAY"] = DISPLAY
        machine.write("/usr/local/bin/x-session", X_SESSION, executable=True)

    def ready(self):
        wait_for(lambda: self.machine.text("/tmp/.X1-lock") and self.xdotool("getmouselocation", check=False), "the X server")

    def move(self, x, y):
        self.xdotool("mousemove", x, y)

    def button(self, name, pressed):
        self.xdotool("mousedown" if pressed else "mouseup", {"left": 1, "middle": 2, "right": 3}[name])

    def press_return(self):
        self.xdotool("key", "Return")

    def picture(self):
        return read_xwd(self.machine.path("/tmp/Xvfb_screen0").read_bytes())

    def saver_is_on(self):
        return self.machine.user("xssstate", "-s", check=False).strip() == "on"


class Wayland(Desktop):
    kind = "wayland"
    socket = "wayland-1"

    def __init__(self, machine):
        super().__init__(machine)
        machine.environment["WAYLAND_DISPLAY"] = self.socket
        self.client = None

    def ready(self):
        def connected():
            try:
                connection, self._connector = self.machine.user_socket(f"/run/user/{USER}/{self.socket}")
                return wayland.Client(connection, WIDTH, HEIGHT)
            except (OSError, KeyError):
                return None

        self.client = wait_for(connected, "the compositor", 60)

    def nudge(self):
        """Along the panel, not across a menu, of which a line would be selected then."""
        self.move(WIDTH // 2, self.client.at[1])
        super().nudge()

    def move(self, x, y):
        self.client.move(x, y)

    def button(self, name, pressed):
        self.client.button(name, pressed)
