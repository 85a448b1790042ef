"""The Debian package: what is in it, installed into an empty tree, started there, removed without a trace.
usage: test_deb.py BUILD_DIRECTORY [TEST...]"""

import configparser
import os
import pathlib
import plistlib
import subprocess
import sys
import tempfile
import unittest

from desktop import IDENTIFIER, Desktop, wait_for
from settings_window import UPDATES

SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
PROGRAM = "usr/lib/vantorel/Vantorel.app/Contents/MacOS/Vantorel"


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.packages = []
        for name, umask in (("1", 0o022), ("2", 0o022), ("3", 0o077)):
            run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder / name, umask=umask,
                env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})
            cls.packages += (folder / name).glob("*.deb")
        cls.package = cls.packages[0]

    def setUp(self):
        self.root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="root-")))
        for folder in ("info", "updates", "triggers"):
            (self.root / "var/lib/dpkg" / folder).mkdir(parents=True)
        (self.root / "var/lib/dpkg/status").touch()

    def dpkg(self, *arguments):
        # Without the libraries, which are the machine's own here.
        run("fakeroot", "dpkg", f"--root={self.root}", "--force-depends", "--force-not-root", "--log=/dev/null",
            *arguments, env={**os.environ, "PATH": f"{os.environ['PATH']}:/usr/sbin:/sbin"})

    def files(self):
        return sorted(str(path.relative_to(self.root)) for path in self.root.rglob("*")
                      if not path.is_relative_to(self.root / "var/lib/dpkg"))

    def test_it_is_installed_started_and_removed_without_a_trace(self):
        before = self.files()
        self.dpkg("--install", self.package)
        self.assertTrue((self.root / PROGRAM).is_file())
        with Desktop(window_manager=True) as desktop:
            desktop.start(command=[self.root / "usr/bin/vantorel"])
            desktop.welcome_window()
            desktop.xdotool("key", "Return")
            desktop.click_cup()
            wait_for(desktop.logind_inhibitors)
            entry = configparser.ConfigParser(interpolation=None)
            entry.read(desktop.autostart_file)
            started_at_login = pathlib.Path(entry["Desktop Entry"]["TryExec"])
            self.assertEqual(started_at_login, self.root / PROGRAM)
            self.assertEqual(desktop.end(), 0)
        self.dpkg("--purge", "vantorel")
        self.assertEqual(self.files(), before)
        self.assertFalse(started_at_login.exists(), "a session would still start it")

    def test_it_does_not_look_for_updates_unless_asked_to(self):
        self.dpkg("--install", self.package)
        with Desktop(window_manager=True) as desktop:
            desktop.start_accessibility()
            desktop.start_as_returning_user(command=[self.root / "usr/bin/vantorel"])
            desktop.open_settings()
            [switch] = [found for found in desktop.accessibles() if UPDATES in found["captions"]]
            self.assertNotIn("checked", switch["states"])

    def test_it_holds_what_the_desktop_and_debian_ask_for(self):
        self.dpkg("--install", self.package)
        share = self.root / "usr/share"
        run("desktop-file-validate", share / f"applications/{IDENTIFIER}.desktop")
        run("appstreamcli", "validate", "--no-net", share / f"metainfo/{IDENTIFIER}.metainfo.xml")
        for size in SIZES:
            icon = share / f"icons/hicolor/{size}x{size}/apps/{IDENTIFIER}.png"
            self.assertEqual(run("identify", "-format", "%wx%h", icon), f"{size}x{size}")
        self.assertTrue(os.access((self.root / PROGRAM).with_name("Transfer"), os.X_OK))
        for name in ("doc/vantorel/copyright", "doc/vantorel/changelog.gz", "man/man1/vantorel.1.gz"):
            self.assertTrue((share / name).is_file(), name)
        defaults = (self.root / PROGRAM).parent.parent / "Resources" / f"{IDENTIFIER}.plist"
        self.assertEqual(plistlib.loads(defaults.read_bytes()), {"autoUpdate": False})
        version = plistlib.loads((self.root / PROGRAM).parent.with_name("Info.plist").read_bytes())
        self.assertEqual(run("dpkg-deb", "--field", self.package, "Version").strip(),
                         version["CFBundleShortVersionString"])

    def test_it_asks_for_its_libraries_and_runs_nothing_at_installation(self):
        depends = run("dpkg-deb", "--field", self.package, "Depends")
        for field, packages in {"Recommends": "ca-certificates, qt6-wayland",
                                "Suggests": "gnome-shell-extension-appindicator"}.items():
            self.assertEqual(run("dpkg-deb", "--field", self.package, field).strip(), packages)
        for library in ("libc6", "libqt6widgets6", "libsystemd0", "libwayland-client0",
                        "libplist3", "libxss1", "libcurl4"):
            self.assertRegex(depends, rf"\b{library}\b")
        with tempfile.TemporaryDirectory() as folder:
            run("dpkg-deb", "--control", self.package, folder)
            self.assertEqual(sorted(os.listdir(folder)), ["control", "md5sums"])

    def test_the_same_tree_gives_the_same_bytes(self):
        first, second, private = self.packages
        self.assertEqual(first.read_bytes(), second.read_bytes())
        for part in ("--ctrl-tarfile", "--fsys-tarfile"):
            self.assertEqual(*(subprocess.run(["dpkg-deb", part, package], check=True, capture_output=True).stdout
                               for package in (first, private)), "the umask of the build shows")


if __name__ == "__main__":
    BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
