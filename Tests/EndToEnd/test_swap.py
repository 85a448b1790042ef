"""The helper script, killed and failed at every one of its commands. The outcomes stand in docs/swap-outcomes.md:

    test_swap.py --write    writes that page anew
"""

import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from desktop import ROOT, wait_for
from updates import TOOLS, Namespace, end_process, helper_script, run_in_parallel, tree, write_info

PAGE = ROOT / "docs/swap-outcomes.md"
COLUMNS = ["What happens", "At its place", "Beside it, as `.old-`", "Started again", "Left in the temporary directory"]

HEADING = """# When the swap is interrupted

The helper script replaces the bundle after the application has quit. This is what stands on disk after each of its commands
failed, or the script was killed before, amid or after it (as by a power cut). In every row but the last, a complete bundle,
old or new, stands at its place or beside it as `.old-` with the script's process number. `Tests/EndToEnd/test_swap.py` does all
of this to the script in the program as it ships, and fails when an outcome differs from this page, which it writes.

Nothing deletes what is left at once: the next update of the same version clears its own staged copy, the rest is the temporary
directory's to age out. (On Linux, where `~/.cache/com.korvex.vantorel` takes its place, the program removes what is older than a day
when it starts.) A bundle that only stands beside its place has to be renamed by hand.
"""

DAMAGED = "the copy fails halfway; what is there cannot be deleted"

# The script's commands, in order, on its three roads: by name and occurrence.
MARK = ': > "$STARTED"'
SWAPPING = {
    "sleep 1": "sleep 0.2",
    "mv 1": 'mv "$TARGET" "$BACKUP"',
    "ditto 1": 'ditto "$STAGED" "$TARGET"',
    "xattr 1": 'xattr -dr com.apple.quarantine "$TARGET"',
    "rm 1": 'rm -rf "$BACKUP"',
    "dirname 1": 'dirname "$STAGED"',
    "rm 2": 'rm -rf "$(dirname "$STAGED")"',
    "open 1": 'open "$TARGET"',
    "rm 3": 'rm -f "$STARTED" "$0"',
}
ROLLING_BACK = {
    "rm 1": 'rm -rf "$TARGET"',
    "mv 2": 'mv "$BACKUP" "$TARGET"',
    "dirname 1": 'dirname "$STAGED"',
    "rm 2": 'rm -rf "$(dirname "$STAGED")"',
    "open 1": 'open "$TARGET"',
    "rm 3": 'rm -f "$STARTED" "$0"',
}
GIVING_UP = {"open 1": 'open "$TARGET"'}
IN_PIECES = ("ditto", "rm")  # what can be interrupted with half of its work done


def kills(commands):
    for place, text in commands.items():
        yield f"killed before `{text}`", f"{place} before"
        if place.split()[0] in IN_PIECES and place != "rm 3":
            yield f"killed amid `{text}`", f"{place} amid"
        yield f"killed after `{text}`", f"{place} after"


def scenarios():
    """What happens, in words, and the options of a `Swap` in which it does."""
    yield "nothing", {}
    yield "the application has quit before", {"quits": "before"}
    yield "the application refuses to quit for 25 s", {"quits": "never"}
    yield f"killed before `{MARK}`", {"marker_blocks": True}
    for words, fault in kills(SWAPPING):
        yield words, {"faults": [fault]}
    yield "the old bundle cannot be moved aside", {"faults": ["mv 1 fails"]}
    for words, fault in kills(GIVING_UP):
        yield f"the old bundle cannot be moved aside; {words}", {"faults": ["mv 1 fails", fault]}
    yield "the new bundle cannot be copied at all", {"faults": ["ditto 1 fails"]}
    yield "the disk is full during the copy", {"disk_is_full": True}
    yield "the copy fails halfway", {"faults": ["ditto 1 fails-halfway"]}
    for words, fault in kills(ROLLING_BACK):
        yield f"the copy fails halfway; {words}", {"faults": ["ditto 1 fails-halfway", fault]}
    yield "the copy fails halfway; the old bundle cannot be moved back", {"faults": ["ditto 1 fails-halfway", "mv 2 fails"]}
    yield "the attribute cannot be removed", {"faults": ["xattr 1 fails"]}
    yield "half of the old bundle cannot be deleted", {"faults": ["rm 1 fails-halfway"]}
    yield "half of the staged copy cannot be deleted", {"faults": ["rm 2 fails-halfway"]}
    yield "the new bundle cannot be opened", {"faults": ["open 1 fails"]}
    yield "the marker and the script cannot be deleted", {"faults": ["rm 3 fails"]}
    yield DAMAGED, {"faults": ["ditto 1 fails-halfway", "rm 1 fails-halfway"]}


