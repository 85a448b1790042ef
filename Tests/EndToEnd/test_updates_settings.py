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

    def turn(self, on):
        self.desktop.open_settings()
        self.desktop.xdotool("key", "Tab", "Tab", "Tab", "space")  # past launch at login and the schedule
        self.expect_stored(on)

    def expect_stored(self, on):
        wait_for(lambda: self.machine.stored().get("autoUpdate", True) == on, what=f"autoUpdate to be {on}")

    def test_turning_it_on_looks_at_once(self):
        self.start(autoUpdate=False)
        self.server.answers[MANIFEST] = answer(404)
        self.turn(on=True)
        wait_for(lambda: self.server.requests, 2, "a request")
        self.assertLess(time.monotonic() - self.machine.started, FIRST_CHECK - 1)

    def test_a_second_check_returns_at_once_and_leaves_the_first_alone(self):
        self.start()
        silence = Silence()
        self.server.answers[MANIFEST] = silence
        wait_for(lambda: silence.began, FIRST_CHECK + 10, "the first check")
        threads = self.machine.threads()
        self.turn(on=False)
        self.desktop.xdotool("key", "space")
        self.expect_stored(True)
        wait_for(lambda: self.machine.threads() == threads, what="the second check to return")
        self.assertEqual(self.server.requests, [MANIFEST])
        self.assertIsNone(silence.ended)
        wait_for(lambda: silence.ended, 20)
        self.assertGreater(silence.ended - silence.began, 13)
        self.assertTrue(self.machine.runs())


if __name__ == "__main__":
    run_in_parallel(1)  # there is one tray and one keyboard
