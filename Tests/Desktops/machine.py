"""One tree, booted: a real systemd with logind and a session of the user, in a container without a network."""

import contextlib
import fcntl
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import time

from trees import USER, inside, install, mount_layers

HOME = pathlib.Path("/home/u")
RUNTIME = pathlib.Path(f"/run/user/{USER}")
SUSPENDS = "/run/suspends"

# A container cannot sleep. This is all that logind needs to believe that it can, and to have done it.
SLEEP = f"""[Service]
ExecStart=
ExecStart=/bin/sh -c 'date +%%s >> {SUSPENDS}; sleep 2'
"""
POWER = "mount -o remount,rw /sys; mkdir -p /sys/power; echo freeze mem > /sys/power/state; " \
        "echo 's2idle [deep]' > /sys/power/mem_sleep; systemctl restart systemd-logind"


# What a session tells its programs.
OF_SESSION = ("DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY", "SWAYSOCK", "XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE")


class Missing(Exception):
    """Something that was waited for did not come."""


def wait_for(condition, what, seconds=30, pause=0.3):
    """The condition's first true value."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise Missing(f"{what}: not within {seconds} s")
        time.sleep(pause)


def control_group(name):
    """A control group of the container's own, below ours: two in the same would be one to both."""
    for line in pathlib.Path("/proc/self/mountinfo").read_text().splitlines():
        fields, _, filesystem = line.partition(" - ")
        if filesystem.startswith("cgroup2 "):
            ours = re.search(r"^0::(.*)$", pathlib.Path("/proc/self/cgroup").read_text(), re.MULTILINE)[1]
            group = pathlib.Path(fields.split()[4] + ours, f"vantorel-{name}-{os.getpid()}")
            group.mkdir(exist_ok=True)
            return group
    raise Missing("a control group of version 2")


