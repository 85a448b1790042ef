"""The disk image and the update server's folder, made from bundles of every kind."""

import hashlib
import json
import os
import pathlib
import plistlib
import random
import shutil
import stat
import subprocess
import tempfile
import unittest
import unittest.mock

import disk_image
import hfsplus

PACKAGING = pathlib.Path(__file__).resolve().parent.parent.parent / "Packaging"
NAMES = ("a", "z", "Ação", "with space", ".hidden", "lower", "UPPER", "x" * 100)


def make_bundle(folder, version="1.2.3", identifier="com.korvex.vantorel", name="Vantorel"):
    bundle = folder / f"{name}.app"
    (bundle / "Contents/MacOS").mkdir(parents=True)
    (bundle / "Contents/Resources").mkdir()
    info = {"CFBundleIdentifier": identifier, "CFBundleExecutable": "Vantorel"}
    if version is not None:
        info["CFBundleShortVersionString"] = version
    (bundle / "Contents/Info.plist").write_bytes(plistlib.dumps(info))
    program = bundle / "Contents/MacOS/Vantorel"
    program.write_bytes(random.Random(1).randbytes(300_001))
    program.chmod(0o755)
    for name in NAMES:
        (bundle / "Contents/Resources" / name).write_text(name * 500)
    (bundle / "Contents/Resources/a").chmod(0o640)
    (bundle / "Contents/Resources/z").chmod(0o710)
    (bundle / "Contents/link").symlink_to("MacOS/Vantorel")
    (bundle / "Contents/broken").symlink_to("nowhere")
    return bundle


def copy_in_other_order(bundle, folder, seed):
    """The same bundle, its files made in another order, and under other dates."""
    copy = folder / bundle.name
    files = []
    for path in sorted(bundle.rglob("*")):
        if path.is_dir():
            (copy / path.relative_to(bundle)).mkdir(parents=True)
        else:
            files.append(path)
    random.Random(seed).shuffle(files)
    for path in files:
        shutil.copy(path, copy / path.relative_to(bundle), follow_symlinks=False)
        os.utime(copy / path.relative_to(bundle), (seed, seed), follow_symlinks=False)
    return copy


