#!/usr/bin/env python3
"""Thousands of checks for updates, none of which ends well, must leave nothing behind: no memory, no descriptor, no
thread, no file. test_repeat_checks.py RepeatChecks [NUMBER]"""

import itertools
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import types

from server import Server, answer, cut
from updates import IMAGE, MANIFEST, Machine, manifest

GROWTH = 1 << 20  # bytes that the allocator may want after the first tenth
PAGE = os.sysconf("SC_PAGE_SIZE")
IMAGE_BYTES = os.urandom(200000)

# What the server answers in turn: the manifest, and the image that some of them name.
MANIFESTS = [
    answer(200, manifest("1.0.0", IMAGE_BYTES)),
    answer(200, manifest("1.1.0", IMAGE_BYTES)),  # its image cannot be attached
    answer(200, manifest("1.1.0", IMAGE_BYTES, sha256="0" * 64)),
    answer(200, manifest("1.1.0", IMAGE_BYTES, file="cut")),
    answer(200, b"{" * 3000),
    answer(404),
    cut(b" " * 1000),
]


def usage_of(process):
    folder = pathlib.Path(f"/proc/{process.pid}")
    time.sleep(0.2)  # the last check's thread may be about to end
    return (int((folder / "statm").read_text().split()[1]) * PAGE, len(os.listdir(folder / "fd")),
            len(os.listdir(folder / "task")))


def measure(machine, program, number):
    """After each tenth: memory, descriptors, threads."""
    command = machine.namespace.command(program, str(number))
    with open(machine.folder / "log", "wb") as log, \
            subprocess.Popen(command, env=machine.environment, text=True,
                             stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=log) as process:
        found = []
        for _ in process.stdout:
            found.append(usage_of(process))
            process.stdin.write("\n")
            process.stdin.flush()
    if process.returncode != 0 or len(found) != 10:
        raise SystemExit(f"FAILED: status {process.returncode}, {len(found)} tenths\n{(machine.folder / 'log').read_text()[-3000:]}")
    return found


def main():
    source = pathlib.Path(sys.argv[1])
    number = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    with tempfile.TemporaryDirectory(prefix="vantorel-") as folder, Server() as server:
        # This needs no desktop.
        account = types.SimpleNamespace(folder=pathlib.Path(folder), environment={
            "PATH": os.environ["PATH"], "XDG_RUNTIME_DIR": folder, "QT_QPA_PLATFORM": "offscreen",
            **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}})
        with Machine(account, "machine", server.base) as machine:
            program = machine.target / "Contents/MacOS/RepeatChecks"
            shutil.copy2(source, program)
            machine.hook("hdiutil-attach", "exit 1")
            turn = itertools.cycle(MANIFESTS)
            server.answers = {MANIFEST: lambda handler: next(turn)(handler), IMAGE: answer(200, IMAGE_BYTES),
                              "/cut": cut(IMAGE_BYTES)}
            found = measure(machine, program, number)
            attached = machine.tools().count("hdiutil attach")
            left = machine.left()
    print("\n".join(f"{memory >> 10} kB, {descriptors} descriptors, {threads} threads" for memory, descriptors, threads in found))
    first, last = found[0], found[-1]
    is_sanitized = b"__asan_init" in source.read_bytes() or b"__tsan_init" in source.read_bytes()  # they keep what is freed
    assert is_sanitized or last[0] - first[0] < GROWTH, "memory grows"
    assert last[1:] == first[1:], "descriptors or threads grow"
    assert not left, left
    assert attached >= number // len(MANIFESTS), f"only {attached} images attached: the checks were not what they seemed"
    assert len(server.requests) >= number, "not every check asked"
    print(f"{number} checks left nothing behind")


main()
