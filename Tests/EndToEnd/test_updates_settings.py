"""The switch for automatic updates, which looks for one when it is turned on."""

import time

from desktop import wait_for
from server import Silence, answer
from updates import FIRST_CHECK, MANIFEST, UpdateTest, run_in_parallel


class Switch(UpdateTest):
    desktop_has = {"window_manager": True}

    def start(self, **defaults):
        self.install(**defaults)
        self.machine.start()
        self.desktop.app_process = self.machine.process  # for its windows

    def open_settings(self):
        self.desktop.click_cup(button=3)
        [menu] = wait_for(self.desktop.windows)
        for key in ("Down", "Down", "Return"):
            self.desktop.xdotool("key", key)
        wait_for(lambda: menu not in self.desktop.windows() and self.desktop.windows(), what="the Settings window")
        time.sleep(0.5)  # for the keyboard to be its own

    def turn(self, on):
        """From control to control, until that is the one that the space bar turned."""
        for _ in range(8):
            self.desktop.xdotool("key", "space")
            time.sleep(0.2)
            if self.machine.stored().get("autoUpdate", True) == on:
                return
            self.desktop.xdotool("key", "space", "Tab")
            time.sleep(0.2)
        raise AssertionError("no such switch")

    def test_turning_it_on_looks_at_once(self):
        self.start(autoUpdate=False)
        self.server.answers[MANIFEST] = answer(404)
        self.open_settings()
        self.turn(on=True)
        wait_for(lambda: self.server.requests, 2, "a request")
        self.assertLess(time.monotonic() - self.machine.started, FIRST_CHECK - 1)

    def test_a_second_check_returns_at_once_and_leaves_the_first_alone(self):
        self.start()
        silence = Silence()
        self.server.answers[MANIFEST] = silence
        self.open_settings()
        wait_for(lambda: silence.began, FIRST_CHECK + 10, "the first check")
        threads = self.machine.threads()
        self.turn(on=False)
        self.desktop.xdotool("key", "space")
        wait_for(lambda: self.machine.stored()["autoUpdate"])
        time.sleep(1)
        self.assertEqual(self.machine.threads(), threads, "the second check has not returned")
        self.assertEqual(self.server.requests, [MANIFEST])
        self.assertIsNone(silence.ended)
        wait_for(lambda: silence.ended, 20)
        self.assertGreater(silence.ended - silence.began, 13)
        self.assertTrue(self.machine.runs())


if __name__ == "__main__":
    run_in_parallel(1)  # there is one tray and one keyboard
