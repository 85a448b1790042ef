"""Started twice: one cup, and the running copy shows what there is to set."""

import os
import signal
import unittest

from desktop import APP, Desktop, wait_for


class OneCopy(unittest.TestCase):
    def open_desktop(self, **options):
        self.desktop = self.enterContext(Desktop(**options))

    def start_again(self, **options):
        """The exit status of a further start."""
        return self.desktop.spawn([str(APP / "Contents/MacOS/Vantorel")], **options).wait(10)

    def test_a_second_start_ends_and_the_first_shows_settings(self):
        for buses in (True, False):
            with self.subTest(buses=buses):
                self.open_desktop(session_bus=buses, system_bus=buses)
                self.desktop.start_as_returning_user()
                self.desktop.cup_geometry()
                self.assertEqual(self.start_again(), 0)
                wait_for(self.desktop.settings_windows)
                self.assertEqual(self.start_again(), 0)
                self.assertEqual(len(self.desktop.settings_windows()), 1)
                self.assertEqual(self.desktop.end(), 0)
                self.assertEqual(self.desktop.log(), "")

    def test_a_welcome_window_that_waits_is_shown_instead(self):
        self.open_desktop(window_manager=True)
        self.desktop.start()
        window = self.desktop.welcome_window()
        self.desktop.xdotool("windowminimize", window)
        wait_for(lambda: not self.desktop.windows())
        self.assertEqual(self.start_again(), 0)
        wait_for(self.desktop.windows)
        self.assertEqual(self.desktop.settings_windows(), [])

    def test_what_a_killed_copy_leaves_is_no_hindrance(self):
        self.open_desktop()
        for _ in range(2):
            self.desktop.start_as_returning_user()
            self.desktop.cup_geometry()
            self.desktop.end(signal.SIGKILL)
            wait_for(lambda: self.desktop.cup_window() is None)
        self.desktop.start_as_returning_user()
        self.desktop.cup_geometry()
        self.assertEqual(self.start_again(), 0)
        wait_for(self.desktop.settings_windows)

    def test_another_account_has_a_copy_of_its_own(self):
        self.open_desktop()
        self.desktop.start_as_returning_user()
        self.desktop.cup_geometry()
        other = self.desktop.folder / "other"
        other.mkdir(mode=0o700)
        process = self.desktop.spawn([str(APP / "Contents/MacOS/Vantorel")], environment={
            "XDG_RUNTIME_DIR": str(other), "XDG_CONFIG_HOME": str(other), "HOME": str(other)})
        wait_for(lambda: os.path.exists(other / "com.korvex.vantorel.lock"))
        self.assertIsNone(process.poll())

    def test_without_a_runtime_folder_the_settings_folder_will_do(self):
        self.open_desktop()
        del self.desktop.environment["XDG_RUNTIME_DIR"]
        self.desktop.start_as_returning_user(expects_log="QStandardPaths: XDG_RUNTIME_DIR not set")
        self.desktop.cup_geometry()
        self.assertEqual(self.start_again(), 0)
        wait_for(self.desktop.settings_windows)


if __name__ == "__main__":
    unittest.main(verbosity=2)
