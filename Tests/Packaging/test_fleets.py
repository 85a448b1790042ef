"""The Linux commands of docs/fleets.md, run in their order and as they stand there, and what they lead to.
usage: test_fleets.py BUILD_DIRECTORY"""

import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest

import spare_system
from debian import make_key, run, with_fields

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = (ROOT / "docs/fleets.md").read_text("utf-8")
FORCED = "etc/xdg/com.korvex.vantorel.managed.plist"
DEFAULTS = "etc/xdg/com.korvex.vantorel.plist"
SOURCES = "/srv/vantorel"  # where the commands are run


def blocks(language):
    return [textwrap.dedent(indent + text) for indent, text in
            re.findall(rf"^( *)```{language}\n(.*?)^ *```$", PAGE, re.M | re.S)]


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.server_folder = cls.folder / "server"
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", cls.folder / "package")
        [built] = (cls.folder / "package").glob("*.deb")
        packages = [with_fields(built, cls.folder, Version=version) for version in ("1.0.0", "1.1.0")]
        home = cls.folder / "gpg"
        key = make_key(home, "maintainer")
        environment = os.environ | {"GNUPGHOME": str(home), "VANTOREL_APT_KEY": key}
        cls.addClassCleanup(subprocess.run, ["gpgconf", "--kill", "all"], env=environment, check=False)
        run(ROOT / "Packaging/make-apt", *packages, cls.server_folder, env=environment)
        bundle = cls.folder / "Vantorel.app"
        shutil.copytree(BUILD / "Vantorel.app", bundle)
        run(ROOT / "Packaging/make-update", bundle, cls.server_folder)
        certificate, public = spare_system.make_certificate(cls.folder)
        cls.server = cls.enterClassContext(spare_system.FileServer(cls.server_folder, certificate))
        cls.system = cls.enterClassContext(spare_system.SpareSystem(public))
        sources = cls.system.root / SOURCES[1:]
        for folder in ("Packaging", "cmake"):
            shutil.copytree(ROOT / folder, sources / folder, ignore=shutil.ignore_patterns("__pycache__"))

    def follow(self, *words):
        """Runs the one block that has each of the words."""
        [block] = [block for block in blocks("sh") if all(word in block for word in words)]
        self.left.remove(block)
        done = self.system.run("sh", "-euc", f"cd {SOURCES}; {block}")
        self.assertEqual(done.returncode, 0, f"{block}\n{done.stdout}{done.stderr}")
        return done.stdout

    def plist(self, name):
        return plistlib.loads((self.system.root / name).read_bytes())

    def version(self):
        return self.system.version("vantorel")

    def test_every_command_does_what_the_page_says(self):
        self.left = blocks("sh")
        self.follow("Packaging/profile managed")
        decided = {"appLanguage": "en", "launchAtLogin": True, "autoUpdate": False}

        self.assertIn("maintainer@localhost", self.follow("apt-get install -y vantorel\n"))
        self.assertEqual(self.version(), "1.1.0")
        self.follow("install", "/etc/xdg/com.korvex.vantorel.managed.plist", "managed/")
        self.assertEqual(self.plist(FORCED), decided)
        self.follow("Packaging/profile defaults")
        self.assertEqual(self.plist(DEFAULTS),
                         {"scheduleEnabled": True, "scheduleOnMinutes": 480, "scheduleOffMinutes": 1080})

        self.follow("Pin: version 1.0.0")
        self.assertEqual(self.version(), "1.0.0")
        self.follow("rm /etc/apt/preferences.d/vantorel")
        self.assertEqual(self.version(), "1.1.0")

        self.follow("/srv/mirror")
        self.assertEqual(run("diff", "--recursive", self.server_folder / "updates",
                             self.system.root / "srv/mirror/updates"), "")

        remove = ["apt-get purge"]
        self.follow_playbook(decided)
        self.follow(*remove)
        self.assertEqual(self.version(), "")
        self.assertEqual([path for path in self.system.changed() if "vantorel" in path.lower()
                          and not path.startswith(("srv/", "root/"))], [])
        self.assertEqual(self.left, [], "commands that were not run")

    def follow_playbook(self, decided):
        """On a machine that has nothing of it."""
        self.system.do("apt-get", "purge", "-y", "vantorel")
        for name in (FORCED, "etc/apt/sources.list.d/vantorel.list", "etc/apt/keyrings/vantorel.asc"):
            (self.system.root / name).unlink()
        [playbook] = blocks("yaml")
        (self.system.root / SOURCES[1:] / "vantorel.yml").write_text(playbook)
        said = self.follow("ansible-playbook")
        self.assertRegex(said, r"changed=4 .* failed=0 ")
        self.assertEqual((self.version(), self.plist(FORCED)), ("1.1.0", decided))
        again = self.system.do("sh", "-c", f"cd {SOURCES}; ansible-playbook --connection local --inventory localhost, "
                                           "vantorel.yml")
        self.assertRegex(again, r"changed=0 .* failed=0 ")


class Marks(unittest.TestCase):
    def test_what_was_not_run_says_so(self):
        """Blocks are of Linux, which are run, or follow a sentence that says that they were not."""
        for before, language in re.findall(r"^([^\n]+)\n\n```(\w+)$", PAGE, re.M):
            if language not in ("sh", "yaml"):
                self.assertIn("(not run here)", before)
        self.assertNotRegex(PAGE, r"```\n\n```\n")

    def test_the_keys_are_the_schemas(self):
        schema = (ROOT / "Packaging/preferences.schema.json").read_text("utf-8")
        table = PAGE.partition("## What you can decide")[2].partition("What you decide")[0]
        self.assertEqual(set(re.findall(r"`(\w+)`(?=,| \|)", re.sub(r"\|[^|]*\|[^|]*\|$", "|", table, flags=re.M))),
                         set(re.findall(r'^    "(\w+)": \{', schema, re.M)))


if __name__ == "__main__":
    spare_system.run_apart()
    BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
