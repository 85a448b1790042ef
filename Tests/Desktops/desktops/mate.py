"""MATE: its session manager says when the user is idle; its saver locks, its power manager suspends."""

from desktop import MINUTE, X11


class Mate(X11):
    name = "mate"
    title = "MATE"
    packages = """mate-session-manager mate-panel mate-settings-daemon marco mate-screensaver mate-power-manager
        mate-indicator-applet mate-desktop mate-applets caja- dconf-cli dconf-gsettings-backend libglib2.0-bin""".split()
    versions = ("mate-panel", "mate-session-manager", "mate-power-manager")
    desktop = "MATE"
    session = ("mate-session",)
    panel = "mate-panel"

    def prepare(self):
        self.machine.compile_settings({
            "org.mate.session": {"idle-delay": 1},
            "org.mate.screensaver": {"lock-enabled": "false", "mode": "'blank-only'"},
            "org.mate.power-manager": {"sleep-computer-ac": MINUTE, "action-sleep-type-ac": "'suspend'"},
        })

    def probes(self):
        return {"saver": self.saver_is_active, "suspend": self.suspended()}

    def saver_is_active(self):
        return " active" in self.machine.user("mate-screensaver-command", "--query", check=False)

    def wake(self):
        super().wake()
        self.machine.user("mate-screensaver-command", "--deactivate", check=False)

    def restart_panel(self):
        self.machine.user_service("mate-panel", "--replace", log="/tmp/panel.log")

    def log_out(self):
        self.machine.user("mate-session-save", "--force-logout")


DESKTOPS = [Mate]
