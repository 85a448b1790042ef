"""The cup as a StatusNotifierItem, where the session has a panel that shows these."""

import time
import unittest

import Xlib.Xatom
from desktop import REASON, Desktop, wait_for
from statusnotifier_host import StatusNotifierHost

SCREENSAVER_ENTRY = f"Vantorel|{REASON}"
COFFEE = (237, 158, 56, 255)
DARK_GLYPH = (0x24, 0x24, 0x24)
LIGHT_GLYPH = (0xF2, 0xF2, 0xF2)
SIZES = (16, 18, 22, 24, 32, 36, 44, 48, 64)

# Of the picture's sides.
BODY = (0.4, 0.63)
RIM = (0.4, 0.83)
CORNER = (0.02, 0.02)

STATE, FIRST_SEPARATOR, TOGGLE, SETTINGS, SECOND_SEPARATOR, QUIT = range(1, 7)
SEPARATOR = {"type": "separator", "visible": True}
LABELS = {
    ("en", False): ("Vantorel is off", "Turn On", "Settings…", "Quit Vantorel"),
    ("en", True): ("Vantorel is on", "Turn Off", "Settings…", "Quit Vantorel"),
    ("pt-BR", False): ("Vantorel desativado", "Ativar", "Ajustes…", "Sair do Vantorel"),
    ("pt-BR", True): ("Vantorel ativado", "Desativar", "Ajustes…", "Sair do Vantorel"),
}


def line(label, shortcut=None, enabled=True):
    properties = {"label": label, "enabled": enabled, "visible": True}
    return {**properties, "shortcut": [["Control", shortcut]]} if shortcut else properties


def menu(language, active):
    state, toggle, settings, leave = LABELS[language, active]
    return list(enumerate([line(state, enabled=False), SEPARATOR, line(toggle), line(settings, "comma"), SEPARATOR,
                           line(leave, "q")], start=1))


class StatusNotifier(unittest.TestCase):
    def open_desktop(self, **options):
        self.desktop = self.enterContext(Desktop(system_bus=False, **options))

    def open_host(self, **options):
        self.host = self.enterContext(StatusNotifierHost(env=self.desktop.environment, **options))

    def is_on(self):
        return self.desktop.screensaver_inhibitors() == [SCREENSAVER_ENTRY]

    def is_off(self):
        return self.desktop.screensaver_inhibitors() == []

    def switch_on(self):
        self.host.call("activate")
        wait_for(self.is_on)

    def switch_off(self):
        self.host.call("activate")
        wait_for(self.is_off)

    def tool_tip(self):
        return self.host.call("properties")["ToolTip"]

    def expect_in_panel(self):
        self.assertEqual(len(self.host.wait_for_items()), 1)
        self.assertIsNone(self.desktop.cup_window())

    def expect_in_tray(self):
        self.desktop.cup_geometry()


class OnPanel(StatusNotifier):
    def setUp(self):
        self.open_desktop()
        self.open_host()
        self.desktop.start_as_returning_user()
        self.host.wait_for_items()


