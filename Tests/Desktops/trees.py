"""The trees that the desktops run in: one Debian for all of them, a layer of packages over it for each desktop, and for
each run a layer that is thrown away. The first two are kept below $DESKTOPS."""

import os
import pathlib
import shutil
import subprocess
import threading

from debian import mirror, use_sources_of_this_machine

SUITE = "bookworm"
USER = 1000

# What every tree has: a system that boots, the session's services, and what drives a session from outside.
BASE = """systemd systemd-sysv dbus dbus-user-session libpam-systemd polkitd upower procps ca-certificates
    fonts-dejavu-core python3 x11-utils x11-xserver-utils xdotool xvfb""".split()


def run(*command, **options):
    return subprocess.run(command, check=True, stdin=subprocess.DEVNULL, **options)


def folder():
    """Where the trees are kept."""
    if "DESKTOPS" in os.environ:
        return pathlib.Path(os.environ["DESKTOPS"]).resolve()
    cache = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache")
    return cache / "vantorel-desktops"


def mount_layers(lower, layer, target):
    """An overlay; it ends with the driver, whose mounts are its own."""
    for path in (layer / "upper", layer / "work", target):
        path.mkdir(parents=True, exist_ok=True)
    lower = ":".join(map(str, lower))
    run("mount", "-t", "overlay", "overlay", "-o",
        f"lowerdir={lower},upperdir={layer / 'upper'},workdir={layer / 'work'}", target)


def inside(tree, *command, log=None, binds=()):
    """Runs a command in a tree that is not booted, with this machine's network."""
    run("systemd-nspawn", "--quiet", "--directory", tree, "--register=no", "--keep-unit", "--pipe", "--as-pid2",
        "--resolv-conf=copy-host", "--timezone=off", *[f"--bind-ro={bind}" for bind in binds],
        "--setenv=DEBIAN_FRONTEND=noninteractive", "--setenv=LC_ALL=C.UTF-8", *command,
        stdout=log or subprocess.DEVNULL, stderr=subprocess.STDOUT if log else None)


def install(tree, packages, log=None, recommends=False, binds=()):
    inside(tree, "apt-get", "install", "-y", "-qq", "-o", "Dpkg::Use-Pty=0",
           "--install-recommends" if recommends else "--no-install-recommends", *packages, log=log, binds=binds)


class Trees:
    def __init__(self):
        self.folder = folder()
        self.base = self.folder / "base"
        self._base_lock = threading.Lock()

    def _up_to_date(self, path, recipe):
        stamp = path / "recipe"
        return stamp.is_file() and stamp.read_text() == recipe

    def make_base(self):
        recipe = " ".join([SUITE, *BASE])
        with self._base_lock:
            if not self._up_to_date(self.base, recipe):
                self._bootstrap()
                (self.base / "recipe").write_text(recipe)
        return recipe

    def _bootstrap(self):
        print(f"Making the {SUITE} that all desktops share", flush=True)
        shutil.rmtree(self.base, ignore_errors=True)
        tree = self.base / "upper"
        tree.mkdir(parents=True)
        run("debootstrap", "--variant=minbase", SUITE, tree, mirror(SUITE), stdout=subprocess.DEVNULL)
        use_sources_of_this_machine(tree)
        (tree / "etc/dpkg/dpkg.cfg.d/desktops").write_text(
            "force-unsafe-io\npath-exclude=/usr/share/man/*\npath-exclude=/usr/share/doc/*\n")
        with open(self.base / "log", "w") as log:
            inside(tree, "apt-get", "update", "-qq", log=log)
            install(tree, BASE, log)
            inside(tree, "useradd", "--create-home", "--uid", str(USER), "--shell", "/bin/bash", "u", log=log)
            inside(tree, "passwd", "--delete", "u", log=log)
            inside(tree, "apt-get", "clean", log=log)

    def layer(self, name, packages):
        """The layers of a desktop, the uppermost first. Makes those that are missing or were made otherwise."""
        recipe = self.make_base() + "\n" + " ".join(packages)
        layer = self.folder / "layers" / name
        if not self._up_to_date(layer, recipe):
            print(f"{name}: installing its packages", flush=True)
            shutil.rmtree(layer, ignore_errors=True)
            layer.mkdir(parents=True)
            tree = self.folder / "mounts" / f"making-{name}"
            mount_layers([self.base / "upper"], layer, tree)
            try:
                with open(layer / "log", "w") as log:
                    inside(tree, "apt-get", "update", "-qq", log=log)
                    install(tree, packages, log)
                    inside(tree, "apt-get", "clean", log=log)
            finally:
                run("umount", tree)
            (layer / "recipe").write_text(recipe)
        return [layer / "upper", self.base / "upper"]
