"""The apt repository that Packaging/make-apt makes: served, added with its key, installed from, upgraded from, purged;
and what apt refuses. usage: test_apt.py BUILD_DIRECTORY [TEST...]"""

import gzip
import hashlib
import lzma
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import spare_system
from debian import make_key, run, with_fields

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PROGRAM = "usr/lib/vantorel/Vantorel.app/Contents/MacOS/Vantorel"
INDEX = "apt/dists/stable/main/binary-{}/Packages"


class Repository(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.made = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", cls.made / "package")
        [built] = (cls.made / "package").glob("*.deb")
        cls.architecture = run("dpkg-deb", "--field", built, "Architecture")
        cls.old, cls.new = (with_fields(built, cls.made, Version=version) for version in ("1.0.0", "1.1.0"))
        cls.other = with_fields(built, cls.made, Package="other")
        cls.changed = with_fields(cls.old, cls.made, Maintainer="Somebody else <else@localhost>")
        cls.home = cls.made / "gpg"
        cls.key, cls.wrong_key = (make_key(cls.home, name) for name in ("maintainer", "somebody"))
        cls.certificate, cls.public = spare_system.make_certificate(cls.made)

    @classmethod
    def tearDownClass(cls):
        subprocess.run(["gpgconf", "--kill", "all"], env=os.environ | {"GNUPGHOME": str(cls.home)}, check=False)

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.index = self.folder / INDEX.format(self.architecture)

    def run_tool(self, *packages, key=None, folder=None):
        environment = os.environ | {"GNUPGHOME": str(self.home), "SOURCE_DATE_EPOCH": "1700000000"}
        environment |= {"VANTOREL_APT_KEY": key} if key else {}
        return subprocess.run([ROOT / "Packaging/make-apt", *packages, folder or self.folder], env=environment,
                              capture_output=True, text=True)

    def publish(self, *packages, key=None, folder=None):
        done = self.run_tool(*packages, key=key, folder=folder)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def serve(self):
        self.server = self.enterContext(spare_system.FileServer(self.folder, self.certificate))
        self.system = self.enterContext(spare_system.SpareSystem(self.public))

    def add_source(self, option="signed-by=/etc/apt/keyrings/vantorel.asc"):
        keyrings = self.system.root / "etc/apt/keyrings"
        keyrings.mkdir(exist_ok=True)
        if (self.folder / "apt/vantorel.asc").exists():
            shutil.copy(self.folder / "apt/vantorel.asc", keyrings)
        (self.system.root / "etc/apt/sources.list.d/vantorel.list").write_text(
            f"deb [{option}] https://{spare_system.HOST}/apt stable main\n")

    def remove_source(self):
        (self.system.root / "etc/apt/sources.list.d/vantorel.list").unlink()
        (self.system.root / "etc/apt/keyrings/vantorel.asc").unlink()

    def refuse_update(self, pattern):
        """That apt says so, and installs nothing from there."""
        update = self.system.run("apt-get", "update", "--error-on=any")
        self.assertNotEqual(update.returncode, 0, update.stdout)
        self.assertRegex(update.stdout + update.stderr, pattern)
        self.assertNotEqual(self.system.run("apt-get", "install", "-y", "vantorel").returncode, 0)
        self.assertEqual(self.system.version("vantorel"), "")

    def test_install_upgrade_and_purge(self):
        self.publish(self.old, key=self.key)
        self.serve()
        self.add_source()
        self.system.do("apt-get", "update", "--error-on=any")
        self.assertTrue([path for path in self.server.requests if "/by-hash/SHA256/" in path], self.server.requests)
        self.assertFalse([path for path in self.server.requests if path.endswith(("/Packages", ".gz", ".xz"))])
        self.system.do("apt-get", "install", "-y", "--no-install-recommends", "vantorel")
        self.assertEqual(self.system.version("vantorel"), "1.0.0")
        self.assertTrue(os.access(self.system.root / PROGRAM, os.X_OK))
        self.publish(self.new, key=self.key)
        self.system.do("apt-get", "update", "--error-on=any")
        self.system.do("apt-get", "upgrade", "-y")
        self.assertEqual(self.system.version("vantorel"), "1.1.0")
        self.system.do("apt-get", "purge", "-y", "vantorel")
        self.remove_source()
        self.assertEqual([path for path in self.system.changed() if "vantorel" in path.lower()], [])
        self.assertEqual(self.system.version("vantorel"), "")

    def test_every_version_stays_to_be_had(self):
        self.publish(self.old, key=self.key)
        self.publish(self.new, key=self.key)
        self.serve()
        self.add_source()
        self.system.do("apt-get", "update", "--error-on=any")
        self.system.do("apt-get", "install", "-y", "--no-install-recommends", "vantorel=1.0.0")
        self.assertEqual(self.system.version("vantorel"), "1.0.0")

    def test_only_its_key_will_do(self):
        self.publish(self.old, key=self.wrong_key)
        self.serve()
        self.add_source()
        shutil.copy(self.folder / "apt/vantorel.asc", self.made / "wrong.asc")
        self.publish(self.old, key=self.key)
        shutil.copy(self.made / "wrong.asc", self.system.root / "etc/apt/keyrings/vantorel.asc")
        self.refuse_update("NO_PUBKEY")

    def test_what_was_changed_on_the_server_is_refused(self):
        self.publish(self.old, key=self.key)
        self.serve()
        self.add_source()
        packages = self.index.read_bytes().replace(b"amd64.deb", b"amd64.DEB")
        for suffix, content in (("", packages), (".gz", gzip.compress(packages)), (".xz", lzma.compress(packages))):
            path = self.index.with_name(f"Packages{suffix}")
            (path.parent / "by-hash/SHA256" / hashlib.sha256(path.read_bytes()).hexdigest()).write_bytes(content)
            path.write_bytes(content)
        self.refuse_update("Hash Sum mismatch|has unexpected size")  # by how well the change is compressed

    def test_a_package_changed_on_the_server_is_refused(self):
        self.publish(self.old, key=self.key)
        self.serve()
        self.add_source()
        self.system.do("apt-get", "update", "--error-on=any")
        [package] = self.folder.glob("apt/pool/main/v/vantorel/*.deb")
        content = bytearray(package.read_bytes())
        content[len(content) // 2] ^= 1
        package.write_bytes(content)
        done = self.system.run("apt-get", "install", "-y", "--no-install-recommends", "vantorel")
        self.assertIn("Hash Sum mismatch", done.stderr)
        self.assertEqual(self.system.version("vantorel"), "")

    def test_without_a_key_it_has_to_be_trusted_by_hand(self):
        self.publish(self.old, key=self.key)
        (self.folder / "apt/vantorel.asc").unlink()
        self.publish(self.old)
        self.assertEqual([path.name for path in self.folder.glob("apt/dists/stable/*Release*")], ["Release"])
        self.serve()
        self.add_source("arch=" + self.architecture)
        self.refuse_update("is not signed")
        self.add_source("trusted=yes")
        self.system.do("apt-get", "update")
        self.system.do("apt-get", "install", "-y", "--no-install-recommends", "vantorel")
        self.assertEqual(self.system.version("vantorel"), "1.0.0")

    def test_what_an_old_release_names_stays(self):
        self.publish(self.old)
        named = {path: path.read_bytes() for path in self.folder.rglob("by-hash/SHA256/*")}
        self.assertEqual(len(named), 3)
        self.publish(self.new)
        self.assertEqual(len(list(self.folder.rglob("by-hash/SHA256/*"))), 6)
        for path, content in named.items():
            self.assertEqual(path.read_bytes(), content)

    def test_the_same_packages_give_the_same_bytes(self):
        for name in ("one", "other"):
            self.publish(self.old, self.new, folder=self.folder / name)
        self.assertEqual(run("diff", "--recursive", self.folder / "one", self.folder / "other"), "")

    def test_what_is_wrong_is_refused_and_changes_nothing(self):
        self.publish(self.old)
        before = {path: path.read_bytes() for path in self.folder.rglob("*") if path.is_file()}
        no_package = self.made / "no.deb"
        no_package.write_text("none")
        for words, package, key in (("is no package of vantorel", self.other, None),
                                    ("is there already, and another", self.changed, None),
                                    ("dpkg-deb failed", no_package, None),
                                    ("dpkg-deb failed", self.made / "missing.deb", None),
                                    ("gpg failed", self.old, "0123456789ABCDEF")):
            done = self.run_tool(package, key=key)
            self.assertEqual(done.returncode, 1)
            self.assertRegex(done.stderr, f"^make-apt: (.|\n)*{words}")
            self.assertEqual({path: path.read_bytes() for path in self.folder.rglob("*") if path.is_file()}, before)


if __name__ == "__main__":
    spare_system.run_apart()
    BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