class Swap:
    """One run of the script, in a folder of its own."""

    def __init__(self, namespace, folder, faults=(), quits="meanwhile", marker_blocks=False, disk_is_full=False):
        self.namespace = namespace
        self.folder = folder
        self.applications = folder / "Applications"
        self.temporary = folder / "temporary"
        self.staging = self.temporary / "Vantorel-staged-1.1.0"
        self.script = self.temporary / "Vantorel-update-A.sh"
        self.marker = self.temporary / "Vantorel-update-B.started"
        self.target = self.applications / "Vantorel.app"
        for made in (self.applications, self.temporary, self.staging):
            made.mkdir()
        if disk_is_full:
            namespace.run("mount", "-t", "tmpfs", "-o", "size=64k", "small", self.applications)
        self.old = self.make_bundle(self.seen(self.target), "old")
        self.new = self.make_bundle(self.staging / "Vantorel.app", "new")
        self.script.write_bytes(helper_script())
        if marker_blocks:
            os.mkfifo(self.marker)
        (folder / "faults").write_text("".join(f"{fault}\n" for fault in faults))
        if quits == "never":
            (folder / "refuses").touch()
        self.run(quits, marker_blocks)

    def seen(self, path):
        return self.namespace.path(path)

    @staticmethod
    def make_bundle(bundle, version):
        contents = bundle / "Contents"
        (contents / "MacOS").mkdir(parents=True)
        (contents / "version").write_text(version)
        for number in range(8):
            (contents / f"resource {number}").write_bytes(version.encode() * 1000)
        (contents / "Current").symlink_to("version")
        executable = contents / "MacOS/Vantorel"
        executable.write_text(f'#!/bin/sh\necho {version} >> "$MACHINE/started"\n')
        executable.chmod(0o755)
        write_info(bundle)
        return tree(bundle)

    def run(self, quits, marker_blocks):
        # The application's parent has to take note of its end, or its number stays in use.
        parent = subprocess.Popen(["sh", "-c", 'sleep 1000 & echo $! > "$0/application"; wait', self.folder])
        number = self.folder / "application"
        application = int(wait_for(lambda: number.exists() and number.read_text().strip()))
        if quits == "before":
            os.kill(application, signal.SIGKILL)
            parent.wait()
        environment = {**os.environ, "MACHINE": str(self.folder), "REAL": str(self.folder.parent / "real")}
        helper = subprocess.Popen(
            self.namespace.command("sh", "-c", 'echo $$ > "$MACHINE/helper"; exec /bin/sh "$@"', "sh", self.script,
                                   self.target, self.staging / "Vantorel.app", application, self.marker),
            env=environment, stderr=subprocess.DEVNULL)
        if marker_blocks:
            with open(f"/proc/{helper.pid}/stat") as stat:
                wait_for(lambda: stat.seek(0) == 0 and "/bin/sh" in self.command_of(helper.pid)
                         and stat.read().split()[2] == "S")
            time.sleep(0.1)
            helper.kill()
        self.status = helper.wait(30)
        if quits != "before":
            end_process(application)
            parent.wait()
        self.await_started()

    @staticmethod
    def command_of(identifier):
        return pathlib.Path(f"/proc/{identifier}/cmdline").read_bytes().decode().split("\0")[0]

    def lines(self, name):
        file = self.folder / name
        return file.read_text().split() if file.exists() else []

    def await_started(self):
        wait_for(lambda: len(self.lines("started")) == len(self.lines("opened")))

    # The outcome

    def backups(self):
        return sorted(self.seen(self.applications).glob("Vantorel.app.old-*"))

    def describe(self, bundle):
        found = tree(bundle)
        if found is None:
            return "nothing"
        for name, whole in (("old", self.old), ("new", self.new)):
            if found == whole:
                return f"the {name} one"
        for name, whole in (("old", self.old), ("new", self.new)):
            if found.items() <= whole.items():
                return f"part of the {name} one"
        inside = [path for path in bundle.iterdir() if tree(path) == self.old]
        return "part of the new one, the old one in it" if inside else "a mixture"

    def outcome(self):
        backups = self.backups()
        left = [name for name, there in (("staged copy", self.staging.exists()),
                                         ("marker", self.marker.is_file()), ("script", self.script.exists())) if there]
        if self.staging.exists() and tree(self.staging / "Vantorel.app") != self.new:
            left[0] = "part of the staged copy"
        return [self.describe(self.seen(self.target)), ", ".join(map(self.describe, backups)) or "nothing",
                ", ".join(f"the {version} one" for version in self.lines("started")) or "nothing",
                ", ".join(left) or "nothing"]

    def is_complete(self):
        return any(tree(bundle) in (self.old, self.new) for bundle in (self.seen(self.target), *self.backups()))


