"""The first launch: the Welcome window, and what it leaves behind."""

import configparser
import signal
import unittest

from desktop import APP, Desktop, wait_for

PORTUGUESE = "pt_BR.UTF-8"
ENGLISH = "en_GB.UTF-8"


class FirstRun(unittest.TestCase):
    def launch(self, language, **options):
        desktop = self.enterContext(Desktop(language=language, window_manager=True))
        desktop.start(**options)
        desktop.welcome_window()
        return desktop

    def expect_running(self, desktop, language):
        desktop.cup_geometry()
        wait_for(lambda: not desktop.windows())
        stored = wait_for(desktop.stored)
        self.assertEqual(stored["appLanguage"], language)
        self.assertIs(stored["launchAtLogin"], True)

    def test_return_continues_in_the_systems_language(self):
        for system, language in {PORTUGUESE: "pt-BR", ENGLISH: "en"}.items():
            with self.subTest(system):
                desktop = self.launch(system)
                self.assertIsNone(desktop.cup_window())
                desktop.xdotool("key", "Return")
                self.expect_running(desktop, language)

    def test_the_other_language_can_be_chosen_by_keyboard(self):
        for system, key, language in ((PORTUGUESE, "Down", "en"), (ENGLISH, "Up", "pt-BR")):
            with self.subTest(system):
                desktop = self.launch(system)
                desktop.xdotool("key", key)
                desktop.xdotool("key", "Return")
                self.expect_running(desktop, language)

    def test_continuing_writes_the_login_item(self):
        desktop = self.launch(ENGLISH)
        desktop.xdotool("key", "Return")
        wait_for(desktop.autostart_file.exists)
        entry = configparser.ConfigParser(interpolation=None)
        entry.optionxform = str
        entry.read(desktop.autostart_file)
        self.assertEqual(entry["Desktop Entry"]["Type"], "Application")
        self.assertEqual(entry["Desktop Entry"]["Name"], "Vantorel")
        self.assertEqual(entry["Desktop Entry"]["Exec"].strip('"'), str(APP / "Contents/MacOS/Vantorel"))

    def test_the_second_launch_shows_no_window(self):
        desktop = self.launch(PORTUGUESE)
        desktop.xdotool("key", "Return")
        desktop.cup_geometry()
        self.assertEqual(desktop.end(), 0)
        desktop.start()
        desktop.click_cup()
        wait_for(desktop.cup_is_filled)
        self.assertEqual(desktop.windows(), [])

    def test_quitting_from_the_welcome_window_leaves_nothing(self):
        for how in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(how.name):
                desktop = self.launch(ENGLISH)
                desktop.end(how)
                self.assertIsNone(desktop.stored())
                self.assertFalse(desktop.autostart_file.exists())
                desktop.start()
                desktop.welcome_window()

    def test_the_window_can_not_be_closed(self):
        desktop = self.launch(ENGLISH)
        window = desktop.welcome_window()
        desktop.xdotool("key", "alt+F4")
        desktop.xdotool("key", "Escape")
        self.assertEqual(desktop.windows(), [window])
        desktop.xdotool("key", "Return")  # comes after them
        self.expect_running(desktop, "en")

    def test_the_window_is_centred_and_as_large_as_its_content(self):
        desktop = self.launch(ENGLISH)
        x, y, width, height = desktop.geometry(desktop.welcome_window())
        self.assertNotEqual((width, height), (340, 320))
        self.assertAlmostEqual(x + width / 2, 1024 / 2, delta=1)
        self.assertAlmostEqual(y + height / 2, 768 / 2, delta=1)

    def test_a_refused_login_item_is_logged_and_no_hindrance(self):
        desktop = self.launch(ENGLISH, expects_log="LoginItem: register failed: ")
        desktop.config.mkdir(parents=True, exist_ok=True)
        desktop.autostart_file.parent.write_text("in the way")
        desktop.xdotool("key", "Return")
        desktop.cup_geometry()
        self.assertNotIn("launchAtLogin", wait_for(desktop.stored))


if __name__ == "__main__":
    unittest.main(verbosity=2)
