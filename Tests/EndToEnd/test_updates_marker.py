"""The three seconds that the helper has to show that it runs."""

import pathlib
import subprocess
import tempfile

from desktop import wait_for
from updates import HELPER_LINE, IMAGE, MANIFEST, TOOLS, UpdateTest, run_in_parallel, tree

HELPER = TOOLS.parent / "helper"
STAGED = ["hdiutil attach", "ditto", "hdiutil detach"]


def first_in_line():
    """A command prefix with which the program and its helper never wait for a processor, where that is allowed: here tenths
    of a second count."""
    command = ["chrt", "--fifo", "1"]
    return command if subprocess.run([*command, "true"], capture_output=True).returncode == 0 else []


class Marker(UpdateTest):
    def start_helper_after(self, seconds, before="", after="", over=(), expected_lines=()):
        machine = self.install(over=[HELPER, *over])
        machine.expected_lines = expected_lines
        machine.hook("sh", f"{before}\ntimeout {seconds} tail -f /dev/null\n{after}")
        self.offer()
        self.check(*first_in_line())

    def test_at_2_9_seconds_it_is_in_time(self):
        self.start_helper_after(2.9)
        self.expect_swapped()
        self.assertEqual(self.machine.attempts(), {"1.1.0": 1})
        self.assertEqual(self.machine.log(), [])

    def test_at_3_1_seconds_it_is_too_late(self):
        self.start_helper_after(3.1, expected_lines=["cannot open"])  # the shell's own word
        self.expect_kept([MANIFEST, IMAGE], tools=[*STAGED, "sh"], log=[HELPER_LINE])

    def test_a_late_helper_finds_nothing_to_copy(self):
        """It had read its script before that was deleted, and goes on when nobody expects it any more."""
        impatient = pathlib.Path(tempfile.mkdtemp(dir=self.folder))  # waits for the application 100 times, but not for long
        (impatient / "sleep").write_text('#!/usr/bin/dash\n[ "$1" = 0.2 ]\n')
        (impatient / "sleep").chmod(0o755)
        self.start_helper_after(3.1, before='script=$(cat "$1")', after='exec /usr/bin/dash -c "$script" "$@"', over=[impatient],
                                expected_lines=["cannot stat"])  # the copying tool's own word
        self.assertEqual(self.machine.log(), [HELPER_LINE])
        wait_for(self.machine.opened, 20, "the late helper's end")
        wait_for(lambda: not self.machine.left())
        self.assertTrue(self.machine.runs())
        self.assertEqual(tree(self.machine.applications), self.machine.before)
        self.assertEqual(self.machine.tools(), [*STAGED, "sh", "ditto", "open"])
        self.assertEqual(self.machine.attempts(), None)


if __name__ == "__main__":
    run_in_parallel(4)
