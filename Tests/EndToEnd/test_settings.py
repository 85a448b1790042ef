"""The Settings window, by mouse, keyboard and screen reader."""

import configparser
import shutil
import signal
import time
import unittest

import Xlib.X
import Xlib.Xatom
from desktop import APP, IDENTIFIER, ROOT, Desktop, wait_for
from server import Server
from settings_window import (CONTROLS, LANGUAGE, LOGIN, LOGIN_HINT, OFF, ON, PORTUGUESE_CONTROLS, REFUSED, SCHEDULE,
                             UPDATES, Settings)


class ByMouse(Settings):
    def setUp(self):
        self.open_desktop()
        self.start()
        self.open()

    def test_each_control_changes_what_it_says_and_nothing_else(self):
        self.click(LOGIN)
        self.expect_stored(launchAtLogin=True)
        self.assertTrue(self.is_login_item())
        self.click(SCHEDULE)
        self.expect_stored(scheduleEnabled=True)
        self.click(ON, x=0.9, y=0.25)  # of its stepper, upwards
        self.expect_stored(scheduleOnMinutes=600)
        self.click(OFF, x=0.9, y=0.75)
        self.expect_stored(scheduleOffMinutes=1020)
        self.click(UPDATES)
        self.expect_stored(autoUpdate=False)
        self.click(LANGUAGE)
        item = wait_for(lambda: [found for found in self.desktop.accessibles() if found["role"] == "list item"
                                 and found["name"] == "Português (Brasil)" and found["geometry"][0] > 0])[0]
        left, top, width, height = item["geometry"]
        self.desktop.xdotool("mousemove", left + width // 2, top + height // 2)
        time.sleep(0.3)  # a list that has just opened takes the click that opened it for a second one
        self.desktop.xdotool("click", 1)
        self.expect_stored(appLanguage="pt-BR")
        self.assertTrue(self.is_login_item())

    def test_each_switch_goes_back(self):
        for caption, changes in ((LOGIN, {"launchAtLogin": False}), (SCHEDULE, {}), (UPDATES, {})):
            with self.subTest(caption):
                before = self.is_on(caption)
                self.click(caption)
                wait_for(lambda: self.is_on(caption) != before)
                self.click(caption)
                wait_for(lambda: self.is_on(caption) == before)
                self.expect_stored(**changes)
        self.assertFalse(self.is_login_item())

    def test_a_schedule_that_is_off_disables_its_times(self):
        for _ in range(2):
            self.assertFalse(self.is_enabled(ON) or self.is_enabled(OFF))
            self.click(ON, x=0.9, y=0.25)
            self.click(SCHEDULE)
            wait_for(lambda: self.is_enabled(ON) and self.is_enabled(OFF))
            self.click(SCHEDULE)
            wait_for(lambda: not self.is_enabled(ON))
        self.expect_stored()

    def test_the_menus_line_brings_the_one_window_back_to_the_front(self):
        for _ in range(2):
            self.open()
            self.assertEqual(self.desktop.settings_windows(), [self.window])


class ByKeyboard(Settings):
    def setUp(self):
        self.open_desktop()

    def test_everything_can_be_reached_and_worked(self):
        self.start()
        self.open()
        self.keys("Tab", "space")
        self.expect_stored(launchAtLogin=True)
        self.keys("Tab", "space")
        self.expect_stored(scheduleEnabled=True)
        self.keys("Tab", "2", "2", "0", "0", "Return")
        self.expect_stored(scheduleOnMinutes=1320)
        self.keys("Tab", "0", "6", "0", "0", "Return")
        self.expect_stored(scheduleOffMinutes=360)
        self.keys("Tab", "space")
        self.expect_stored(autoUpdate=False)
        self.keys("Tab", "Up")
        self.expect_stored(appLanguage="pt-BR")
        self.assertEqual(self.focused(), "Idioma")
        self.keys("shift+Tab", "space")
        self.expect_stored(autoUpdate=True)

    def focused(self):
        [caption] = [caption for caption, control in self.controls().items() if "focused" in control["states"]]
        return caption

    def test_a_time_that_was_typed_counts_when_the_window_is_closed(self):
        self.start(scheduleEnabled=True)
        self.open()
        self.keys("Tab", "Tab", "Tab", "2", "2", "3", "0")
        self.close()
        self.expect_stored(scheduleOnMinutes=1350)

    def test_the_times_are_written_as_the_region_does(self):
        self.start(environment={"LC_TIME": "en_US.UTF-8"}, scheduleEnabled=True, scheduleOffMinutes=1439)
        self.open()
        self.assertEqual((self.time_of(ON), self.time_of(OFF)), ("9:00 AM", "11:59 PM"))
        self.keys("Tab", "Tab", "Tab", "Up", "Tab", "Tab", "Up")  # an hour later, and in the other half of the day
        self.expect_stored(scheduleOnMinutes=1320)
        self.assertEqual(self.time_of(ON), "10:00 PM")


class ForScreenReaders(Settings):
    def test_controls_are_named_by_their_captions_in_either_language(self):
        self.open_desktop()
        self.start()
        self.open()
        self.assertEqual(tuple(self.controls()), CONTROLS)
        for caption, control in self.controls().items():
            if control["role"] != "combo box":  # which is named by its choice, and captioned
                self.assertEqual(control["name"], caption)
        windows = [(found["role"], found["name"]) for found in self.desktop.accessibles()]
        self.assertIn(("dialog", "Vantorel Settings"), windows)
        self.click(LANGUAGE)
        self.keys("Up", "Return")
        wait_for(lambda: tuple(self.controls()) == PORTUGUESE_CONTROLS)

    def test_they_are_there_when_the_bus_hung_at_the_start(self):
        self.open_desktop()
        bus = self.desktop.session_bus_process
        bus.send_signal(signal.SIGSTOP)
        self.addCleanup(bus.send_signal, signal.SIGCONT)
        self.start()
        self.desktop.cup_geometry()  # after which the start no longer waits for it
        bus.send_signal(signal.SIGCONT)
        self.open()
        wait_for(lambda: tuple(self.controls()) == CONTROLS)


class Opening(Settings):
    def setUp(self):
        self.open_desktop()

    def test_its_window_has_the_programs_icon(self):
        icons = self.desktop.folder / "share/icons/hicolor"
        (icons / "128x128/apps").mkdir(parents=True)
        shutil.copy(ROOT / "Packaging/icons/128.png", icons / f"128x128/apps/{IDENTIFIER}.png")
        (icons / "index.theme").write_text("[Icon Theme]\nName=hicolor\nDirectories=128x128/apps\n"
                                           "[128x128/apps]\nSize=128\nType=Fixed\n")
        self.start(environment={"XDG_DATA_DIRS": str(self.desktop.folder / "share")})
        self.open()
        display = self.desktop.display
        window = display.create_resource_object("window", self.window)
        icon = window.get_full_property(display.get_atom("_NET_WM_ICON"), Xlib.Xatom.CARDINAL)
        self.assertIsNotNone(icon)
        self.assertEqual(list(icon.value[:2]), [128, 128])

    def test_it_shows_how_things_are(self):
        self.start(scheduleEnabled=True, autoUpdate=False, scheduleOnMinutes=0, scheduleOffMinutes=1439)
        self.open()
        self.assertEqual([self.is_on(caption) for caption in (LOGIN, SCHEDULE, UPDATES)], [False, True, False])
        self.assertEqual((self.time_of(ON), self.time_of(OFF)), ("00:00", "23:59"))
        self.assertEqual(self.controls()[LANGUAGE]["name"], "English")
        self.assertNotIn(LOGIN_HINT, self.texts())
        self.expect_stored()

    def test_it_is_in_the_middle_of_the_screen_each_time(self):
        self.start()
        for _ in range(2):
            self.open()
            x, y, width, height = self.desktop.geometry(self.window)
            self.assertAlmostEqual(x + width / 2, 1024 / 2, delta=1)
            self.assertAlmostEqual(y + height / 2, 768 / 2, delta=1)
            self.assertNotEqual((width, height), (360, 240))
            self.desktop.xdotool("windowmove", self.window, 10, 50)
            self.close()

    def test_reopening_reads_the_world_again(self):
        self.start()
        self.open()
        self.close()
        self.desktop.autostart_file.parent.mkdir()
        entry = configparser.ConfigParser()
        entry.optionxform = str
        entry["Desktop Entry"] = {"Type": "Application", "Name": "Vantorel", "Exec": APP / "Contents/MacOS/Vantorel"}
        with open(self.desktop.autostart_file, "w") as file:
            entry.write(file, space_around_delimiters=False)
        self.stored |= {"scheduleEnabled": True, "autoUpdate": False, "scheduleOnMinutes": 61,
                        "scheduleOffMinutes": 122, "appLanguage": "pt-BR"}
        self.desktop.store(self.stored)
        self.open()
        self.assertEqual(self.desktop.settings_windows(), [self.window])
        self.assertEqual([self.is_on(caption) for caption in (LOGIN, SCHEDULE, UPDATES)], [True, True, False])
        self.assertEqual((self.time_of(ON), self.time_of(OFF)), ("01:01", "02:02"))
        self.assertEqual(self.controls()[LANGUAGE]["name"], "Português (Brasil)")
        self.expect_stored()
        self.close()
        self.desktop.autostart_file.unlink()
        self.open()
        self.assertFalse(self.is_on(LOGIN))


class Schedule(Settings):
    def setUp(self):
        self.open_desktop()
        now = time.localtime()
        minute = now.tm_hour * 60 + now.tm_min
        self.start(scheduleOnMinutes=(minute - 120) % 1440, scheduleOffMinutes=(minute + 120) % 1440)
        self.open()

    def test_switching_it_on_is_in_force_at_once_and_off_leaves_the_cup(self):
        self.assertFalse(self.desktop.cup_is_filled())
        self.click(SCHEDULE)
        wait_for(self.desktop.cup_is_filled)
        self.click(SCHEDULE)
        self.expect_stored(scheduleEnabled=False)
        self.assertTrue(self.desktop.cup_is_filled())

    def test_a_picked_time_is_in_force_at_once(self):
        self.click(SCHEDULE)
        wait_for(self.desktop.cup_is_filled)
        self.keys("Tab", "Up", "Up", "Up")  # an hour from now
        wait_for(lambda: not self.desktop.cup_is_filled())
        self.expect_stored(scheduleEnabled=True, scheduleOnMinutes=(self.stored["scheduleOnMinutes"] + 180) % 1440)


class LoginItem(Settings):
    def test_a_refusal_springs_the_switch_back_and_shows_the_hint(self):
        self.open_desktop()
        self.start(expects_log=REFUSED)
        self.refuse_login_items()
        self.open()
        x, y, width, height = self.desktop.geometry(self.window)
        self.click(LOGIN)
        wait_for(lambda: LOGIN_HINT in self.texts())
        self.assertFalse(self.is_on(LOGIN))
        self.assertGreater(wait_for(lambda: self.desktop.geometry(self.window)[3] > height), 0)
        self.assertEqual(self.desktop.geometry(self.window)[2], width)
        self.expect_stored()
        self.desktop.autostart_file.parent.unlink()
        self.click(LOGIN)
        wait_for(lambda: LOGIN_HINT not in self.texts())
        wait_for(lambda: self.desktop.geometry(self.window)[2:] == (width, height))
        self.assertTrue(self.is_on(LOGIN))
        self.expect_stored(launchAtLogin=True)

    def test_reopening_hides_the_hint(self):
        self.open_desktop()
        self.start(expects_log=REFUSED)
        self.refuse_login_items()
        self.open()
        before = self.desktop.geometry(self.window)
        self.click(LOGIN)
        wait_for(lambda: LOGIN_HINT in self.texts())
        self.close()
        self.open()
        self.assertNotIn(LOGIN_HINT, self.texts())
        self.assertEqual(self.desktop.geometry(self.window), before)


class Updates(Settings):
    def test_switching_them_on_asks_the_server_once_and_off_never(self):
        server = self.enterContext(Server())
        self.open_desktop()
        self.start(environment={"KORVEX_UPDATE_BASE": server.base}, autoUpdate=False)
        started = time.monotonic()
        self.open()
        self.click(UPDATES)
        self.expect_stored(autoUpdate=True)
        wait_for(lambda: server.requests, 3)
        self.click(UPDATES)
        self.expect_stored(autoUpdate=False)
        while time.monotonic() < started + 14:  # past the first check, which is not made while they are off
            time.sleep(0.5)
        self.assertEqual(server.requests, ["/updates/vantorel.json"])


class Languages(Settings):
    def test_choosing_one_relabels_at_once_and_leaves_the_window_where_and_as_large_as_it_is(self):
        self.open_desktop()
        self.start(appLanguage="pt-BR")
        self.open()
        before = self.desktop.geometry(self.window)
        self.assertEqual(tuple(self.controls()), PORTUGUESE_CONTROLS)
        for caption, key, language, captions, title in (
                ("Idioma", "Down", "en", CONTROLS, "Vantorel Settings"),
                (LANGUAGE, "Up", "pt-BR", PORTUGUESE_CONTROLS, "Ajustes do Vantorel")):
            self.click(caption)
            self.keys(key, "Return")
            wait_for(lambda: tuple(self.controls()) == captions)
            self.assertEqual(self.desktop.title(self.window), title)
            self.assertEqual(self.desktop.geometry(self.window), before)
            self.expect_stored(appLanguage=language)
            items = [found["name"] for found in self.desktop.accessibles() if found["role"] == "list item"]
            self.assertEqual(items, ["Português (Brasil)", "English"])


class Appearance(Settings):
    """Light and dark, as the settings portal tells it."""

    def brightness(self, window):
        """Of a window's ground, near its lower left corner."""
        x, y, width, height = self.desktop.geometry(window)
        data = self.desktop.display.screen().root.get_image(x + 5, y + height - 5, 1, 1, Xlib.X.ZPixmap, 0xFFFFFFFF).data
        return sum(data[:3]) // 3

    def expect(self, dark, window):
        wait_for(lambda: (self.brightness(window) < 80) == dark and not 80 <= self.brightness(window) <= 200,
                 what="dark" if dark else "light")

    def test_the_settings_window_and_the_menu_follow_it(self):
        self.open_desktop()
        self.desktop.start_portal(Desktop.PREFER_DARK)
        self.start()
        self.desktop.click_cup(button=3)
        [menu] = wait_for(self.desktop.windows)
        self.expect(True, menu)
        self.keys("Escape")
        self.open()
        self.expect(True, self.window)
        for scheme in (Desktop.PREFER_LIGHT, Desktop.PREFER_DARK, Desktop.NO_PREFERENCE):
            self.desktop.prefer(scheme)
            self.expect(scheme == Desktop.PREFER_DARK, self.window)

    def test_the_welcome_window_follows_it(self):
        self.open_desktop()
        self.desktop.start_portal(Desktop.NO_PREFERENCE)
        self.desktop.start()
        window = self.desktop.welcome_window()
        for scheme in (Desktop.NO_PREFERENCE, Desktop.PREFER_DARK, Desktop.PREFER_LIGHT):
            self.desktop.prefer(scheme)
            self.expect(scheme == Desktop.PREFER_DARK, window)


if __name__ == "__main__":
    unittest.main(verbosity=2)