class Item(OnPanel):
    def test_it_shows_in_the_panel_and_only_there(self):
        self.expect_in_panel()
        properties = self.host.call("properties")
        self.assertEqual(properties["Title"], "Vantorel")
        self.assertEqual(properties["Category"], "ApplicationStatus")
        self.assertEqual(properties["Status"], "Active")
        self.assertIs(properties["ItemIsMenu"], False)
        self.assertTrue(self.is_off())

    def test_activating_it_toggles(self):
        for _ in range(3):
            self.switch_on()
            self.switch_off()

    def test_a_middle_click_toggles_too(self):
        self.host.call("secondary_activate")
        wait_for(self.is_on)
        self.host.call("secondary_activate")
        wait_for(self.is_off)

    def test_scrolling_over_it_does_nothing(self):
        self.host.call("scroll", delta=120)
        self.host.call("activate")  # comes after them
        wait_for(self.is_on)
        self.assertEqual(self.desktop.windows(), [])

    def test_the_tool_tip_says_the_state(self):
        self.assertEqual(self.tool_tip(), ["", [], "Vantorel is off", ""])
        self.switch_on()
        self.host.wait_for_signal("NewToolTip")
        self.assertEqual(self.tool_tip(), ["", [], "Vantorel is on", ""])
        self.switch_off()
        self.host.wait_for_signal("NewToolTip")
        self.assertEqual(self.tool_tip(), ["", [], "Vantorel is off", ""])

    def test_the_picture_is_an_outline_and_filled_while_on(self):
        self.assertEqual(self.host.call("properties")["IconPixmap"], [[size, size] for size in SIZES])
        self.expect_outline()
        self.switch_on()
        self.host.wait_for_signal("NewIcon")
        for size in SIZES:
            for actual, expected in zip(self.host.pixel(size, *BODY), COFFEE):
                self.assertAlmostEqual(actual, expected, delta=2)
            self.assertEqual(self.host.pixel(size, *CORNER)[3], 0)
        self.switch_off()
        self.host.wait_for_signal("NewIcon")
        self.expect_outline()

    def expect_outline(self):
        for size in SIZES:
            with self.subTest(size):
                self.assertGreater(self.host.pixel(size, *RIM)[3], 128)
                self.assertEqual(self.host.pixel(size, *BODY)[3], 0)
                self.assertEqual(self.host.pixel(size, *CORNER)[3], 0)

    def test_a_panel_that_leaves_the_menu_to_the_item_gets_it(self):
        answered = self.host.call("context_menu", x=100, y=100)
        self.assertLess(answered, 1000, "the panel waits until the menu has closed")
        wait_for(self.desktop.windows)
        self.assertTrue(self.is_off())
        self.desktop.xdotool("key", "Escape")
        wait_for(lambda: not self.desktop.windows())
        self.switch_on()

    def test_a_click_closes_an_open_menu_and_does_nothing_else(self):
        self.host.call("context_menu", x=100, y=100)
        wait_for(self.desktop.windows)
        self.host.call("activate")
        wait_for(lambda: not self.desktop.windows())
        self.assertTrue(self.is_off())
        self.switch_on()

    def test_with_control_a_click_opens_the_menu(self):
        self.desktop.xdotool("keydown", "Control_L")
        self.host.call("activate", x=100, y=100)
        wait_for(self.desktop.windows)
        self.desktop.xdotool("keyup", "Control_L")
        self.assertTrue(self.is_off())


