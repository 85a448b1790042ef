"""weston: no tray of any kind, and no protocol by which anybody could keep it awake. The cup has to stay an outline.
Nothing can move its pointer, either: the preferences are written beforehand, and the schedule switches."""

import re
import time

from desktop import HEIGHT, WIDTH, Desktop
from machine import wait_for
from trees import USER

IDLE = 25
LOCK_LAYER = "(pos 0xffff0000)"  # WESTON_LAYER_POSITION_LOCK

CONFIG = f"""[core]
backend=headless-backend.so
idle-time={IDLE}

[shell]
locking=true
"""


class Weston(Desktop):
    name = "weston"
    title = "weston"
    layer = "sway"
    packages = "sway waybar swayidle swaybg grim wtype xwayland jq weston".split()
    versions = ("weston",)
    kind = "wayland"
    desktop = "weston"
    command = ("weston", "--debug", f"--width={WIDTH}", f"--height={HEIGHT}", "--log=/tmp/weston.log")
    panel = "weston"
    has_tray = False
    has_input = False
    starts_at_login = False
    longest_idle = 3 * IDLE
    socket = "wayland-1"
    only = ("shows", "second start", "idle off", "idle on", "login")
    expected = {"shows": "weston has no tray", "idle on": "weston has no way to keep it awake"}

    def __init__(self, machine):
        super().__init__(machine)
        machine.environment["WAYLAND_DISPLAY"] = self.socket

    def prepare(self):
        self.machine.write("/home/u/.config/weston.ini", CONFIG)

    def ready(self):
        wait_for(lambda: self.machine.path(f"/run/user/{USER}/{self.socket}").exists(), "weston")

    def scene(self):
        return self.machine.user("weston-debug", "scene-graph", check=False)

    def windows(self):
        return re.findall(r"'(Vantorel[^']*)'", self.scene())

    def probes(self):
        return {"lock": lambda: LOCK_LAYER in self.scene()}

    def wake(self):
        """A session without a pointer does not wake: a new one does."""
        self.log_out()
        wait_for(lambda: not self.machine.is_logged_in(), "the end of the session")
        self.log_in()

    def log_out(self):
        self.machine.end_session()

    def settle(self, seconds=0):
        time.sleep(1)

    def nudge(self):
        pass


DESKTOPS = [Weston]
