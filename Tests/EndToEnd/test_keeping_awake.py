"""The main job: a click keeps the screen from sleeping, another lets it."""

import signal
import time
import unittest

from desktop import REASON, Desktop, wait_for

SCREENSAVER_ENTRY = f"Vantorel|{REASON}"
LOGIND_ENTRY = f"idle|Vantorel|{REASON}|block"


class ScreenSleep(unittest.TestCase):
    def test_the_screen_saver_comes_only_while_the_cup_is_off(self):
        with Desktop() as desktop:
            desktop.run("xset", "s", "2", "2")
            desktop.start_as_returning_user()
            desktop.point_at_cup()
            wait_for(desktop.screen_saver_is_on, 6)

            desktop.xdotool("click", 1)
            wait_for(lambda: not desktop.screen_saver_is_on(), 2)
            wait_for(desktop.screensaver_inhibitors, 2)
            end = time.monotonic() + 10
            while time.monotonic() < end:
                self.assertFalse(desktop.screen_saver_is_on(), "the screen saver came although the cup is on")
                time.sleep(0.1)

            desktop.xdotool("click", 1)
            wait_for(desktop.screen_saver_is_on, 6)


class Inhibitors(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(Desktop())
        self.desktop.start_as_returning_user()

    def switch_on(self):
        self.desktop.click_cup()
        self.assertEqual(wait_for(self.desktop.screensaver_inhibitors), [SCREENSAVER_ENTRY])
        self.assertEqual(wait_for(self.desktop.logind_inhibitors), [LOGIND_ENTRY])

    def expect_released(self):
        wait_for(lambda: not self.desktop.screensaver_inhibitors(), 1, "the ScreenSaver inhibitor to go")
        wait_for(lambda: not self.desktop.logind_inhibitors(), 1, "the logind inhibitor to go")

    def test_nothing_is_held_at_start(self):
        self.desktop.cup_geometry()
        self.assertEqual(self.desktop.screensaver_inhibitors(), [])
        self.assertEqual(self.desktop.logind_inhibitors(), [])

    def test_a_second_click_releases_them(self):
        self.switch_on()
        self.desktop.click_cup()
        self.expect_released()

    def test_they_come_and_go_with_every_click(self):
        for _ in range(5):
            self.switch_on()
            self.desktop.click_cup()
            self.expect_released()

    def test_quitting_from_the_menu_releases_them(self):
        self.switch_on()
        self.desktop.click_cup(button=3)
        wait_for(self.desktop.windows, what="the menu")
        self.desktop.xdotool("key", "ctrl+q")
        self.assertEqual(self.desktop.app_process.wait(5), 0)
        self.expect_released()

    def test_termination_signals_release_them_in_order(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                self.switch_on()
                self.assertEqual(self.desktop.end(number), 0)
                self.expect_released()
                self.desktop.start()
                self.desktop.cup_geometry()

    def test_being_killed_releases_them(self):
        self.switch_on()
        self.assertEqual(self.desktop.end(signal.SIGKILL), -signal.SIGKILL)
        self.expect_released()

    def test_a_restarted_screen_saver_service_is_asked_again(self):
        self.switch_on()
        self.desktop.screensaver_process.kill()
        self.desktop.screensaver_process.wait()
        self.desktop.start_service("screensaver")
        self.assertEqual(wait_for(self.desktop.screensaver_inhibitors, 3), [SCREENSAVER_ENTRY])
        self.desktop.click_cup()
        self.expect_released()


class Refusals(unittest.TestCase):
    def expect_usable(self, desktop):
        """The cup turns on and off, nothing crashes, nothing is shown."""
        desktop.cup_geometry()
        desktop.click_cup()
        desktop.settle()
        desktop.click_cup()
        desktop.settle()
        self.assertEqual(desktop.end(), 0)

    def test_with_every_inhibitor_refused_the_cup_stays_an_outline(self):
        with Desktop(refuses=True, x_extension=False) as desktop:
            desktop.start_as_returning_user()
            desktop.click_cup()
            desktop.settle()
            self.assertFalse(desktop.cup_is_filled())

    def test_one_inhibitor_is_enough(self):
        for name, lacking in {
            "X server": {"session_bus": False, "system_bus": False},
            "ScreenSaver": {"system_bus": False, "x_extension": False},
            "logind": {"session_bus": False, "x_extension": False},
        }.items():
            with self.subTest(name), Desktop(**lacking) as desktop:
                desktop.start_as_returning_user()
                desktop.click_cup()
                wait_for(desktop.cup_is_filled)
                self.expect_usable(desktop)

    def test_without_any_service_the_cup_stays_an_outline(self):
        with Desktop(session_bus=False, system_bus=False, x_extension=False) as desktop:
            desktop.start_as_returning_user()
            desktop.click_cup()
            desktop.settle()
            self.assertFalse(desktop.cup_is_filled())
            self.expect_usable(desktop)

    def test_services_that_are_absent_are_no_hindrance(self):
        with Desktop(screensaver=False, logind=False) as desktop:
            desktop.start_as_returning_user()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)
            self.expect_usable(desktop)

    def test_a_service_that_hangs_holds_the_click_up_for_a_second_at_most(self):
        with Desktop() as desktop:
            desktop.start_as_returning_user()
            desktop.cup_geometry()
            desktop.screensaver_process.send_signal(signal.SIGSTOP)
            self.addCleanup(desktop.screensaver_process.send_signal, signal.SIGCONT)
            began = time.monotonic()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled, 5)
            self.assertLess(time.monotonic() - began, 3)
            self.assertEqual(desktop.end(), 0)
            desktop.screensaver_process.send_signal(signal.SIGCONT)
            wait_for(lambda: not desktop.screensaver_inhibitors(), 3, "a late inhibitor to go")

    def test_buses_that_die_are_no_hindrance(self):
        with Desktop() as desktop:
            desktop.start_as_returning_user()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)
            desktop.session_bus_process.kill()
            desktop.system_bus_process.kill()
            desktop.session_bus_process.wait()
            desktop.system_bus_process.wait()
            desktop.click_cup()
            wait_for(lambda: not desktop.cup_is_filled())
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)
            self.assertEqual(desktop.end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
