"""What an update needs besides a desktop: a machine with the system's tools, bundles, images and a server."""

import concurrent.futures
import contextlib
import hashlib
import json
import os
import pathlib
import plistlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from desktop import APP, IDENTIFIER, Desktop, wait_for
from server import Server, answer

TOOLS = pathlib.Path(__file__).resolve().parent / "tools/system"
VARIABLE = "KORVEX_UPDATE_BASE"
MANIFEST = "/updates/vantorel.json"
IMAGE = "/updates/Vantorel.dmg"
SCRIPT_BEGINS = b'#!/bin/sh\nTARGET="$1"\n'
SCRIPT_SIZE = 755

LOG_LINE = r"[-\d]+ [:.\d]+ Vantorel\[\d+:\d+\] "  # how the program's lines begin
NO_TRAY = "nothing here shows the cup: "  # where a desktop has none
FIRST_CHECK = 12  # seconds after the start
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

    def __init__(self, *over, before=""):
        """`before`: shell commands that mount more, earlier."""
        lower = ":".join(map(str, [*over, "/usr/bin"]))
        mounts = f"set -e; {before or ':'}; mount -t overlay tools -o lowerdir={lower} /usr/bin"
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


def make_image(tree, image):
    """A disk image of the folder `tree`, whatever is in it."""
    subprocess.run(["xorriso", "-as", "mkisofs", "-quiet", "-R", "-hfsplus", "-V", "Vantorel", "-o", str(image), str(tree)],
                   check=True, stderr=subprocess.DEVNULL)
    return image.read_bytes()


def manifest(version, image, **changes):
    latest = {"version": version, "file": IMAGE[1:], "sha256": hashlib.sha256(image).hexdigest(), **changes}
    return json.dumps({"latest": latest}).encode()


def write_info(bundle, **changes):
    file = bundle / "Contents/Info.plist"
    info = plistlib.loads(file.read_bytes() if file.exists() else (APP / "Contents/Info.plist").read_bytes())
    info.update(changes)
    file.unlink(missing_ok=True)  # it may be a link to that of another bundle
    file.write_bytes(plistlib.dumps({key: value for key, value in info.items() if value is not None}))


