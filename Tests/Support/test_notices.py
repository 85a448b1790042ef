"""That the end of a test notices how its program ended. usage: test_notices.py LEAKING_APP [TEST...]"""

import pathlib
import signal
import sys
import unittest

from desktop import Desktop
from server import Server
from updates import Machine

REPORT = "LeakSanitizer"


class OfADesktop(unittest.TestCase):
    def test_a_leak(self):
        with self.assertRaisesRegex(AssertionError, REPORT), Desktop() as desktop:
            desktop.start_as_returning_user(app=LEAKING)
            desktop.cup_geometry()

    def test_a_leak_of_a_program_that_the_test_has_ended(self):
        with self.assertRaisesRegex(AssertionError, REPORT), Desktop() as desktop:
            desktop.start_as_returning_user(app=LEAKING)
            desktop.cup_geometry()
            desktop.end()

    def test_a_leak_of_all_but_the_last_program(self):
        with self.assertRaisesRegex(AssertionError, REPORT), Desktop() as desktop:
            desktop.start_as_returning_user(app=LEAKING)
            desktop.cup_geometry()
            desktop.end()
            desktop.start()
            desktop.cup_geometry()

    def test_an_expected_line_does_not_excuse_another(self):
        with self.assertRaisesRegex(AssertionError, REPORT), Desktop() as desktop:
            desktop.start_as_returning_user(app=LEAKING, expects_status=23, expects_log="something else")
            desktop.cup_geometry()

    def test_a_line_that_is_expected_and_missing(self):
        with self.assertRaisesRegex(AssertionError, "did not write"), Desktop() as desktop:
            desktop.start_as_returning_user(expects_log="something")
            desktop.cup_geometry()

    def test_a_program_that_was_killed_by_somebody(self):
        with self.assertRaisesRegex(AssertionError, "ended with -9"), Desktop() as desktop:
            desktop.start_as_returning_user()
            desktop.cup_geometry()
            desktop.app_process.send_signal(signal.SIGKILL)

    def test_nothing_wrong_where_all_is_as_expected(self):
        with Desktop() as desktop:
            desktop.start_as_returning_user(app=LEAKING, expects_status=23, expects_log=REPORT)
            desktop.cup_geometry()
            desktop.end()
            desktop.start()
            desktop.cup_geometry()


class OfAMachine(unittest.TestCase):
    def start(self):
        self.desktop = self.enterContext(Desktop())
        self.server = self.enterContext(Server())
        return Machine(self.desktop, "machine", self.server.base)

    def test_a_leak(self):
        with self.assertRaisesRegex(AssertionError, REPORT), self.start() as machine:
            program = machine.target / "Contents/MacOS/Vantorel"
            program.unlink()
            program.write_bytes((LEAKING / "Contents/MacOS/Vantorel").read_bytes())
            program.chmod(0o755)
            machine.start()
            self.desktop.cup_geometry()

    def test_nothing_wrong_where_all_is_well(self):
        with self.start() as machine:
            machine.start()
            self.desktop.cup_geometry()


if __name__ == "__main__":
    LEAKING = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
