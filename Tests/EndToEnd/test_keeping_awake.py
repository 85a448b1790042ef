"""The main job: a click keeps the screen from sleeping, another lets it."""

import signal
import time
import unittest

from desktop import REASON, Desktop, wait_for
from faked_clock import FakedClock
from statusnotifier_host import StatusNotifierHost

SCREENSAVER_ENTRY = f"Vantorel|{REASON}"
LOGIND_ENTRY = f"idle|Vantorel|{REASON}|block"
SESSION_MANAGER_ENTRY = f"Vantorel|{REASON}|8"
POWER_MANAGEMENT_ENTRY = f"Vantorel|{REASON}"
LOGGED = {"environment": {"QT_LOGGING_RULES": "vantorel.*=true"}, "expects_log": "vantorel."}


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


class EveryMeans(unittest.TestCase):
    def test_all_are_asked_and_given_back(self):
        with Desktop(session_manager=True, power_management=True) as desktop:
            desktop.start_as_returning_user()
            for _ in range(2):
                desktop.click_cup()
                for service, entry in {"screensaver": SCREENSAVER_ENTRY, "logind": LOGIND_ENTRY,
                                       "sessionmanager": SESSION_MANAGER_ENTRY,
                                       "powermanagement": POWER_MANAGEMENT_ENTRY}.items():
                    self.assertEqual(wait_for(lambda: desktop.inhibitors(service), what=service), [entry])
                desktop.click_cup()
                for service in ("screensaver", "logind", "sessionmanager", "powermanagement"):
                    wait_for(lambda: not desktop.inhibitors(service), 2, service)
            desktop.click_cup()
            desktop.end(signal.SIGKILL)
            for service in ("screensaver", "logind", "sessionmanager", "powermanagement"):
                wait_for(lambda: not desktop.inhibitors(service), 2, service)

    def test_what_was_granted_can_be_seen_by_whoever_asks(self):
        with Desktop(logind=False) as desktop:
            desktop.start_as_returning_user(**LOGGED)
            desktop.click_cup()
            for line in ("vantorel.power: org.freedesktop.ScreenSaver granted",
                         "vantorel.power: org.gnome.SessionManager refused",
                         "vantorel.power: the session is held", "vantorel.bar: the cup is an icon of the X11 tray"):
                wait_for(lambda: line in desktop.log(), 3, line)

    def test_the_idle_time_begins_anew_only_where_nothing_else_covers_it(self):
        with Desktop() as bare, Desktop(session_manager=True) as covered, Desktop() as off:
            for desktop in (bare, covered, off):
                desktop.start_as_returning_user()
                desktop.point_at_cup()
            for desktop in (bare, covered):
                desktop.xdotool("click", 1)
                wait_for(desktop.cup_is_filled)
            wait_for(lambda: covered.idle_seconds() > 32 and off.idle_seconds() > 32, 45, "half a minute")
            self.assertLess(bare.idle_seconds(), 15)


