#!/usr/bin/env python3
"""Kills a writer of defaults at random moments: the file must always be whole.
test_kill_while_writing.py WriteDefaults"""

import os
import pathlib
import plistlib
import random
import subprocess
import sys
import tempfile
import time

ROUNDS = 500
LONGEST = 0.030  # seconds from the first stored state to the kill


def kill_once(writer, file):
    process = subprocess.Popen([writer, file], stdout=subprocess.PIPE)
    if not process.stdout.readline():
        raise SystemExit(f"the writer ended by itself: {process.wait()}")
    time.sleep(random.uniform(0, LONGEST))
    process.kill()
    process.wait()
    process.stdout.close()


def check(file):
    values = plistlib.loads(file.read_bytes())
    assert values["a"] == values["b"], values
    assert values["text"] == ("x", "y")[values["a"]] * 2048, values
    return values["a"]


def main():
    writer = sys.argv[1]
    seed = int.from_bytes(os.urandom(4), "big")
    random.seed(seed)
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "settings.plist"
        states = set()
        interrupted = 0
        for number in range(ROUNDS):
            kill_once(writer, file)
            try:
                states.add(check(file))
            except Exception as error:
                raise SystemExit(f"FAILED at kill {number + 1} (seed {seed}): {error!r}")
            names = {entry.name for entry in file.parent.iterdir()}
            interrupted += "settings.plist.new" in names
            if not names <= {"settings.plist", "settings.plist.new"}:
                raise SystemExit(f"FAILED at kill {number + 1} (seed {seed}): {sorted(names)}")
    # Otherwise the kills would prove nothing.
    if states != {0, 1} or interrupted == 0:
        raise SystemExit(f"FAILED: the kills missed the writes: {states}, {interrupted} interrupted")
    print(f"{ROUNDS} kills, {interrupted} of them in the middle of a write: the file was always whole")


main()
