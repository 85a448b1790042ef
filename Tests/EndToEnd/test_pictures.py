"""What the Settings window looks like, pixel by pixel: with Debian 12's Qt, FreeType and DejaVu."""

import pathlib
import subprocess
import unittest

from desktop import APP, Desktop, wait_for
from settings_window import EVERYTHING_FORCED, LANGUAGE, LOGIN, LOGIN_HINT, PORTUGUESE_CONTROLS, REFUSED, Settings

PICTURES = pathlib.Path(__file__).resolve().parent.parent / "Data/pictures"


class WithPictures(Settings):
    """The window as it is to look, to a small tolerance. What it looked like is kept beside the program."""

    TAKEN = APP.parent / "pictures"
    TOLERANCE = 60  # pixels that are more than slightly off: a text that moved by one makes some hundred

    def expect_picture(self, name):
        x, y, width, height = self.desktop.geometry(self.window)
        self.desktop.xdotool("mousemove", 1, 1)
        self.TAKEN.mkdir(exist_ok=True)
        taken = self.TAKEN / f"{name}.png"

        def is_as_it_was():
            self.desktop.wait_for_still_picture()
            self.desktop.screenshot(taken, f"{width}x{height}+{x}+{y}")
            compared = subprocess.run(["compare", "-metric", "AE", "-fuzz", "6%", taken, PICTURES / f"{name}.png", "null:"],
                                      capture_output=True, text=True)
            self.assertLess(compared.returncode, 2, compared.stderr)
            return float(compared.stderr) <= self.TOLERANCE

        wait_for(is_as_it_was, 5, f"{taken} to be as it was")


class Pictures(WithPictures):
    def take(self, name, scheme=Desktop.PREFER_LIGHT, environment=None, **defaults):
        self.open_desktop(screen="1280x1024x24")
        self.desktop.start_portal(scheme)
        self.start(environment=environment, **defaults)
        self.open()
        self.expect_picture(name)

    def test_english_light(self):
        self.take("settings-en-light")

    def test_english_dark(self):
        self.take("settings-en-dark", Desktop.PREFER_DARK, scheduleEnabled=True)

    def test_portuguese_light(self):
        self.take("settings-pt-light", appLanguage="pt-BR", scheduleEnabled=True)

    def test_portuguese_dark(self):
        self.take("settings-pt-dark", Desktop.PREFER_DARK, appLanguage="pt-BR")

    def test_at_a_scale_factor_of_two(self):
        self.take("settings-en-twice", environment={"QT_SCALE_FACTOR": "2"}, scheduleEnabled=True)

    def test_after_the_language_was_switched_in_place(self):
        self.take("settings-en-light")
        self.click(LANGUAGE)
        self.keys("Up", "Return")
        wait_for(lambda: tuple(self.controls()) == PORTUGUESE_CONTROLS)
        self.expect_picture("settings-en-switched-to-pt")

    def test_the_focus_ring(self):
        self.take("settings-en-light")
        self.keys("Tab")
        self.expect_picture("settings-en-focus")


class PicturesOfWhatIsForced(WithPictures):
    def take(self, name, scheme, *settings):
        self.open_desktop(screen="1280x1024x24")
        self.desktop.start_portal(scheme)
        self.desktop.force(*settings)
        self.start()
        self.open()
        self.expect_picture(name)

    def test_everything(self):
        self.take("settings-en-forced", Desktop.PREFER_LIGHT, *EVERYTHING_FORCED)

    def test_some_in_the_dark(self):
        self.take("settings-pt-forced-dark", Desktop.PREFER_DARK, "appLanguage=pt-BR", "scheduleEnabled=true",
                  "scheduleOffMinutes=1020")


class PictureOfARefusal(WithPictures):
    def test_with_the_hint(self):
        self.open_desktop(screen="1280x1024x24")
        self.desktop.start_portal(Desktop.PREFER_LIGHT)
        self.start(expects_log=REFUSED)
        self.refuse_login_items()
        self.open()
        self.click(LOGIN)
        wait_for(lambda: LOGIN_HINT in self.texts())
        self.expect_picture("settings-en-hint")


if __name__ == "__main__":
    unittest.main(verbosity=2)
