"""Cinnamon: its session manager, and its saver, which locks. Its power plugin suspends by the
same idleness, but never in a container."""

from desktop import MINUTE, X11


class Cinnamon(X11):
    name = "cinnamon"
    title = "Cinnamon"
    packages = """cinnamon-session cinnamon cinnamon-screensaver cinnamon-settings-daemon muffin
        libglib2.0-bin""".split()
    versions = ("cinnamon", "cinnamon-session")
    desktop = "X-Cinnamon"
    session = ("cinnamon-session",)
    panel = "cinnamon"

    def prepare(self):
        self.machine.compile_settings({
            "org.cinnamon.desktop.session": {"idle-delay": f"uint32 {MINUTE}"},
            "org.cinnamon.desktop.screensaver": {"lock-enabled": "true", "lock-delay": "uint32 0"},
        })

    def tray_is_there(self):
        return "org.Cinnamon" in self.machine.names()

    def probes(self):
        return {"saver and lock": self.saver_is_active}

    def saver_is_active(self):
        return " active" in self.machine.user("cinnamon-screensaver-command", "--query", check=False)

    def wake(self):
        super().wake()
        self.machine.user("cinnamon-screensaver-command", "--deactivate", check=False)

    def restart_panel(self):
        self.machine.user_service("cinnamon", "--replace", log="/tmp/panel.log")

    def log_out(self):
        self.machine.user("cinnamon-session-quit", "--logout", "--no-prompt", "--force")


DESKTOPS = [Cinnamon]