class Menu(OnPanel):
    """The menu as the panel shows it itself."""

    def set_language(self, language):
        self.desktop.store({"appLanguage": language})

    def ask(self, method, *arguments):
        return self.host.call("menu", method=method, arguments=arguments)

    def test_it_says_what_it_is(self):
        self.assertEqual(self.host.call("menu_properties"),
                         {"Version": 3, "TextDirection": "ltr", "Status": "normal", "IconThemePath": []})
        for reading in range(2):  # the first one makes it
            _, (root, properties, lines) = self.ask("GetLayout", 0, -1, [])
            self.assertEqual((root, properties), (0, {"children-display": "submenu"}))
            self.assertEqual([(number, line) for number, line, _ in lines], menu("en", False))

    def test_it_is_new_at_each_opening(self):
        self.assertEqual(self.host.menu_lines(), menu("en", False))
        self.switch_on()
        self.assertEqual(self.host.menu_lines(), menu("en", True))
        self.set_language("pt-BR")
        self.assertEqual(self.host.menu_lines(), menu("pt-BR", True))
        self.assertEqual(self.tool_tip()[2], "Vantorel is on", "the tool tip waits for the next change of state")
        self.switch_off()
        self.assertEqual(self.tool_tip()[2], "Vantorel desativado")
        self.assertEqual(self.host.menu_lines(), menu("pt-BR", False))
        self.set_language("en")
        self.assertEqual(self.host.menu_lines(), menu("en", False))
        self.assertEqual(self.desktop.windows(), [])

    def test_it_says_whether_it_changed(self):
        self.assertIs(self.ask("AboutToShow", 0), True)
        self.assertIs(self.ask("AboutToShow", 0), False)
        revision, _ = self.ask("GetLayout", 0, 0, [])
        self.set_language("pt-BR")
        self.assertEqual(self.ask("AboutToShowGroup", [0, TOGGLE, 99]), [[0], [99]])
        self.assertIs(self.ask("AboutToShow", TOGGLE), False)
        self.assertGreater(self.ask("GetLayout", 0, 0, [])[0], revision)

    def test_a_panel_that_has_it_hears_of_changes_without_asking(self):
        self.host.menu_lines()
        self.host.wait_for_signal("LayoutUpdated")
        self.switch_on()
        self.host.wait_for_signal("LayoutUpdated")
        _, (_, _, lines) = self.ask("GetLayout", 0, -1, ["label"])
        self.assertEqual(lines[TOGGLE - 1], [TOGGLE, {"label": "Turn Off"}, []])

    def test_a_panel_that_never_asks_whether_it_is_new_has_the_language_in_force(self):
        self.ask("GetLayout", 0, -1, [])
        self.set_language("pt-BR")
        _, (_, _, lines) = self.ask("GetLayout", 0, -1, [])
        self.assertEqual([(number, line) for number, line, _ in lines], menu("pt-BR", False))
        revision, _ = self.ask("GetLayout", 0, 0, [])
        self.set_language("en")
        self.ask("Event", 0, "opened", "", 0)
        self.host.wait_for_signal("LayoutUpdated")
        self.assertGreater(self.ask("GetLayout", SETTINGS, 0, [])[0], revision)
        self.assertEqual(self.ask("GetProperty", SETTINGS, "label"), "Settings…")

    def test_a_panel_that_has_it_hears_of_another_language_chosen_in_settings(self):
        self.host.menu_lines()
        self.host.choose(SETTINGS)
        [window] = wait_for(self.desktop.settings_windows)
        self.desktop.wait_for_keyboard(window)
        self.host.wait_for_signal("LayoutUpdated")
        self.desktop.xdotool("key", "shift+Tab", "Up")  # the last control is the language
        self.host.wait_for_signal("LayoutUpdated")
        self.assertEqual(self.ask("GetProperty", SETTINGS, "label"), "Ajustes…")

    def test_a_panel_that_keeps_the_labels_of_lines_it_knows_hears_of_changes(self):
        self.assertEqual(self.host.kept_labels(), ["Vantorel is off", "Turn On", "Settings…", "Quit Vantorel"])
        self.switch_on()
        on = ["Vantorel is on", "Turn Off", "Settings…", "Quit Vantorel"]
        wait_for(lambda: self.host.kept_labels() == on)
        self.set_language("pt-BR")
        wait_for(lambda: self.host.kept_labels() == ["Vantorel ativado", "Desativar", "Ajustes…", "Sair do Vantorel"])

    def test_screen_readers_are_told_the_state(self):
        self.assertEqual(self.host.call("properties")["IconAccessibleDesc"], "Vantorel is off")
        self.switch_on()
        self.assertEqual(self.host.call("properties")["IconAccessibleDesc"], "Vantorel is on")

    def test_parts_of_it_can_be_asked_for(self):
        self.host.menu_lines()
        self.assertEqual(self.ask("GetLayout", 0, 0, [])[1][2], [])
        self.assertEqual(self.ask("GetLayout", TOGGLE, -1, ["label"])[1], [TOGGLE, {"label": "Turn On"}, []])
        self.assertEqual(self.ask("GetGroupProperties", [TOGGLE, 99], ["label", "type"]),
                         [[TOGGLE, {"label": "Turn On"}]])
        self.assertEqual(len(self.ask("GetGroupProperties", [], [])), 7)
        self.assertEqual(self.ask("GetProperty", SETTINGS, "label"), "Settings…")
        for number, name in ((SETTINGS, "colour"), (99, "label"), (-1, "label")):
            with self.assertRaisesRegex(RuntimeError, "InvalidArgs"):
                self.ask("GetProperty", number, name)

    def test_its_toggle_toggles(self):
        self.host.menu_lines()
        self.host.choose(TOGGLE)
        wait_for(self.is_on)
        self.host.menu_lines()
        self.assertEqual(self.ask("EventGroup", [[TOGGLE, "clicked", "", 0], [99, "clicked", "", 0]]), [99])
        wait_for(self.is_off)

    def test_nothing_else_toggles(self):
        self.host.choose(TOGGLE)  # no panel has asked for the menu yet
        self.host.menu_lines()
        for number in (-1, 0, STATE, FIRST_SEPARATOR, SETTINGS, SECOND_SEPARATOR, 7, 99, 2**31 - 1, -2**31):
            self.host.choose(number)
        for event in ("hovered", "opened", "closed"):
            self.ask("Event", TOGGLE, event, "", 0)
        self.host.choose(TOGGLE)  # comes after them
        wait_for(self.is_on)

    def test_its_quit_quits(self):
        self.switch_on()
        self.host.menu_lines()
        self.host.choose(QUIT)
        self.assertEqual(self.desktop.app_process.wait(5), 0)
        wait_for(self.is_off, 1)
        self.host.wait_for_items(0)


