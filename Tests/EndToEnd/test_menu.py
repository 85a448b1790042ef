"""The cup in the X11 tray, by mouse and keyboard."""

import contextlib
import operator
import signal
import unittest

import Xlib.X
import Xlib.Xatom
import Xlib.error

from desktop import REASON, Desktop, wait_for

SCREENSAVER_ENTRY = f"Vantorel|{REASON}"

# Of the menu's height, from the top.
STATE_LINE = 0.12
TOGGLE_LINE = 0.38


class Tray(unittest.TestCase):
    def start(self, **options):
        self.desktop = self.enterContext(Desktop(system_bus=False, **options))
        self.desktop.start_as_returning_user()
        self.desktop.cup_geometry()

    def tips(self):
        return self.windows(are_tips=True)

    def menus(self):
        return self.windows(are_tips=False)

    def windows(self, are_tips):
        display = self.desktop.display
        found = []
        for window in self.desktop.windows():
            with contextlib.suppress(Xlib.error.BadWindow):  # closed meanwhile
                types = display.create_resource_object("window", window).get_full_property(
                    display.get_atom("_NET_WM_WINDOW_TYPE"), Xlib.Xatom.ATOM)
                is_tip = types is not None and display.get_atom("_NET_WM_WINDOW_TYPE_TOOLTIP") in types.value
                if is_tip == are_tips:
                    found.append(window)
        return found


