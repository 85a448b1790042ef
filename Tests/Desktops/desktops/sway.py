"""sway, with waybar and with its own bar. swayidle acts on idleness; another client listens, too."""

import json

from desktop import HEIGHT, WIDTH, Wayland
from machine import wait_for
from pictures import read_ppm

IDLE = 12

CONFIG = """output HEADLESS-1 resolution {width}x{height} position 0 0 bg #204060 solid_color
xwayland {xwayland}
seat seat0 hide_cursor 0
focus_follows_mouse no
bar {{
    position top
    {bar}
}}
exec dbus-update-activation-environment --systemd WAYLAND_DISPLAY DISPLAY SWAYSOCK XDG_CURRENT_DESKTOP XDG_SESSION_TYPE
exec swayidle -w timeout {idle} 'touch /tmp/idle' resume 'rm -f /tmp/idle'
"""

WAYBAR = """{"modules-left": ["sway/workspaces"], "modules-right": ["tray"], "tray": {"icon-size": 20}}"""


class Sway(Wayland):
    layer = "sway"
    packages = "sway waybar swayidle swaybg grim wtype xwayland jq weston".split()
    desktop = "sway"
    command = ("env", "WLR_BACKENDS=headless", "WLR_LIBINPUT_NO_DEVICES=1", "WLR_RENDERER=pixman", "sway")
    starts_at_login = False
    longest_idle = 3 * IDLE
    bar = ""
    xwayland = "disable"

    def prepare(self):
        self.machine.write("/home/u/.config/sway/config", CONFIG.format(
            width=WIDTH, height=HEIGHT, xwayland=self.xwayland, bar=self.bar, idle=IDLE))
        self.machine.write("/home/u/.config/waybar/config", WAYBAR)

    def ready(self):
        super().ready()
        socket = wait_for(lambda: self.machine.user("sh", "-c", "ls /run/user/1000/sway-ipc.*", check=False).split(), "sway")
        self.machine.environment["SWAYSOCK"] = socket[0]
        self.client.watch_idleness(IDLE)

    def swaymsg(self, *command, check=True):
        return self.machine.user("swaymsg", *command, check=check)

    def probes(self):
        return {"swayidle": lambda: self.machine.path("/tmp/idle").exists(), "other client": lambda: self.client.is_idle}

    def picture(self):
        return read_ppm(self.machine.user_bytes("grim", "-t", "ppm", "-"))

    def windows(self):
        titles, open_nodes = [], [json.loads(self.swaymsg("-t", "get_tree"))]
        while open_nodes:
            node = open_nodes.pop()
            open_nodes += node["nodes"] + node["floating_nodes"]
            titles += [node["name"]] if node.get("pid") else []
        return titles

    def press_return(self):
        self.machine.user("wtype", "-k", "Return")

    def restart_panel(self):
        self.swaymsg("reload")

    def log_out(self):
        self.swaymsg("exit", check=False)


class Waybar(Sway):
    name = "sway-waybar"
    title = "sway, waybar, without Xwayland"
    versions = ("sway", "waybar", "swayidle")
    panel = "waybar"
    bar = "swaybar_command waybar"


class Swaybar(Sway):
    name = "sway-swaybar"
    title = "sway, its own bar, with Xwayland"
    xwayland = "enable"
    versions = ("sway", "swayidle")
    panel = "swaybar"
    bar = "colors {\n        background #323232\n    }"


DESKTOPS = [Waybar, Swaybar]