class Names(StatusNotifier):
    def name_on(self, desktop):
        self.open_desktop()
        self.open_host()
        self.desktop.environment["XDG_CURRENT_DESKTOP"] = desktop
        self.desktop.start_as_returning_user()
        [name] = self.host.wait_for_items()
        return name

    def test_the_item_has_a_name_of_its_own(self):
        self.assertEqual(self.name_on("XFCE"), f"org.kde.StatusNotifierItem-{self.desktop.app_process.pid}-1")

    def test_on_gnome_it_goes_by_the_connections_and_no_other(self):
        self.assertRegex(self.name_on("ubuntu:GNOME"), r"^:\d")
        names = self.desktop.bus("session").list_names()
        self.assertFalse([name for name in names if name.startswith("org.kde.StatusNotifierItem-")])


class ComingAndGoing(StatusNotifier):
    def test_the_cup_moves_to_a_panel_that_comes_and_back_when_it_goes(self):
        self.open_desktop()
        self.desktop.start_as_returning_user()
        self.expect_in_tray()
        self.desktop.click_cup()
        wait_for(self.is_on)
        for _ in range(2):
            self.open_host()
            self.expect_in_panel()
            self.assertEqual(self.tool_tip()[2], "Vantorel is on")
            self.host.close()
            self.expect_in_tray()
            wait_for(self.desktop.cup_is_filled)
        self.desktop.click_cup()
        wait_for(self.is_off)

    def test_a_watcher_without_a_panel_is_none(self):
        self.open_desktop()
        self.open_host(registered=False)
        self.desktop.start_as_returning_user()
        self.expect_in_tray()
        self.host.call("set_host_registered", value=True)
        self.expect_in_panel()
        self.switch_on()
        self.host.call("set_host_registered", value=False)
        self.expect_in_tray()
        wait_for(self.desktop.cup_is_filled)

    def test_the_cup_stays_in_the_tray_while_a_watcher_comes_without_a_panel(self):
        self.open_desktop()
        self.desktop.start_as_returning_user()
        self.expect_in_tray()
        window = self.desktop.cup_window().id
        self.open_host(registered=False)
        end = time.monotonic() + 1  # twice as long as a watcher has for its answer
        while time.monotonic() < end:
            self.assertEqual(self.desktop.cup_window().id, window)
        self.host.call("set_host_registered", value=True)
        self.expect_in_panel()

    def test_a_watcher_that_refuses_is_none(self):
        self.open_desktop()
        self.open_host()
        self.host.call("refuse", value=True)
        self.desktop.start_as_returning_user()
        self.expect_in_tray()
        self.desktop.click_cup()
        wait_for(self.is_on)

    def test_a_panel_is_enough_without_a_tray(self):
        self.open_desktop(tray=False)
        self.desktop.start_as_returning_user()
        self.open_host()
        self.expect_in_panel()
        self.switch_on()
        self.host.close()
        self.open_host()
        self.expect_in_panel()
        self.assertEqual(self.tool_tip()[2], "Vantorel is on")

    def test_a_watcher_that_hangs_is_no_hindrance(self):
        self.open_desktop()
        self.open_host()
        hangs = 4
        self.host.call("hang", seconds=hangs)
        began = time.monotonic()
        self.desktop.start_as_returning_user()
        self.expect_in_tray()
        self.desktop.click_cup()
        wait_for(self.is_on)
        self.assertLess(time.monotonic() - began, hangs)
        self.expect_in_panel()
        self.assertEqual(self.tool_tip()[2], "Vantorel is on")


