"""The daily schedule in the program as it ships, under a clock of its own."""

import shutil
import signal
import time
import unittest
from pathlib import Path

import dbus
from desktop import APP, Desktop, wait_for
from faked_clock import FakedClock

ON_AND_OFF = {"appLanguage": "en", "scheduleEnabled": True, "scheduleOnMinutes": 540, "scheduleOffMinutes": 1020}


class Schedule(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(Desktop())
        self.clock = FakedClock(self.desktop.folder)

    def start_at(self, day_and_time, zone="Europe/Berlin", command=(), **defaults):
        """Starts the program at that local time of its zone."""
        self.desktop.store(ON_AND_OFF | defaults)
        self.clock.set(day_and_time)
        environment = self.clock.environment() | {"FAKETIME_DONT_FAKE_MONOTONIC": "1"}
        if zone:
            environment["TZ"] = zone
        self.desktop.start(environment=environment, command=command)
        self.desktop.cup_geometry()

    def announce_sleep(self, going_to_sleep):
        manager = self.desktop.bus("system").get_object("org.freedesktop.login1", "/org/freedesktop/login1")
        manager.EmitSignal("org.freedesktop.login1.Manager", "PrepareForSleep", "b",
                           dbus.Array([going_to_sleep], signature="v"), dbus_interface="org.freedesktop.DBus.Mock")

    def wake(self):
        self.announce_sleep(True)
        self.announce_sleep(False)

    def expect_on(self, seconds=5):
        wait_for(self.desktop.cup_is_filled, seconds, "the cup to be on")
        wait_for(self.desktop.logind_inhibitors, 5)

    def expect_off(self, seconds=5):
        wait_for(lambda: not self.desktop.cup_is_filled(), seconds, "the cup to be off")
        wait_for(lambda: not self.desktop.logind_inhibitors(), 5)

    def expect_still(self, state, seconds=1.5):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.assertEqual(self.desktop.cup_is_filled(), state)
            time.sleep(0.1)

    def test_the_cup_turns_on_and_off_at_its_times(self):
        self.start_at("2024-05-06 08:59:56")
        self.expect_off()
        self.expect_on(8)
        self.assertEqual(self.desktop.end(), 0)
        self.start_at("2024-05-06 16:59:56")
        self.expect_on()
        self.expect_off(8)

    def test_it_starts_in_the_state_of_the_hour(self):
        self.start_at("2024-05-06 23:30:00", scheduleOnMinutes=1320, scheduleOffMinutes=360)
        self.expect_on()

    def test_a_disabled_schedule_does_nothing(self):
        self.start_at("2024-05-06 08:59:58", scheduleEnabled=False)
        self.expect_still(False, 4)

    def test_an_override_holds_until_the_next_time(self):
        self.start_at("2024-05-06 16:59:53")
        self.expect_on()
        self.desktop.click_cup()
        self.expect_off()
        self.wake()
        self.expect_still(False)
        self.desktop.click_cup()
        self.expect_on()
        self.expect_off(8)  # 17:00 ends it

    def test_sleeping_through_a_time_ends_the_override_on_waking(self):
        self.start_at("2024-05-06 10:00:00")
        self.expect_on()
        self.desktop.click_cup()
        self.expect_off()
        self.clock.set("2024-05-07 10:00:00")
        self.expect_still(False)
        self.wake()
        self.expect_on()

    def test_waking_decides_by_the_present(self):
        self.start_at("2024-05-06 10:00:00")
        self.expect_on()
        self.clock.set("2024-05-06 20:00:00")
        self.wake()
        self.expect_off()

    def test_waking_is_heard_of_after_the_bus_has_hung_for_long(self):
        """For an hour and a half: sd-bus gives up on a connection whose bus does not answer for 90 seconds."""
        now = time.gmtime()
        minutes = now.tm_hour * 60 + now.tm_min
        self.desktop.store(ON_AND_OFF | {
            "scheduleOnMinutes": (minutes + 60) % 1440, "scheduleOffMinutes": (minutes + 120) % 1440})
        bus = self.desktop.system_bus_process
        bus.send_signal(signal.SIGSTOP)
        self.addCleanup(bus.send_signal, signal.SIGCONT)
        self.desktop.start(environment=self.clock.environment() | {"TZ": "UTC"})
        self.desktop.cup_geometry()
        self.clock.put_forward(90 * 60)
        bus.send_signal(signal.SIGCONT)
        self.expect_still(False)

        def wakes():
            self.wake()
            return self.desktop.cup_is_filled()

        wait_for(wakes, what="the cup to be on")

    def test_times_that_are_slept_through_switch_nothing(self):
        self.start_at("2024-05-06 08:59:57")
        self.expect_off()
        self.announce_sleep(True)
        self.expect_still(False, 5)  # 09:00 comes
        self.clock.set("2024-05-06 20:00:00")
        self.announce_sleep(False)
        self.expect_still(False)
        self.clock.set("2024-05-07 10:00:00")
        self.wake()
        self.expect_on()

    def test_its_times_come_while_a_menu_is_open(self):
        self.start_at("2024-05-06 08:59:56")
        self.desktop.click_cup(button=3)
        wait_for(self.desktop.windows)
        self.expect_on(8)
        self.assertEqual(len(self.desktop.windows()), 1)

    def test_a_clock_that_is_set_decides_at_once(self):
        self.start_at("2024-05-06 10:00:00")
        self.expect_on()
        self.clock.set("2024-05-06 20:00:00")
        self.expect_still(True)
        # The kernel tells of any setting, also to the time that it is; the program then reads the clock of this test.
        time.clock_settime(time.CLOCK_REALTIME, time.clock_gettime(time.CLOCK_REALTIME))
        self.expect_off()

    def test_a_change_of_the_systems_time_zone_decides_at_once(self):
        self.start_with_zone_by(self.link)
        self.link("America/New_York")  # 04:00 there
        self.expect_off()
        self.link("Europe/Berlin")
        self.expect_on()

    def test_a_zone_that_is_copied_into_place_decides_at_once(self):
        self.start_with_zone_by(self.copy)
        self.copy("America/New_York")  # 04:00 there
        self.expect_off()
        (self.etc / "localtime").write_bytes(Path("/usr/share/zoneinfo/Europe/Berlin").read_bytes())
        self.expect_on()

    def start_with_zone_by(self, put):
        """At 10:00 in Berlin, with a system's configuration of its own where `put` puts a zone."""
        self.etc = self.desktop.folder / "etc"
        shutil.copytree("/etc", self.etc, symlinks=True)
        put("Europe/Berlin")
        self.start_at("2024-05-06 10:00:00", zone=None, command=["unshare", "--mount", "sh", "-c",
                      'mount --bind "$0" /etc && exec "$1"', str(self.etc), str(APP / "Contents/MacOS/Vantorel")])
        self.expect_on()

    def copy(self, zone):
        new = self.etc / "localtime.new"
        shutil.copyfile(f"/usr/share/zoneinfo/{zone}", new)
        new.rename(self.etc / "localtime")

    def link(self, zone):
        new = self.etc / "localtime.new"
        new.symlink_to(f"/usr/share/zoneinfo/{zone}")
        new.rename(self.etc / "localtime")

    def test_the_services_it_listens_to_may_be_absent(self):
        self.desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.desktop.folder}/nowhere"
        self.start_at("2024-05-06 08:59:57")
        wait_for(self.desktop.cup_is_filled, 8)

    def test_values_nobody_should_store_are_harmless(self):
        for on, off, is_on in ((-1, 1020, True), (1440, 100000, False), (-100000, 2 ** 62, True)):
            with self.subTest(f"{on} to {off}"):
                self.start_at("2024-05-06 12:00:00", scheduleOnMinutes=on, scheduleOffMinutes=off)
                self.desktop.settle()
                self.assertEqual(self.desktop.cup_is_filled(), is_on)
                self.assertEqual(self.desktop.end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
