"""No desktop at all: a window manager, a tray, and a locker that starts by the X server's idle time."""

from desktop import X11

LOCKER = """#!/bin/sh
touch /tmp/locked
"""

TRAY = "trayer --edge bottom --align right --widthtype request --height 26 --tint 0xd8d8d8".split()

SESSION = f"""#!/bin/sh
{' '.join(TRAY)} &
xautolock -time 1 -locker /usr/local/bin/locker &
exec openbox
"""


class XAutoLock(X11):
    name = "xautolock"
    title = "bare X11, xautolock"
    packages = "openbox trayer xautolock suckless-tools".split()
    versions = ("openbox", "trayer", "xautolock")
    desktop = "openbox"
    session = ("/usr/local/bin/bare-session",)
    panel = "trayer"
    starts_at_login = False

    def prepare(self):
        self.machine.write("/usr/local/bin/locker", LOCKER, executable=True)
        self.machine.write("/usr/local/bin/bare-session", SESSION, executable=True)

    def tray_is_there(self):
        return "trayer" in self.xdotool("search", "--class", "trayer", "getwindowname", check=False)

    def probes(self):
        return {"lock": lambda: self.machine.path("/tmp/locked").exists()}

    def wake(self):
        super().wake()
        self.machine.path("/tmp/locked").unlink(missing_ok=True)

    def restart_panel(self):
        for process in self.machine.processes("trayer"):
            self.machine.root("kill", process, check=False)
        self.machine.user_service(*TRAY, log="/tmp/panel.log")

    def log_out(self):
        self.machine.user("openbox", "--exit")


DESKTOPS = [XAutoLock]
