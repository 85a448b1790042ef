"""LXQt: its power management looks at the X server's idle time, and asks nobody."""

from desktop import X11

SETTINGS = "/home/u/.config/lxqt"
SUSPEND = 4  # LXQt::Power::Action

PANEL = """[General]
panels=panel1

[panel1]
alignment=-1
desktop=0
height=32
iconSize=22
plugins=mainmenu, taskbar, statusnotifier
position=Bottom
width=100
width-percent=true

[mainmenu]
type=mainmenu

[taskbar]
type=taskbar

[statusnotifier]
alignment=Right
type=statusnotifier
"""


class Lxqt(X11):
    name = "lxqt"
    title = "LXQt"
    packages = """lxqt-session lxqt-panel lxqt-powermanagement lxqt-notificationd lxqt-config lxqt-qtplugin openbox
        lxqt-policykit xscreensaver breeze-icon-theme pcmanfm-qt-""".split()
    versions = ("lxqt-panel", "lxqt-powermanagement")
    desktop = "LXQt"
    session = ("startlxqt",)
    panel = "lxqt-panel"

    def prepare(self):
        self.machine.write(f"{SETTINGS}/session.conf", "[General]\nwindow_manager=openbox\nleave_confirmation=false\n"
                           "lock_screen_before_power_actions=false\n")
        self.machine.write(f"{SETTINGS}/lxqt-powermanagement.conf",
                           "[General]\nenableIdlenessWatcher=true\nidlenessACTime=00:01:00\n"
                           f"idlenessACAction={SUSPEND}\nidlenessBatteryTime=00:01:00\nidlenessBatteryAction={SUSPEND}\n")

        self.machine.write(f"{SETTINGS}/panel.conf", PANEL)

    def probes(self):
        return {"suspend": self.suspended()}

    def restart_panel(self):
        for process in self.machine.processes("lxqt-panel"):
            self.machine.root("kill", process, check=False)
        self.machine.user_service("lxqt-panel", log="/tmp/panel.log")

    def log_out(self):
        self.machine.user("lxqt-leave", "--logout", check=False)


DESKTOPS = [Lxqt]
