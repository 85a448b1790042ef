"""Preferences that an administrator decided, as Packaging/profile writes them for Linux."""

import unittest

from desktop import wait_for
from server import Server
from settings_window import (CONTROLS, EVERYTHING_FORCED, LANGUAGE, LOGIN, LOGIN_HINT, OFF, ON, PORTUGUESE_CONTROLS,
                             SCHEDULE, UPDATES, Settings)


class Start(Settings):
    def setUp(self):
        self.open_desktop()

    def test_a_forced_language_and_login_item_need_no_welcome_and_store_nothing(self):
        self.desktop.force("appLanguage=pt-BR", "launchAtLogin=true")
        self.desktop.start()
        self.open()
        self.desktop.xdotool("mousemove", "640", "400")  # away from the cup, which would show its tip
        wait_for(lambda: self.desktop.windows() == [self.window], what="no other window")
        self.assertEqual(tuple(self.controls()), PORTUGUESE_CONTROLS)
        self.assertTrue(self.is_login_item())
        self.assertIsNone(self.desktop.stored())

    def test_a_login_item_that_is_forced_off_is_removed_at_the_next_start(self):
        self.start()
        self.open()
        self.click(LOGIN)
        wait_for(self.is_login_item)
        self.assertEqual(self.desktop.end(), 0)
        self.desktop.force("launchAtLogin=false")
        self.desktop.start()
        wait_for(lambda: not self.is_login_item())

    def test_forced_updates_are_looked_for_although_the_user_said_no(self):
        with Server() as server:
            self.desktop.force("autoUpdate=true")
            self.start(environment={"KORVEX_UPDATE_BASE": server.base}, autoUpdate=False)
            wait_for(lambda: server.requests, 30, "a request")


class Window(Settings):
    def setUp(self):
        self.open_desktop()

    def test_everything_forced_is_shown_and_cannot_be_worked(self):
        self.desktop.force(*EVERYTHING_FORCED)
        self.start(appLanguage="pt-BR", autoUpdate=True)
        self.open()
        self.assertEqual([self.is_on(caption) for caption in (LOGIN, SCHEDULE, UPDATES)], [True, True, False])
        self.assertEqual((self.time_of(ON), self.time_of(OFF)), ("07:00", "17:00"))
        self.assertEqual(self.controls()[LANGUAGE]["name"], "English")
        for caption in CONTROLS:
            self.assertFalse(self.is_enabled(caption), caption)
            self.click(caption)
        self.keys("Tab", "space", "Down", "Return")
        self.assertEqual([self.is_on(caption) for caption in (LOGIN, SCHEDULE, UPDATES)], [True, True, False])
        self.assertNotIn(LOGIN_HINT, self.texts())
        self.expect_stored()

    def test_what_is_not_forced_is_the_users(self):
        self.desktop.force("scheduleEnabled=true", "scheduleOffMinutes=1020")
        self.start()
        self.open()
        self.assertEqual([self.is_enabled(caption) for caption in CONTROLS], [True, False, True, False, True, True])
        self.click(UPDATES)
        self.expect_stored(autoUpdate=False)
        self.click(ON, x=0.9, y=0.25)  # both times are written then, but for the one that is forced
        self.expect_stored(scheduleOnMinutes=600)

    def test_a_change_on_the_disk_shows_when_the_window_is_opened_again(self):
        self.start()
        self.open()
        self.assertTrue(self.is_on(UPDATES) and self.is_enabled(UPDATES))
        self.close()
        self.desktop.force("autoUpdate=false")
        self.open()
        self.assertFalse(self.is_on(UPDATES) or self.is_enabled(UPDATES))
        self.close()
        self.desktop.managed_file.unlink()
        self.open()
        self.assertTrue(self.is_on(UPDATES) and self.is_enabled(UPDATES))
        self.expect_stored()

    def test_a_damaged_file_forces_nothing_and_stays(self):
        self.desktop.managed_file.parent.mkdir()
        self.desktop.managed_file.write_text("damaged")
        self.start(environment={"QT_LOGGING_RULES": "*.debug=false;vantorel.preferences.info=true"},
                   expects_log=str(self.desktop.managed_file))
        self.open()
        self.assertTrue(self.is_enabled(UPDATES))
        self.click(UPDATES)
        self.expect_stored(autoUpdate=False)
        self.assertIn(str(self.desktop.managed_file), self.desktop.log())
        self.assertEqual([path.name for path in self.desktop.managed_file.parent.iterdir()],
                         [self.desktop.managed_file.name])
        self.assertEqual(self.desktop.managed_file.read_text(), "damaged")


if __name__ == "__main__":
    unittest.main(verbosity=2)