class Refusals(unittest.TestCase):
    def expect_usable(self, desktop):
        """The cup turns on and off, nothing crashes, nothing is shown."""
        desktop.cup_geometry()
        desktop.click_cup()
        desktop.settle()
        desktop.click_cup()
        desktop.settle()
        self.assertEqual(desktop.end(), 0)

    def expect_that_nothing_holds(self, desktop):
        desktop.start_as_returning_user(**LOGGED)
        desktop.click_cup()
        wait_for(lambda: "nothing holds the session" in desktop.log())
        self.assertFalse(desktop.cup_is_filled())

    def test_with_every_inhibitor_refused_the_cup_stays_an_outline(self):
        with Desktop(refuses=True, session_manager=True, power_management=True, silent_compositor=True) as desktop:
            self.expect_that_nothing_holds(desktop)

    def test_one_inhibitor_is_enough(self):
        for name, lacking in {
            "X server's saver": {"session_bus": False, "system_bus": False},
            "X server's idle time": {"session_bus": False, "system_bus": False, "x_extension": False},
            "ScreenSaver": {"system_bus": False, "silent_compositor": True},
            "SessionManager": {"system_bus": False, "screensaver": False, "session_manager": True,
                               "silent_compositor": True},
        }.items():
            with self.subTest(name), Desktop(**lacking) as desktop:
                desktop.start_as_returning_user()
                desktop.click_cup()
                wait_for(desktop.cup_is_filled)
                self.expect_usable(desktop)

    def test_logind_alone_is_enough_only_where_somebody_looks_at_it(self):
        with Desktop(session_bus=False, silent_compositor=True) as desktop:
            desktop.environment["XDG_CURRENT_DESKTOP"] = "KDE"
            desktop.start_as_returning_user()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)
            self.assertEqual(desktop.logind_inhibitors(), [LOGIND_ENTRY])
        with Desktop(session_bus=False, silent_compositor=True) as desktop:
            desktop.environment["XDG_CURRENT_DESKTOP"] = "MATE"
            self.expect_that_nothing_holds(desktop)
            wait_for(lambda: not desktop.logind_inhibitors())

    def test_a_power_manager_alone_is_not_enough(self):
        with Desktop(system_bus=False, screensaver=False, power_management=True, silent_compositor=True) as desktop:
            self.expect_that_nothing_holds(desktop)
            wait_for(lambda: not desktop.inhibitors("powermanagement"))

    def test_without_any_service_the_cup_stays_an_outline(self):
        with Desktop(session_bus=False, system_bus=False, silent_compositor=True) as desktop:
            self.expect_that_nothing_holds(desktop)
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

    def test_buses_that_hang_hold_up_neither_the_start_nor_a_click(self):
        with Desktop() as desktop:
            buses = [desktop.session_bus_process, desktop.system_bus_process]
            for bus in buses:
                bus.send_signal(signal.SIGSTOP)
                self.addCleanup(bus.send_signal, signal.SIGCONT)
            desktop.start_as_returning_user()
            wait_for(desktop.cup_window, 4, "the cup, though no bus answers")
            began = time.monotonic()
            desktop.click_cup()
            wait_for(desktop.cup_is_filled, 2)
            self.assertLess(time.monotonic() - began, 2)
            for bus in buses:
                bus.send_signal(signal.SIGCONT)
            self.assertEqual(wait_for(desktop.screensaver_inhibitors), [SCREENSAVER_ENTRY])
            self.assertEqual(wait_for(desktop.logind_inhibitors), [LOGIND_ENTRY])
            for filled in (False, True):  # Qt, which waits while it connects, has done so after these
                desktop.click_cup()
                wait_for(lambda: desktop.cup_is_filled() == filled, 2)
                wait_for(lambda: bool(desktop.logind_inhibitors()) == filled)
            for bus in buses:
                bus.send_signal(signal.SIGSTOP)
            for filled in (False, True, False):
                desktop.click_cup()
                wait_for(lambda: desktop.cup_is_filled() == filled, 2)
            for bus in buses:
                bus.send_signal(signal.SIGCONT)
            wait_for(lambda: not desktop.screensaver_inhibitors(), 3)
            wait_for(lambda: not desktop.logind_inhibitors(), 3)
            self.assertEqual(desktop.end(), 0)
            self.assertEqual(desktop.log(), "")

    def test_a_session_bus_that_hangs_holds_up_no_menu_and_no_window(self):
        with Desktop(system_bus=False) as desktop:
            bus = desktop.session_bus_process
            self.addCleanup(bus.send_signal, signal.SIGCONT)
            bus.send_signal(signal.SIGSTOP)
            desktop.start()
            wait_for(desktop.welcome_window, 5)
            self.assertEqual(desktop.end(), 0)
            for hangs_from_the_start in (True, False):
                bus.send_signal(signal.SIGSTOP if hangs_from_the_start else signal.SIGCONT)
                desktop.start_as_returning_user()
                desktop.cup_geometry()
                bus.send_signal(signal.SIGSTOP)
                for keys in (("Down", "Return"), ("Down", "Down", "Return")):
                    desktop.click_cup(button=3)
                    wait_for(desktop.windows, 3, "the menu")
                    desktop.xdotool("key", *keys)
                    wait_for(desktop.cup_is_filled, 3)
                wait_for(desktop.settings_windows, 3)
                self.assertEqual(desktop.end(), 0)

    def test_buses_that_have_hung_for_minutes_are_asked_when_they_come_to(self):
        """sd-bus gives up on a connection whose bus does not answer for 90 seconds; the program's clocks are put forward."""
        with Desktop() as desktop:
            clock = FakedClock(desktop.folder)
            buses = [desktop.session_bus_process, desktop.system_bus_process]
            for bus in buses:
                bus.send_signal(signal.SIGSTOP)
                self.addCleanup(bus.send_signal, signal.SIGCONT)
            desktop.start_as_returning_user(environment=clock.environment())
            desktop.click_cup()
            wait_for(desktop.cup_is_filled)
            clock.put_forward(200)
            for bus in buses:
                bus.send_signal(signal.SIGCONT)
            self.assertEqual(wait_for(desktop.screensaver_inhibitors), [SCREENSAVER_ENTRY])
            self.assertEqual(wait_for(desktop.logind_inhibitors), [LOGIND_ENTRY])
            with StatusNotifierHost(env=desktop.environment) as host:
                host.wait_for_items()
            self.assertEqual(desktop.end(), 0)

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