class Machine:
    def __init__(self, trees, name, layers):
        self.name = name
        self._lock = open(trees.folder / f"{name}.lock", "w")
        fcntl.flock(self._lock, fcntl.LOCK_EX | fcntl.LOCK_NB)  # another run that tries the same would share its folder
        self.folder = trees.folder / "runs" / name
        self.tree = trees.folder / "mounts" / name
        shutil.rmtree(self.folder, ignore_errors=True)
        mount_layers(layers, self.folder, self.tree)
        self.environment = {"PATH": "/usr/local/bin:/usr/bin:/bin", "HOME": str(HOME), "USER": "u", "LOGNAME": "u",
                            "LANG": "C.UTF-8", "TERM": "dumb", "XDG_RUNTIME_DIR": str(RUNTIME),
                            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={RUNTIME}/bus"}
        self._process = self._group = None
        self._leader = None

    # Before it is booted.

    def write(self, path, text, executable=False):
        """A file of the system, or of the user when it is in the home folder."""
        target = self.tree / str(path).lstrip("/")
        missing = [folder for folder in (target, *target.parents) if not folder.exists()]
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text)
        target.chmod(0o755 if executable else 0o644)
        if str(path).startswith(str(HOME)):
            for created in missing or [target]:
                os.chown(created, USER, USER)

    def install(self, package):
        """As a user would: with what it recommends."""
        with open(self.folder / "install.log", "w") as log:
            install(self.tree, [str(package)], log, recommends=True, binds=[package])

    def compile_settings(self, settings):
        """Other defaults of GSettings: {schema: {key: value}}."""
        text = "".join(f"[{schema}]\n" + "".join(f"{key}={value}\n" for key, value in keys.items())
                       for schema, keys in settings.items())
        self.write("/usr/share/glib-2.0/schemas/99_desktops.gschema.override", text)
        inside(self.tree, "glib-compile-schemas", "/usr/share/glib-2.0/schemas")

    def without_capabilities(self, *programs):
        """A container refuses to run programs with more rights than it has itself."""
        for program in programs:
            os.removexattr(self.tree / program.lstrip("/"), "security.capability")

    # Booted.

    def boot(self):
        self.write("/etc/systemd/system/systemd-suspend.service.d/container.conf", SLEEP)
        command = ["setpriv", "--pdeathsig=TERM", "systemd-nspawn", "--quiet", "--boot", "--directory", self.tree, "--machine", self.name,
                   "--hostname", self.name, "--register=no", "--keep-unit", "--private-network", "--link-journal=no",
                   "--timezone=off", "--console=read-only"]
        self._group = control_group(self.name)
        enter = ["sh", "-c", 'echo $$ > "$0/cgroup.procs"; exec "$@"', self._group]
        self._process = subprocess.Popen(
            [*enter, *command], stdin=subprocess.DEVNULL, stdout=open(self.folder / "boot.log", "w"),
            stderr=subprocess.STDOUT, env={**os.environ, "SYSTEMD_NSPAWN_UNIFIED_HIERARCHY": "1"})
        children = pathlib.Path(f"/proc/{self._process.pid}/task/{self._process.pid}/children")
        self._leader = wait_for(lambda: (children.read_text().split() or [None])[0], "the container")
        wait_for(lambda: self.root("systemctl", "is-system-running", check=False).strip() in ("running", "degraded"),
                 "a booted system", 60)
        self.root("sh", "-c", POWER)

    def shut_down(self):
        if self._process and self._process.poll() is None:
            self._process.send_signal(signal.SIGTERM)
            try:
                self._process.wait(20)
            except subprocess.TimeoutExpired:
                self._process.kill()
                self._process.wait()
        subprocess.run(["umount", "--lazy", self.tree], stderr=subprocess.DEVNULL)
        if self._group:
            for group, _, _ in os.walk(self._group, topdown=False):
                with contextlib.suppress(OSError):  # what was entered from outside may take a moment to end
                    os.rmdir(group)
        self._lock.close()

    def path(self, inside_path):
        """Where a file of the running system is seen from outside."""
        return pathlib.Path(f"/proc/{self._leader}/root{inside_path}")

    def _enter(self, command, environment, as_user):
        identity = ["setpriv", f"--reuid={USER}", f"--regid={USER}", "--init-groups"] if as_user else []
        return ["nsenter", "--target", self._leader, "--mount", "--uts", "--ipc", "--net", "--pid", "--cgroup", "--root",
                "--wd", "--", *identity, "env", "-i", *[f"{key}={value}" for key, value in environment.items()], *command]

    @staticmethod
    def _output(command, check, timeout):
        try:
            done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=timeout)
        except subprocess.TimeoutExpired:
            raise Missing(f"{' '.join(command[command.index('-i') + 1:])[-200:]}: no end within {timeout} s") from None
        if check and done.returncode != 0:
            raise Missing(f"{' '.join(map(str, command))[-200:]}: {done.stderr.decode(errors='replace').strip()[-300:]}")
        return done.stdout

    def root(self, *command, check=True, timeout=60):
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "HOME": "/root", "TERM": "dumb"}
        return self._output(self._enter(command, environment, False), check, timeout).decode(errors="replace")

    def user_bytes(self, *command, check=True, timeout=30):
        return self._output(self._enter(command, self.environment, True), check, timeout)

    def user(self, *command, check=True, timeout=30):
        return self.user_bytes(*command, check=check, timeout=timeout).decode(errors="replace")

    def user_status(self, *command, timeout):
        """The exit status, None when it did not end."""
        try:
            return subprocess.run(self._enter(command, self.environment, True), stdin=subprocess.DEVNULL,
                                  capture_output=True, timeout=timeout).returncode
        except subprocess.TimeoutExpired:
            return None

    def join_session(self):
        """What is started from here on has the session's environment."""
        for line in self.user("systemctl", "--user", "show-environment").splitlines():
            key, _, value = line.partition("=")
            if key in OF_SESSION:
                self.environment[key] = value

    def user_process(self, *command):
        """A process with pipes to and from it."""
        return subprocess.Popen(self._enter(command, self.environment, True), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, text=True)

    def user_socket(self, path):
        """A connection made by a process of the session, which stays: compositors look who it is."""
        script = "import socket, sys\nto = socket.socket(socket.AF_UNIX)\nto.connect(sys.argv[1])\n" \
                 "socket.send_fds(socket.socket(fileno=int(sys.argv[2])), [b'.'], [to.fileno()])\nsys.stdin.read()"
        ours, theirs = socket.socketpair()
        with ours, theirs:
            command = ["/usr/bin/python3", "-c", script, path, str(theirs.fileno())]
            process = subprocess.Popen(self._enter(command, self.environment, True), stdin=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, pass_fds=[theirs.fileno()])
            theirs.close()
            _, descriptors, _, _ = socket.recv_fds(ours, 1, 1)
        if not descriptors:
            raise OSError(f"no connection to {path}")
        return socket.socket(fileno=descriptors[0]), process

    def user_service(self, *command, log):
        """Starts something in the session that goes on by itself."""
        shown = {key: value for key, value in self.environment.items() if key in OF_SESSION}
        self.user("systemd-run", "--user", "--quiet", "--collect", f"--property=StandardError=append:{log}",
                  f"--property=StandardOutput=append:{log}", *[f"--setenv={key}={value}" for key, value in shown.items()],
                  "--setenv=QT_LOGGING_RULES=vantorel.*=true", "--setenv=QT_FORCE_STDERR_LOGGING=1", *command)

    def call(self, service, path, interface, method, *arguments, system=False, check=True):
        """A call on a bus; its answer as busctl writes it. Starts no service."""
        return (self.root if system else self.user)(
            "busctl", "--system" if system else "--user", "--auto-start=no", "--timeout=5", "call", service, path, interface,
            method, *arguments, check=check).strip()

    def property(self, service, path, interface, name, check=True):
        return self.user("busctl", "--user", "--auto-start=no", "--timeout=5", "get-property", service, path, interface,
                         name, check=check).strip()

    def names(self):
        """The names on the session bus."""
        lines = self.user("busctl", "--user", "--no-pager", "--no-legend", "--acquired", "list", check=False).splitlines()
        return [line.split()[0] for line in lines if line.strip()]

    def processes(self, name):
        """The process identifiers (inside) of a program of the user."""
        return self.root("pgrep", "-u", "u", "-i", "-x", name, check=False).split()

    def suspends(self):
        return len(self.root("cat", SUSPENDS, check=False).split())

    def write_as_user(self, path, data):
        """A file of the user, while the system runs."""
        target = self.path(path)
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(data)
        for changed in (target.parent, target):
            os.chown(changed, USER, USER)

    def text(self, path):
        try:
            return self.path(path).read_text(errors="replace")
        except OSError:
            return ""

    # The user's session.

    def log_in(self, kind, desktop, command):
        """A session as a display manager starts it."""
        self.root("systemctl", "reset-failed", "session", check=False)
        settings = {"XDG_SEAT": "seat0", "XDG_SESSION_CLASS": "user", "XDG_SESSION_TYPE": kind,
                    "XDG_SESSION_DESKTOP": desktop, "XDG_CURRENT_DESKTOP": desktop, "LANG": "C.UTF-8",
                    "PATH": "/usr/local/bin:/usr/bin:/bin"}
        self.root("systemd-run", "--quiet", "--collect", "--unit=session", "--property=PAMName=login",
                  "--property=User=u", "--property=WorkingDirectory=/home/u", "--property=StandardOutput=append:/tmp/session.log",
                  "--property=StandardError=append:/tmp/session.log",
                  *[f"--setenv={key}={value}" for key, value in settings.items()], *command)

    def is_logged_in(self):
        return self.root("systemctl", "is-active", "session", check=False).strip() in ("active", "activating", "deactivating")

    def end_session(self):
        self.root("systemctl", "stop", "session", check=False, timeout=120)