def written_rows():
    """The page's rows by their first column."""
    lines = [line.removeprefix("| ").removesuffix(" |") for line in PAGE.read_text().splitlines() if line.startswith("| ")]
    rows = [line.split(" | ") for line in lines[2:]]
    return {row[0]: row for row in rows}


def table(rows):
    lines = [COLUMNS, ["---"] * len(COLUMNS), *rows]
    return HEADING + "\n" + "".join(f"| {' | '.join(line)} |\n" for line in lines)


class UnderFire(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="vantorel-")))
        cls.real = cls.folder / "real"  # the commands without what stands before them
        cls.real.mkdir()
        cls.namespace = cls.enterClassContext(Namespace(
            TOOLS.parent / "under-fire", TOOLS,
            before=f"mount -t overlay real -o lowerdir={TOOLS}:/usr/bin {cls.real}"))
        cls.rows = {}

    @classmethod
    def swap(cls, words, options):
        folder = pathlib.Path(tempfile.mkdtemp(dir=cls.folder))
        run = Swap(cls.namespace, folder, **options)
        cls.rows[words] = [words, *run.outcome()]
        return run

    @classmethod
    def write_page(cls):
        PAGE.write_text(table(cls.rows[words] for words, _ in scenarios()))

    def check(self, words, options):
        run = self.swap(words, options)
        self.assertEqual(self.rows[words], written_rows().get(words), "is not what the page says")
        self.assertEqual(run.is_complete(), words != DAMAGED, run.outcome())
        for fault in options.get("faults", ()):
            command, occurrence, _ = fault.split()
            self.assertGreaterEqual(int(run.lines(f"count-{command}")[0]), int(occurrence), "never came to that")
        if options.get("quits") == "never":
            self.assertEqual(run.lines("count-sleep"), ["100"])


def case_of(words, options):
    return lambda self: self.check(words, options)


for number, (words, options) in enumerate(scenarios()):
    setattr(UnderFire, f"test_{number:02}_" + re.sub(r"\W+", "_", words), case_of(words, options))


class Page(unittest.TestCase):
    def test_has_these_rows_and_no_others(self):
        self.assertEqual(list(written_rows()), [words for words, _ in scenarios()])


if __name__ == "__main__":
    if sys.argv[1:] == ["--write"]:
        UnderFire.setUpClass()
        for words, options in scenarios():
            UnderFire.swap(words, options)
        UnderFire.write_page()
        UnderFire.doClassCleanups()
    else:
        run_in_parallel(4)