class Images(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def run_tool(self, name, *arguments, epoch=None):
        environment = {**os.environ, "PYTHONDONTWRITEBYTECODE": "1"}
        environment.pop("SOURCE_DATE_EPOCH", None)
        if epoch is not None:
            environment["SOURCE_DATE_EPOCH"] = str(epoch)
        return subprocess.run([PACKAGING / name, *arguments], capture_output=True, text=True, env=environment)

    def make(self, name, *arguments, epoch=None):
        run = self.run_tool(name, *arguments, epoch=epoch)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout

    def refuse(self, words, name, *arguments, epoch=None):
        before = sorted(path for path in self.folder.rglob("*") if path.is_file())
        run = self.run_tool(name, *arguments, epoch=epoch)
        self.assertEqual(run.returncode, 1)
        self.assertIn(words, run.stderr)
        self.assertEqual(sorted(path for path in self.folder.rglob("*") if path.is_file()), before)


class DiskImage(Images):
    def extracted(self, image):
        target = self.folder / "extracted"
        subprocess.run(["xorriso", "-no_rc", "-osirrox", "on", "-indev", image, "-extract", "/", target], check=True,
                       capture_output=True)
        return target

    def test_linux_reads_the_same_bundle_from_it(self):
        bundle = make_bundle(self.folder)
        self.make("make-dmg", bundle, self.folder / "image.dmg")
        volume = self.extracted(self.folder / "image.dmg")
        self.assertEqual(sorted(os.listdir(volume)), ["Applications", "Vantorel.app"])
        self.assertEqual(os.readlink(volume / "Applications"), "/Applications")
        self.compare(bundle, lambda path: self.entry_of(volume / "Vantorel.app" / path))

    def test_a_mac_reads_the_same_bundle_from_it(self):
        bundle = make_bundle(self.folder)
        self.make("make-dmg", bundle, self.folder / "image.dmg", epoch=1_700_000_000)
        volume = hfsplus.Volume((self.folder / "image.dmg").read_bytes())
        self.assertEqual(volume.name, "Vantorel")
        self.assertEqual({path for path in volume.entries if "/" not in path}, {"Applications", "Vantorel.app"})
        self.assertEqual(volume.entries["Applications"].content, b"/Applications")
        self.compare(bundle, lambda path: volume.entries[f"Vantorel.app/{path}"])
        self.assertEqual(len(volume.entries), len(list(bundle.rglob("*"))) + 2)

    def test_no_file_has_a_type_that_a_mac_would_keep_as_an_attribute(self):
        self.make("make-dmg", make_bundle(self.folder), self.folder / "image.dmg")
        entries = hfsplus.Volume((self.folder / "image.dmg").read_bytes()).entries
        self.assertGreater(len(entries), 10)
        for path, entry in entries.items():
            with self.subTest(path):
                link = b"slnkrhap" if stat.S_ISLNK(entry.mode) else b""
                self.assertEqual(entry.finder_info, link.ljust(32, b"\0"))

    @staticmethod
    def entry_of(path):
        mode = path.lstat().st_mode
        if path.is_symlink():
            return hfsplus.Entry(mode, os.readlink(path).encode())
        return hfsplus.Entry(mode, None if path.is_dir() else path.read_bytes())

    def compare(self, bundle, find):
        for path in sorted(bundle.rglob("*")):
            with self.subTest(path):
                expected, actual = self.entry_of(path), find(path.relative_to(bundle))
                self.assertEqual(actual.content, expected.content)
                self.assertEqual(stat.S_IFMT(actual.mode), stat.S_IFMT(expected.mode))
                if not path.is_symlink():
                    usual = 0o755 if path.is_dir() or path.name in ("Vantorel", "z") else 0o644
                    self.assertEqual(oct(stat.S_IMODE(actual.mode)), oct(usual))

    def test_the_same_bundle_gives_the_same_bytes(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(dir="/dev/shm")))  # lists by age, not name
        bundle = make_bundle(folder)
        images = []
        for seed in range(3):
            copy = copy_in_other_order(bundle, folder / str(seed), seed)
            self.make("make-dmg", copy, folder / f"{seed}.dmg", epoch=1_700_000_000)
            images.append(hashlib.sha256((folder / f"{seed}.dmg").read_bytes()).hexdigest())
        self.assertEqual(len(set(images)), 1)

    def test_without_a_date_that_of_the_newest_file_is_taken(self):
        bundle = make_bundle(self.folder)
        for path in [bundle, *bundle.rglob("*")]:
            os.utime(path, (1_600_000_000, 1_600_000_000), follow_symlinks=False)
        self.make("make-dmg", bundle, self.folder / "without.dmg")
        self.make("make-dmg", bundle, self.folder / "with.dmg", epoch=1_600_000_000)
        self.assertEqual((self.folder / "without.dmg").read_bytes(), (self.folder / "with.dmg").read_bytes())
        os.utime(bundle / "Contents/Resources/a", (1_650_000_000, 1_650_000_000))
        self.make("make-dmg", bundle, self.folder / "newer.dmg")
        self.assertNotEqual((self.folder / "without.dmg").read_bytes(), (self.folder / "newer.dmg").read_bytes())

    def test_bad_input_is_refused_and_leaves_nothing(self):
        image = self.folder / "image.dmg"
        self.refuse("is no application bundle", "make-dmg", self.folder / "none.app", image)
        self.refuse("is no application bundle", "make-dmg", self.folder, image)
        bundle = make_bundle(self.folder)
        self.refuse("there is no folder", "make-dmg", bundle, self.folder / "missing/image.dmg")
        self.refuse("which is not a number", "make-dmg", bundle, image, epoch="today")
        image.write_text("mine")
        self.refuse("is there already", "make-dmg", bundle, image)
        self.assertEqual(image.read_text(), "mine")
        for number, (words, damage) in enumerate({
            "has no CFBundleShortVersionString": lambda b: self.change(b, "CFBundleShortVersionString", None),
            "which is not numbers and dots": lambda b: self.change(b, "CFBundleShortVersionString", "1/../2"),
            "has no CFBundleIdentifier": lambda b: self.change(b, "CFBundleIdentifier", 7),
            "has no readable Info.plist": lambda b: (b / "Contents/Info.plist").write_text("{"),
            "has no program at": lambda b: (b / "Contents/MacOS/Vantorel").chmod(0o644),
        }.items()):
            with self.subTest(words):
                bundle = make_bundle(self.folder / str(number))
                damage(bundle)
                self.refuse(words, "make-dmg", bundle, self.folder / "other.dmg")

    @staticmethod
    def change(bundle, key, value):
        path = bundle / "Contents/Info.plist"
        info = plistlib.loads(path.read_bytes())
        info.pop(key)
        if value is not None:
            info[key] = value
        path.write_bytes(plistlib.dumps(info))