class Machine(contextlib.AbstractContextManager):
    """A user's folders with Vantorel 1.0.0 in one of them, and the system's tools where they belong."""

    def __init__(self, desktop, name, base, *, bundle="Vantorel.app", preferences=IDENTIFIER, over=(), before="",
                 after="", **defaults):
        """`base` is the server, `preferences` their file. `over`: folders over the tools. `before` and `after`: shell
        commands that mount more, where $APPLICATIONS, $TEMPORARY and $CONFIG are the folders, before and after the program
        is put there."""
        self.stack = contextlib.ExitStack()
        self.folder = desktop.folder / name
        self.applications = self.folder / "Applications"
        self.temporary = self.folder / "temporary"
        self.config = self.folder / "config"
        self.target = self.applications / bundle
        self.defaults_file = self.config / f"{preferences}.plist"
        runtime = self.folder / "runtime"  # its copy is not the only one on this desktop
        for made in (self.applications, self.temporary, self.config, runtime, self.folder / "hooks"):
            made.mkdir(parents=True)
        for private in (self.temporary, runtime):
            private.chmod(0o700)
        folders = f"APPLICATIONS='{self.applications}' TEMPORARY='{self.temporary}' CONFIG='{self.config}'; "
        self.namespace = self.stack.enter_context(Namespace(*over, TOOLS, before=folders + (before or ":")))
        self.environment = {
            **desktop.environment,
            "HOME": str(self.folder),
            "XDG_CONFIG_HOME": str(self.config),
            "XDG_CACHE_HOME": str(self.folder / "cache"),
            "XDG_RUNTIME_DIR": str(runtime),
            "TMPDIR": str(self.temporary),
            "MACHINE": str(self.folder),
        }
        self.environment.pop(VARIABLE, None)
        if base is not None:
            self.environment[VARIABLE] = base
        self.put_bundle(self.seen(self.target), "1.0.0")
        self.before = tree(self.seen(self.applications))
        self.seen(self.defaults_file).write_bytes(plistlib.dumps({"appLanguage": "en", **defaults}))
        if after:
            self.namespace.run("sh", "-c", folders + after)
        self.process = None
        self.expected_lines = []

    @staticmethod
    def put_bundle(bundle, version, **info):
        """The program as it ships, but for its version."""
        def link_or_copy(source, destination):  # the program is large, and there are many machines
            try:
                os.link(source, destination)
            except OSError:
                shutil.copy2(source, destination)

        shutil.copytree(APP, bundle, copy_function=link_or_copy)
        write_info(bundle, CFBundleShortVersionString=version, CFBundleVersion=version, **info)

    def seen(self, path):
        return self.namespace.path(path)

    def hook(self, name, commands):
        """Shell commands for a tool to run first."""
        (self.folder / "hooks" / name).write_text(commands)

    # Processes

    def start(self, *through, **environment):
        """Starts the program, by way of another command if one is given. When the machine goes, it has to end well, and its
        log has to hold nothing but the program's own lines and those that contain one of `expected_lines`: sanitizers
        report at the end."""
        with open(self.folder / "log", "ab") as log:
            self.process = subprocess.Popen(
                self.namespace.command(*through, self.target / "Contents/MacOS/Vantorel"),
                env={**self.environment, **environment}, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        # Its parent takes note of its end at once, as launchd does: until then its number stays in use.
        threading.Thread(target=self.process.wait, daemon=True).start()
        self.stack.callback(self.end)
        self.started = time.monotonic()

    def runs(self):
        return self.process.poll() is None

    def threads(self):
        """How many the program has; none when it has ended."""
        try:
            return len(os.listdir(f"/proc/{self.process.pid}/task"))
        except OSError:
            return 0

    def workers(self):
        """The program's threads that no library named: those of its own that do background work. None when it has ended."""
        workers = set()
        tasks = []
        with contextlib.suppress(OSError):
            tasks = list(pathlib.Path(f"/proc/{self.process.pid}/task").iterdir())
        for task in tasks:
            with contextlib.suppress(OSError):
                if int(task.name) != self.process.pid and (task / "comm").read_text() == "Vantorel\n":
                    workers.add(int(task.name))
        return workers

    def opened(self):
        file = self.folder / "opened"
        return [int(line) for line in file.read_text().split()] if file.exists() else []

    def versions_started(self):
        """The small versions that said so."""
        file = self.folder / "started"
        return file.read_text().split() if file.exists() else []

    def end(self):
        for identifier in self.opened():
            end_process(identifier)
        if self.process.poll() is None:
            self.process.terminate()
        try:
            status = self.process.wait(20)
        finally:
            self.process.kill()
        log = (self.folder / "log").read_text(errors="replace")
        assert status == 0, f"the program ended with {status}:\n{log}"
        strangers = [line for line in log.splitlines() if not re.match(LOG_LINE, line)
                     and not any(part in line for part in [NO_TRAY, *self.expected_lines])]
        assert not strangers, "\n".join(["the program wrote:", *strangers])

    def __exit__(self, *_):
        self.stack.close()

    # What is to be seen afterwards

    def record(self):
        """The tools' calls: lists of the tool's name and its arguments."""
        file = self.folder / "record"
        return [line.split("\037")[:-1] for line in file.read_text().split("\n")[:-1]] if file.exists() else []

    def tools(self):
        """The same in short: `hdiutil attach`, `ditto`."""
        return [" ".join(call[:2]) if call[0] == "hdiutil" else call[0] for call in self.record()]

    def log(self):
        """The lines of the log without their time and process; lines of another kind as they are."""
        lines = [line for line in (self.folder / "log").read_text().splitlines() if NO_TRAY not in line]
        return [re.sub(LOG_LINE, "", line) for line in lines]

    def left(self):
        """What stands in the temporary directory, with `*` for what is random in the names."""
        names = (entry.name for entry in self.seen(self.temporary).iterdir())
        return sorted(re.sub(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}|(?<=^download-)\w{6}$", "*", name) for name in names)

    def stored(self):
        """The preferences on disk."""
        return plistlib.loads(self.seen(self.defaults_file).read_bytes())

    def attempts(self):
        return self.stored().get("updateAttempts")

    def version_installed(self):
        return plistlib.loads((self.seen(self.target) / "Contents/Info.plist").read_bytes())["CFBundleShortVersionString"]


def put_small_bundle(folder, version="1.1.0", name="Vantorel.app", **info):
    """A version whose only work is to say that it was started."""
    executable = folder / name / "Contents/MacOS/Vantorel"
    executable.parent.mkdir(parents=True)
    executable.write_text(f'#!/bin/sh\necho {version} >> "$MACHINE/started"\n')
    executable.chmod(0o755)
    (folder / name / "Contents/content").write_bytes(os.urandom(300000))
    write_info(folder / name, CFBundleShortVersionString=version, **info)


class UpdateTest(unittest.TestCase):
    """A check for updates on a machine of its own."""

    desktop_has = {"tray": False}

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.enterClassContext(Desktop(**cls.desktop_has))
        cls.folder = cls.desktop.folder / "made"
        cls.folder.mkdir()
        cls.image = cls.image_of(put_small_bundle)
        cls.certificate = cls.folder / "certificate.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=test",
                        "-addext", "subjectAltName=IP:127.0.0.1,DNS:korvex.example", "-keyout", cls.folder / "key",
                        "-out", cls.folder / "public"], check=True, capture_output=True)
        cls.certificate.write_text((cls.folder / "key").read_text() + (cls.folder / "public").read_text())
        cls.trust = f"mount --bind '{cls.folder}/public' /etc/ssl/certs/ca-certificates.crt"

    @classmethod
    def image_of(cls, put, *arguments, **options):
        """An image of what `put` puts into a folder."""
        content = pathlib.Path(tempfile.mkdtemp(dir=cls.folder))
        put(content, *arguments, **options)
        return make_image(content, content.with_suffix(".dmg"))

    def setUp(self):
        self.server = self.enterContext(Server())
        self.server.on_request = self.note_request
        self.checking = None  # the threads that could be the one that checks

    def note_request(self, _):
        if not self.checking:
            self.seconds_until_check = time.monotonic() - self.machine.started
            self.checking = self.machine.workers()

    def install(self, base=None, **options):
        """The machine with 1.0.0; `base` may be another server than the test's."""
        name = self.id().split(".")[-1].removeprefix("test_")
        self.machine = self.enterContext(Machine(self.desktop, name, base or self.server.base, **options))
        return self.machine

    def offer(self, image=None, image_answer=None, version="1.1.0", **changes):
        image = self.image if image is None else image
        self.server.answers[MANIFEST] = answer(200, manifest(version, image, **changes))
        self.server.answers[IMAGE] = image_answer or answer(200, image)

    def check(self, *through, seconds=60, **environment):
        """Starts the program and waits for the end of its first check, that is of the thread that does it."""
        self.machine.start(*through, **environment)
        wait_for(lambda: self.checking, FIRST_CHECK + 20, "a request to the server")
        wait_for(lambda: self.checking - self.machine.workers(), seconds, "the end of the check")

    def expect_kept(self, requests, tools=(), left=(), log=()):
        """The version is kept and runs on, and this is all that the check did."""
        self.assertTrue(self.machine.runs())
        self.assertEqual(self.server.requests, requests)
        self.assertEqual(self.machine.tools(), list(tools))
        self.assertEqual(self.machine.left(), list(left))
        self.assertEqual(self.machine.log(), list(log))
        self.assertEqual(tree(self.machine.seen(self.machine.applications)), self.machine.before)
        self.assertEqual(self.machine.attempts(), None)

    def expect_swapped(self):
        """The program has quit, and the small 1.1.0 was started in its place."""
        self.assertEqual(self.machine.process.wait(10), 0, (self.machine.folder / "log").read_text())
        wait_for(self.machine.versions_started, 30, "the new version to start")
        wait_for(lambda: not self.machine.left(), 10, "the script to clean up")
        self.assertEqual(self.machine.version_installed(), "1.1.0")
        self.assertEqual(os.listdir(self.machine.applications), ["Vantorel.app"])
        self.assertEqual(self.machine.versions_started(), ["1.1.0"])


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
