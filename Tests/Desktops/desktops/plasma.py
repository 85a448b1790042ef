"""Plasma on Wayland, drawn by KWin without a screen."""

from desktop import HEIGHT, WIDTH, Wayland, XWindows
from pictures import read_ppm
import wayland

KWIN = f"""[Service]
ExecStart=
ExecStart=/usr/bin/kwin_wayland_wrapper --virtual --width {WIDTH} --height {HEIGHT} --xwayland
Environment=KWIN_COMPOSE=O2 KWIN_WAYLAND_NO_PERMISSION_CHECKS=1 KWIN_SCREENSHOT_NO_PERMISSION_CHECKS=1
"""

POWER = """[AC][SuspendSession]
idleTime=90000
suspendThenHibernate=false
suspendType=1
"""

LOCK = """[Daemon]
Autolock=true
Timeout=1
LockGrace=0
"""


class Plasma(XWindows, Wayland):
    name = "plasma"
    title = "Plasma, Wayland"
    layer = "plasma"
    packages = """plasma-desktop plasma-workspace plasma-workspace-wayland kwin-wayland powerdevil kscreen
        kde-cli-tools breeze xwayland qml-module-org-kde-kirigami2 kde-spectacle""".split()
    versions = ("plasma-workspace", "kwin-wayland", "powerdevil")
    desktop = "KDE"
    command = ("startplasma-wayland",)
    socket = "wayland-0"
    panel = "plasmashell"

    def prepare(self):
        self.machine.without_capabilities("/usr/bin/kwin_wayland", "/usr/lib/x86_64-linux-gnu/libexec/org_kde_powerdevil")
        self.machine.write("/etc/systemd/user/plasma-kwin_wayland.service.d/headless.conf", KWIN)
        self.machine.write("/home/u/.config/powermanagementprofilesrc", POWER)
        self.machine.write("/home/u/.config/kscreenlockerrc", LOCK)

    def probes(self):
        return {"lock": self.is_locked, "suspend": self.suspended()}

    def is_locked(self):
        return self.machine.call("org.freedesktop.ScreenSaver", "/ScreenSaver", "org.freedesktop.ScreenSaver", "GetActive",
                                 check=False) == "b true"

    def wake(self):
        super().wake()
        self.machine.root("loginctl", "unlock-sessions", check=False)

    def picture(self):
        self.machine.user("env", "QT_QPA_PLATFORM=wayland", "spectacle", "--background", "--nonotify", "--fullscreen", "--output",
                          "/tmp/picture.ppm")
        return read_ppm(self.machine.path("/tmp/picture.ppm").read_bytes())

    def press_return(self):
        self.client.key(wayland.RETURN)

    def restart_panel(self):
        self.machine.user("systemctl", "--user", "restart", "plasma-plasmashell")

    def log_out(self):
        self.machine.user("busctl", "--user", "call", "org.kde.Shutdown", "/Shutdown", "org.kde.Shutdown", "logout")


class DarkPanel(Plasma):
    """As Breeze Twilight has it: the panel is dark, and what programs can ask for says light."""
    name = "plasma-twilight"
    title = "Plasma, a dark panel under light colours"
    only = ("shows", "contrast")

    def prepare(self):
        super().prepare()
        self.machine.write("/home/u/.config/plasmarc", "[Theme]\nname=breeze-dark\n")


DESKTOPS = [Plasma, DarkPanel]