HDIUTIL = """#!/bin/sh
echo "hdiutil $*" >> "{folder}/calls"
for output; do :; done
[ -e "$output" ] && {{ echo "hdiutil: create failed - File exists" >&2; exit 1; }}
printf image > "$output"
[ $(grep -c hdiutil "{folder}/calls") -gt {failures} ] && exit
echo "hdiutil: create failed - Resource busy" >&2
exit 1
"""
CODESIGN = """#!/bin/sh
echo "codesign $*" >> "{folder}/calls"
for image; do :; done
printf ' signed' >> "$image"
"""


class DiskImageOnAMac(Images):
    """By stand-ins for a Mac's tools."""

    def write(self, failures, **variables):
        """The image, which tools were called, and the pauses made."""
        tools = self.folder / "tools"
        tools.mkdir()
        for name, text in (("hdiutil", HDIUTIL), ("codesign", CODESIGN)):
            (tools / name).write_text(text.format(folder=self.folder, failures=failures))
            (tools / name).chmod(0o755)
        image = self.folder / "Vantorel-1.2.3.dmg"
        environment = {"PATH": f"{tools}:/usr/bin:/bin", **variables}
        with unittest.mock.patch.dict(os.environ, environment), \
                unittest.mock.patch.object(disk_image.sys, "platform", "darwin"), \
                unittest.mock.patch.object(disk_image.time, "sleep") as sleep:
            try:
                disk_image.write(disk_image.Bundle(make_bundle(self.folder)), image)
            finally:
                self.calls = [line.split()[0] for line in (self.folder / "calls").read_text().splitlines()]
                self.pauses = len(sleep.mock_calls)
                self.left = sorted(os.listdir(self.folder))
        return image.read_bytes()

    def test_a_busy_hdiutil_is_asked_three_times(self):
        self.assertEqual(self.write(failures=2), b"image")
        self.assertEqual((self.calls, self.pauses), (["hdiutil"] * 3, 2))

    def test_then_it_is_given_up_and_nothing_is_left(self):
        with self.assertRaisesRegex(disk_image.Refusal, "failed 3 times, at last with:\nhdiutil: .*Resource busy"):
            self.write(failures=3)
        self.assertEqual((self.calls, self.pauses), (["hdiutil"] * 3, 2))
        self.assertEqual(self.left, ["Vantorel.app", "calls", "tools"])

    def test_with_an_identity_the_image_is_signed_before_anyone_sees_it(self):
        self.assertEqual(self.write(0, VANTOREL_SIGNING_IDENTITY="Developer ID (AB12CD34EF)"), b"image signed signed")
        self.assertEqual(self.calls, ["hdiutil", "codesign", "codesign"])  # the second verifies
        self.assertIn("/Vantorel-1.2.3.dmg", (self.folder / "calls").read_text())

    def test_without_an_identity_the_image_is_left_unsigned(self):
        self.assertEqual(self.write(0), b"image")
        self.assertEqual(self.calls, ["hdiutil"])


