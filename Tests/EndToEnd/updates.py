"""What an update needs besides a desktop: a machine with the system's tools, bundles, images and a server."""

import concurrent.futures
import contextlib
import functools
import hashlib
import http.server
import json
import os
import pathlib
import plistlib
import shutil
import signal
import socket
import ssl
import subprocess
import sys
import threading
import time
import unittest

from desktop import APP, HERE, IDENTIFIER, wait_for

TOOLS = HERE / "tools/system"
VARIABLE = "KORVEX_UPDATE_BASE"
MANIFEST = "/updates/vantorel.json"
IMAGE = "/updates/Vantorel.dmg"
SCRIPT_BEGINS = b'#!/bin/sh\nTARGET="$1"\n'
SCRIPT_SIZE = 755

CHECKSUM_LINE = "Updater: checksum mismatch, discarding download"
HELPER_LINE = "Updater: helper did not start, keeping the current version"


def helper_script():
    """The script that the program carries, out of the program as it ships."""
    program = (APP / "Contents/MacOS/Vantorel").read_bytes()
    begin = program.index(SCRIPT_BEGINS)
    return program[begin:begin + SCRIPT_SIZE]


def tree(folder):
    """What a folder holds: each path with its content, its target, or None for a folder. None when there is no folder."""
    if not folder.is_dir():
        return None
    found = {}
    for path in folder.rglob("*"):
        name = str(path.relative_to(folder))
        if path.is_symlink():
            found[name] = os.readlink(path)
        else:
            found[name] = path.read_bytes() if path.is_file() else None
    return found


def end_process(identifier):
    with contextlib.suppress(ProcessLookupError):
        os.kill(identifier, signal.SIGKILL)


class Namespace(contextlib.AbstractContextManager):
    """A mount namespace of its own, with the folders given over /usr/bin, the first on top."""

    def __init__(self, *over, before="", after=""):
        """`before` and `after` are shell commands that mount more, before and after that."""
        lower = ":".join(map(str, [*over, "/usr/bin"]))
        mounts = f"set -e; {before or ':'}; mount -t overlay tools -o lowerdir={lower} /usr/bin; {after or ':'}"
        self._entering = [] if os.geteuid() == 0 else ["--user", "--preserve-credentials"]
        self._keeper = subprocess.Popen(
            ["unshare", "--mount", "--propagation", "private", *([] if os.geteuid() == 0 else ["--map-root-user"]),
             "sh", "-c", f"{mounts}; echo ready; exec cat"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        if self._keeper.stdout.readline() != b"ready\n":
            raise RuntimeError(f"no namespace: {self._keeper.wait()}")

    def command(self, *command):
        """A command that becomes the one given, inside."""
        return ["nsenter", f"--target={self._keeper.pid}", "--mount", *self._entering, *map(str, command)]

    def run(self, *command, **options):
        return subprocess.run(self.command(*command), check=True, **options)

    def path(self, path):
        """Where what stands at `path` inside is seen from outside."""
        return pathlib.Path(f"/proc/{self._keeper.pid}/root{path}")

    def __exit__(self, *_):
        self._keeper.stdin.close()
        self._keeper.wait()
        self._keeper.stdout.close()


def run_in_parallel(at_once):
    """`unittest.main` for cases that mostly wait: so many of them at the same time."""
    patterns = [f"*{name}*" for name in sys.argv[1:]] or None
    loader = unittest.TestLoader()
    loader.testNamePatterns = patterns
    suite = loader.loadTestsFromModule(sys.modules["__main__"])
    classes = {}
    for group in suite:
        for case in group:
            classes.setdefault(type(case), []).append(case)
    failed = 0
    for kind, cases in classes.items():
        kind.setUpClass()
        try:
            with concurrent.futures.ThreadPoolExecutor(at_once) as pool:
                for case, result, seconds in pool.map(_run_case, cases):
                    problems = [text for _, text in result.errors + result.failures]
                    failed += bool(problems or result.skipped)
                    print(f"{'FAILED' if problems else 'ok':6} {seconds:5.1f} s  {case.id()}", *problems, sep="\n",
                          file=sys.stderr, flush=True)
        finally:
            kind.tearDownClass()
            kind.doClassCleanups()
    total = sum(map(len, classes.values()))
    print(f"{total - failed} of {total} passed", file=sys.stderr)
    sys.exit(failed > 0 or total == 0)


def _run_case(case):
    result = unittest.TestResult()
    began = time.monotonic()
    case.run(result)
    return case, result, time.monotonic() - began