class ColourScheme(StatusNotifier):
    """As the settings portal tells it."""

    def setUp(self):
        self.open_desktop(tray=False, screensaver=False)
        self.open_host()

    def change_scheme(self, scheme):
        self.host.call("signals")
        self.desktop.prefer(scheme)
        self.host.wait_for_signal("NewIcon")

    def glyph(self):
        return self.host.pixel(64, *RIM)[:3]

    def test_the_outline_is_seen_on_any_panel(self):
        self.desktop.start_as_returning_user()
        self.host.wait_for_items()
        for size in SIZES:
            for panel in (0x00, 0x31, 0x50, 0x76, 0x9A, 0xDE, 0xFF):
                with self.subTest(size=size, panel=panel):
                    self.assertGreaterEqual(self.best_contrast(size, panel), 3)

    def best_contrast(self, size, panel):
        """Of the picture with a gray panel under it."""
        def luminance(level):
            share = level / 255
            return share / 12.92 if share <= 0.04045 else ((share + 0.055) / 1.055) ** 2.4

        ground = luminance(panel) + 0.05
        levels = {round((gray * alpha + panel * (255 - alpha)) / 255)
                  for alpha, gray, _, _ in self.host.call("icon", size=size)}
        return max(max((luminance(level) + 0.05) / ground, ground / (luminance(level) + 0.05)) for level in levels)

    def test_an_x11_tray_tells_its_colors_but_not_on_gnome(self):
        self.desktop.start_tray()
        owner = self.desktop.display.get_selection_owner(self.desktop.display.get_atom("_NET_SYSTEM_TRAY_S0"))
        owner.change_property(self.desktop.display.get_atom("_NET_SYSTEM_TRAY_COLORS"), Xlib.Xatom.CARDINAL, 32, [0] * 12)
        self.desktop.display.sync()
        for name, glyph in {"XFCE": (0, 0, 0), "GNOME": LIGHT_GLYPH}.items():
            with self.subTest(name):
                self.desktop.environment["XDG_CURRENT_DESKTOP"] = name
                self.desktop.start_as_returning_user()
                self.host.wait_for_items()
                self.assertEqual(self.glyph(), glyph)
                self.assertEqual(self.desktop.end(), 0)
                self.host.wait_for_items(0)

    def test_the_outline_is_dark_without_any(self):
        self.desktop.start_as_returning_user()
        self.host.wait_for_items()
        self.assertEqual(self.glyph(), DARK_GLYPH)

    def test_the_outline_follows_it(self):
        self.desktop.start_portal(Desktop.PREFER_DARK)
        self.desktop.start_as_returning_user()
        self.host.wait_for_items()
        wait_for(lambda: self.glyph() == LIGHT_GLYPH)
        self.change_scheme(Desktop.PREFER_LIGHT)
        self.assertEqual(self.glyph(), DARK_GLYPH)
        self.change_scheme(Desktop.PREFER_DARK)
        self.assertEqual(self.glyph(), LIGHT_GLYPH)
        self.change_scheme(Desktop.NO_PREFERENCE)
        self.assertEqual(self.glyph(), DARK_GLYPH)

    def test_the_filled_cup_does_not(self):
        self.desktop.start_portal(Desktop.PREFER_LIGHT)
        self.desktop.start_as_returning_user()
        self.host.wait_for_items()
        self.host.call("activate")
        wait_for(lambda: self.host.pixel(64, *BODY) == COFFEE)
        self.change_scheme(Desktop.PREFER_DARK)
        self.assertEqual(self.host.pixel(64, *BODY), COFFEE)


if __name__ == "__main__":
    unittest.main(verbosity=2)