class UpdateFolder(Images):
    def setUp(self):
        super().setUp()
        self.server = self.folder / "server"

    def latest(self):
        manifest = json.loads((self.server / "updates/vantorel.json").read_text("utf-8"))
        self.assertEqual(list(manifest), ["latest"])
        return manifest["latest"]

    def test_the_manifest_describes_the_image_beside_it(self):
        self.make("make-update", make_bundle(self.folder), self.server)
        image = self.server / "updates/Vantorel-1.2.3.dmg"
        digest = hashlib.sha256(image.read_bytes()).hexdigest()
        self.assertEqual(self.latest(), {"version": "1.2.3", "file": "updates/Vantorel-1.2.3.dmg", "sha256": digest,
                                         "size": image.stat().st_size})
        subprocess.run(["sha256sum", "--check", "--strict", "--quiet", f"{image.name}.sha256"], cwd=image.parent,
                       check=True)
        self.assertEqual(sorted(os.listdir(self.server / "updates")),
                         ["Vantorel-1.2.3.dmg", "Vantorel-1.2.3.dmg.sha256", "vantorel.json"])

    def test_the_image_is_the_one_that_people_install_from(self):
        bundle = make_bundle(self.folder)
        self.make("make-update", bundle, self.server)
        self.make("make-dmg", bundle, self.folder / "image.dmg")
        self.assertEqual((self.folder / "image.dmg").read_bytes(),
                         (self.server / "updates/Vantorel-1.2.3.dmg").read_bytes())

    def test_notes_come_from_a_file_or_a_folder(self):
        (self.folder / "notes").mkdir()
        (self.folder / "notes/en.txt").write_text("Quieter.\n")
        (self.folder / "notes/pt-BR.md").write_text("Mais silencioso: ação.\n", encoding="utf-8")
        (self.folder / "notes/en.txt~").write_text("draft")
        self.make("make-update", make_bundle(self.folder), self.server, "--notes", self.folder / "notes")
        self.assertEqual(self.latest()["notes"], {"en": "Quieter.", "pt-BR": "Mais silencioso: ação."})
        self.make("make-update", make_bundle(self.folder / "2", "1.3"), self.server, "--notes",
                  self.folder / "notes/en.txt")
        self.assertEqual(self.latest()["notes"], {"en": "Quieter."})

    def test_a_later_release_replaces_the_manifest_and_keeps_the_images(self):
        self.make("make-update", make_bundle(self.folder), self.server)
        first = (self.server / "updates/Vantorel-1.2.3.dmg").read_bytes()
        self.make("make-update", make_bundle(self.folder / "2", "1.10"), self.server)
        self.assertEqual(self.latest()["version"], "1.10")
        self.assertEqual((self.server / "updates/Vantorel-1.2.3.dmg").read_bytes(), first)

    def test_bad_input_is_refused_and_leaves_nothing(self):
        bundle = make_bundle(self.folder)
        self.refuse("the notes cannot be read", "make-update", bundle, self.server, "--notes", self.folder / "none")
        self.refuse("has no notes", "make-update", bundle, self.server, "--notes", bundle)
        for number, other in enumerate(({"identifier": "com.example.other"}, {"name": "Other"})):
            with self.subTest(other):
                stranger = make_bundle(self.folder / str(number), **other)
                self.refuse("which no copy would take", "make-update", stranger, self.server)
        self.make("make-update", bundle, self.server)
        self.refuse("is there already", "make-update", bundle, self.server)


class Help(Images):
    def test_every_tool_says_how_it_is_used(self):
        for name in ("make-dmg", "make-update"):
            with self.subTest(name):
                self.assertIn("usage:", self.make(name, "--help"))
                self.assertEqual(self.run_tool(name).returncode, 2)


if __name__ == "__main__":
    unittest.main(verbosity=2)
