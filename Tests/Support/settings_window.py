"""The Settings window on a desktop of its own, by mouse, keyboard and screen reader."""

import unittest

from desktop import Desktop, wait_for

LOGIN, SCHEDULE, ON, OFF = "Launch at login", "Automatic schedule", "Turn on at", "Turn off at"
UPDATES, LANGUAGE = "Update automatically", "Language"
CONTROLS = (LOGIN, SCHEDULE, ON, OFF, UPDATES, LANGUAGE)
PORTUGUESE_CONTROLS = ("Iniciar com o Mac", "Agenda automática", "Ativar às", "Desativar às",
                       "Atualizar automaticamente", "Idioma")
LOGIN_HINT = "Move Vantorel to the Applications folder to enable this."
REFUSED = "LoginItem: register failed: "
STORED = {"appLanguage": "en", "autoUpdate": True, "scheduleEnabled": False, "scheduleOnMinutes": 540,
          "scheduleOffMinutes": 1080}
EVERYTHING_FORCED = ("appLanguage=en", "launchAtLogin=true", "autoUpdate=false", "scheduleEnabled=true",
                     "scheduleOnMinutes=420", "scheduleOffMinutes=1020")


class Settings(unittest.TestCase):
    def open_desktop(self, **options):
        self.desktop = self.enterContext(Desktop(system_bus=False, window_manager=True, **options))
        self.desktop.start_accessibility()

    def start(self, environment=None, expects_log=None, **defaults):
        self.stored = STORED | defaults
        self.desktop.store(self.stored)
        self.desktop.start(environment=environment, expects_log=expects_log)

    def open(self):
        self.window = self.desktop.open_settings()

    def close(self):
        self.desktop.xdotool("key", "alt+F4")
        wait_for(lambda: not self.desktop.settings_windows(), what="the window to close")

    def controls(self):
        """What can be worked, by its caption."""
        return {caption: found for found in self.desktop.accessibles()
                for caption in found["captions"] if found["role"] in ("check box", "spin button", "combo box")}

    def is_on(self, caption):
        return "checked" in self.controls()[caption]["states"]

    def is_enabled(self, caption):
        return "enabled" in self.controls()[caption]["states"]

    def time_of(self, caption):
        return self.controls()[caption]["text"].replace("\u202f", " ")

    def texts(self):
        return [found["name"] for found in self.desktop.accessibles() if "showing" in found["states"]]

    def click(self, caption, x=0.5, y=0.5):
        left, top, width, height = self.controls()[caption]["geometry"]
        self.desktop.xdotool("mousemove", left + int(width * x), top + int(height * y))
        self.desktop.xdotool("click", 1)

    def keys(self, *keys):
        self.desktop.xdotool("key", *keys)

    def is_login_item(self):
        return self.desktop.autostart_file.exists()

    def refuse_login_items(self):
        self.desktop.autostart_file.parent.write_text("in the way")

    def expect_stored(self, **changes):
        """That the preferences change by this, and by nothing else."""
        self.stored |= changes
        wait_for(lambda: self.desktop.stored() == self.stored, 5,
                 lambda: f"{self.stored}, there is {self.desktop.stored()}")
