"""That every class of end-to-end tests fails with a program that leaks. usage: test_every_class_notices.py LEAKING_APP"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "EndToEnd"
WITHOUT_THE_PROGRAM = {"swap"}  # runs a script that was cut out of it
CASE = re.compile(r"__main__\.(\w+)\.test_\w+")


def run(name):
    """The classes of a file that ran, and those that noticed."""
    done = subprocess.run([sys.executable, "-B", FOLDER / f"test_{name}.py"], capture_output=True, text=True,
                          env=os.environ | {"VANTOREL_APP": sys.argv[1]})
    output = done.stdout + done.stderr
    failed = set()
    for part in re.split(r"^(?=(?:FAIL|ERROR|FAILED|ok)\b)", output, flags=re.M):
        if "LeakSanitizer" in part:
            failed |= set(CASE.findall(part.split("\n", 1)[0]))
    return name, set(CASE.findall(output)), failed


def main():
    names = sorted(path.stem.removeprefix("test_") for path in FOLDER.glob("test_*.py"))
    names = [name for name in names if name not in WITHOUT_THE_PROGRAM]
    blind = []
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        for name, classes, failed in pool.map(run, names):
            print(f"{name}: {len(failed)} of {len(classes)} classes notice", flush=True)
            blind += [f"{name}: {kind}" for kind in sorted(classes - failed)] or ([] if classes else [f"{name}: nothing ran"])
    print(*blind, sep="\n")
    sys.exit(bool(blind))


main()
