"""GNOME on Wayland with the AppIndicator extension, without a screen. Without GDM it does not lock."""

import json
import pathlib
import re

from desktop import HEIGHT, MINUTE, WIDTH, Desktop
from machine import Missing, wait_for
from pictures import read_png
import wayland

SHELL = f"""[Service]
ExecStart=
ExecStart=/usr/bin/gnome-shell --wayland --headless --virtual-monitor {WIDTH}x{HEIGHT} --unsafe-mode
"""

EXTENSION = "ubuntu-appindicators@ubuntu.com"
INPUT = pathlib.Path(__file__).resolve().parent.parent / "gnome_input.py"
RETURN = 0xFF0D


class Gnome(Desktop):
    name = "gnome"
    title = "GNOME with AppIndicator"
    packages = """gnome-shell gnome-session gnome-settings-daemon gnome-shell-extension-appindicator gnome-session-bin
        gnome-control-center- mutter xwayland gnome-terminal- python3-dbus""".split()
    versions = ("gnome-shell", "gnome-shell-extension-appindicator")
    kind = "wayland"
    desktop = "GNOME"
    command = ("gnome-session", "--session=gnome")
    panel = "gnome-shell"
    toggle_button = "middle"
    menu_button = "left"

    def __init__(self, machine):
        super().__init__(machine)
        machine.environment["WAYLAND_DISPLAY"] = "wayland-0"
        self._data = self._picture = None

    def prepare(self):
        self.machine.write("/etc/systemd/user/org.gnome.Shell@wayland.service.d/headless.conf", SHELL)
        self.machine.compile_settings({
            "org.gnome.shell": {"enabled-extensions": f"['{EXTENSION}']", "welcome-dialog-last-shown-version": "'999'"},
            "org.gnome.desktop.session": {"idle-delay": f"uint32 {MINUTE}"},
            "org.gnome.desktop.notifications": {"show-banners": "false"},
        })

    def ready(self):
        wait_for(lambda: "org.gnome.Mutter.RemoteDesktop" in self.machine.names(), "GNOME's shell", 90)
        self._input = self.machine.user_process("/usr/bin/python3", "-c", INPUT.read_text())
        if self._input.stdout.readline() != "ready\n":
            raise Missing("a pointer")

    def logged_in(self):
        self.shell("Main.overview.hide()")

    def items(self):
        """There the item goes by the connection's name."""
        watcher = "org.kde.StatusNotifierWatcher"
        answer = self.machine.property(watcher, "/StatusNotifierWatcher", watcher, "RegisteredStatusNotifierItems", check=False)
        return [tuple(item.split("@")) for item in re.findall(r'"(:[^"]+)"', answer)]

    def shell(self, script):
        """Evaluates something in the shell."""
        answer = self.machine.user("gdbus", "call", "--session", "--dest", "org.gnome.Shell", "--object-path",
                                   "/org/gnome/Shell", "--method", "org.gnome.Shell.Eval", script)
        done, _, result = answer.strip()[1:-1].partition(", ")
        if done != "true":
            raise Missing(f"an answer of the shell to {script}: {answer}")
        return json.loads(result[1:-1] or "null") if result[1:-1] else None

    def _tell(self, *words):
        self._input.stdin.write(" ".join(map(str, words)) + "\n")
        self._input.stdin.flush()
        if self._input.stdout.readline() != "done\n":
            raise Missing("an answer of the pointer")

    def move(self, x, y):
        self._tell("move", x, y, WIDTH, HEIGHT)

    def button(self, name, pressed):
        self._tell("button", wayland.BUTTONS[name], int(pressed))

    def press_return(self):
        self._tell("key", RETURN, 1)
        self._tell("key", RETURN, 0)

    def picture(self):
        """The upper half, where everything happens: GNOME writes only PNG, which takes long to read without a library."""
        path = "/tmp/picture.png"
        self.machine.user("gdbus", "call", "--session", "--dest", "org.gnome.Shell.Screenshot", "--object-path",
                          "/org/gnome/Shell/Screenshot", "--method", "org.gnome.Shell.Screenshot.ScreenshotArea",
                          "0", "0", str(WIDTH), str(HEIGHT // 2), "false", path)
        data = self.machine.path(path).read_bytes()
        if data != self._data:
            self._data, self._picture = data, read_png(data)
        return self._picture

    def windows(self):
        return self.shell("global.get_window_actors().map(actor => actor.meta_window.title)")

    def probes(self):
        return {"idle": self.is_idle}

    def is_idle(self):
        """At this GNOME blanks, and locks where GDM is. It suspends by the same, but never in a container."""
        return self.machine.property("org.gnome.SessionManager", "/org/gnome/SessionManager/Presence",
                                     "org.gnome.SessionManager.Presence", "status", check=False) == "u 3"

    def restart_panel(self):
        """The shell cannot be restarted on Wayland; what shows the cup can."""
        self.machine.user("gnome-extensions", "disable", EXTENSION)
        wait_for(lambda: not self.tray_is_there(), "the end of the extension")
        self.machine.user("gnome-extensions", "enable", EXTENSION)

    def log_out(self):
        self.machine.user("gnome-session-quit", "--logout", "--no-prompt", "--force")


DESKTOPS = [Gnome]