class Menu(Tray):
    def setUp(self):
        self.start()

    def open_menu(self):
        self.desktop.click_cup(button=3)
        [menu] = wait_for(self.menus)
        return menu

    def wait_for_no_menu(self):
        wait_for(lambda: not self.menus(), what="the menu to close")

    def click_line(self, at):
        x, y, width, height = self.desktop.geometry(self.open_menu())
        self.desktop.xdotool("mousemove", x + width // 2, y + int(height * at))
        self.desktop.xdotool("click", 1)

    def inhibitors(self):
        return self.desktop.screensaver_inhibitors()

    def wait_until_on(self):
        self.assertEqual(wait_for(self.inhibitors), [SCREENSAVER_ENTRY])
        wait_for(self.desktop.cup_is_filled)

    def wait_until_off(self):
        wait_for(lambda: not self.inhibitors())
        wait_for(lambda: not self.desktop.cup_is_filled())

    def expect_off(self):
        """That nothing so far has toggled: the menu opens when all that came before it has had its effect."""
        self.open_menu()
        self.assertEqual(self.inhibitors(), [])
        self.desktop.xdotool("key", "Escape")
        self.wait_for_no_menu()

    def expect_that_a_click_toggles(self):
        self.desktop.click_cup()
        self.wait_until_on()
        self.desktop.click_cup()
        self.wait_until_off()

    def test_a_right_click_opens_it_and_does_not_toggle(self):
        menu = self.open_menu()
        self.assertEqual(self.inhibitors(), [])
        x, y, width, height = self.desktop.geometry(menu)
        cup_x, cup_y, cup_width, cup_height = self.desktop.cup_geometry()
        self.assertLessEqual(y + height, cup_y, "the menu covers the cup")
        self.assertLessEqual(abs(cup_x + cup_width - (x + width)), cup_width, "the menu is not beside the cup")

    def test_a_click_with_control_opens_it_and_does_not_toggle(self):
        self.desktop.xdotool("keydown", "Control_L")
        self.desktop.click_cup()
        wait_for(self.menus)
        self.desktop.xdotool("keyup", "Control_L")
        self.assertEqual(self.inhibitors(), [])

    def test_escape_closes_it(self):
        self.open_menu()
        self.desktop.xdotool("key", "Escape")
        self.wait_for_no_menu()
        self.expect_off()
        self.expect_that_a_click_toggles()

    def test_a_click_elsewhere_closes_it(self):
        self.open_menu()
        self.desktop.xdotool("mousemove", 100, 100)
        self.desktop.xdotool("click", 1)
        self.wait_for_no_menu()
        self.expect_off()
        self.expect_that_a_click_toggles()

    def test_a_second_click_on_the_cup_closes_it_and_does_not_toggle(self):
        for button in (1, 3):
            with self.subTest(button=button):
                self.open_menu()
                self.desktop.point_at_cup()
                self.desktop.xdotool("mousedown", button)
                self.wait_for_no_menu()
                self.desktop.xdotool("mouseup", button)  # with no menu to take it any more
                self.expect_off()
        self.expect_that_a_click_toggles()

    def test_the_toggle_line_toggles_by_mouse(self):
        self.click_line(TOGGLE_LINE)
        self.wait_until_on()
        self.wait_for_no_menu()
        self.click_line(TOGGLE_LINE)
        self.wait_until_off()
        self.wait_for_no_menu()
        self.expect_that_a_click_toggles()

    def test_the_toggle_line_is_the_first_by_keyboard(self):
        for wait_for_change in (self.wait_until_on, self.wait_until_off):
            self.open_menu()
            self.desktop.xdotool("key", "Down", "Return")
            wait_for_change()
            self.wait_for_no_menu()

    def test_the_state_line_can_not_be_chosen(self):
        self.click_line(STATE_LINE)
        self.desktop.xdotool("key", "Return")  # chooses the line under the pointer, if it can be
        self.desktop.xdotool("key", "Escape")
        self.wait_for_no_menu()
        self.expect_off()

    def test_control_q_quits_in_order(self):
        self.desktop.click_cup()
        self.wait_until_on()
        self.open_menu()
        self.desktop.xdotool("key", "ctrl+q")
        self.assertEqual(self.desktop.app_process.wait(5), 0)
        wait_for(lambda: not self.inhibitors(), 1)

    def test_control_comma_opens_settings(self):
        self.open_menu()
        self.desktop.xdotool("key", "ctrl+comma")
        wait_for(self.desktop.settings_windows)
        self.assertEqual(self.inhibitors(), [])

    def test_a_termination_signal_while_it_is_open_quits_in_order(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                self.desktop.click_cup()
                self.wait_until_on()
                self.open_menu()
                self.assertEqual(self.desktop.end(number), 0)
                wait_for(lambda: not self.inhibitors(), 1)
                self.desktop.start()
                self.desktop.cup_geometry()

    def test_only_a_whole_click_with_the_left_or_right_button_counts(self):
        self.desktop.click_cup(button=2)
        self.desktop.point_at_cup()
        self.desktop.xdotool("mousedown", 1)
        self.desktop.xdotool("mousemove", 100, 100)
        self.desktop.xdotool("mouseup", 1)
        self.desktop.xdotool("mousedown", 1)
        self.desktop.point_at_cup()
        self.desktop.xdotool("mouseup", 1)
        self.expect_off()
        self.expect_that_a_click_toggles()


class Cup(Tray):
    def test_its_tool_tip_shows_while_the_pointer_rests_on_it(self):
        self.start()
        self.desktop.point_at_cup()
        wait_for(self.tips)
        self.desktop.xdotool("mousemove", 100, 100)
        wait_for(lambda: not self.tips())

    def test_its_outline_is_dark_on_a_light_panel_and_light_on_a_dark_one(self):
        for panel, contrasts in (("0xf8f8f8", operator.lt), ("0x101010", operator.gt)):
            with self.subTest(panel):
                self.start(tray_options=("--transparent", "true", "--alpha", "0", "--tint", panel))
                wait_for(lambda: abs(self.gray(0.02, 0.02) - int(panel[-2:], 16)) < 4, what="the panel's colour")
                wait_for(lambda: contrasts(self.gray(0.4, 0.83), 128), what="the rim")
                self.assertAlmostEqual(self.gray(0.4, 0.6), self.gray(0.02, 0.02), delta=4, msg="inside of it")

    def gray(self, x, y):
        """How bright the screen is at a place of the cup, given as a share of its sides."""
        left, top, width, height = self.desktop.cup_geometry()
        root = self.desktop.display.screen().root
        at = left + int(x * width), top + int(y * height)
        return sum(root.get_image(*at, 1, 1, Xlib.X.ZPixmap, 0xFFFFFFFF).data[:3]) // 3


if __name__ == "__main__":
    unittest.main(verbosity=2)
