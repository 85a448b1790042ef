"""The seal that Packaging/sign puts on an application where there is no codesign, read back by a reader of its own."""

import functools
import os
import pathlib
import plistlib
import shutil
import struct
import subprocess
import tempfile
import unittest

import seal

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
IDENTIFIER = "com.korvex.vantorel"
SOURCE = "static const char text[9000] = \"x\"; int main(int argc, char **argv) { (void)argv; return text[argc]; }\n"
PROGRAM, INFO, RESOURCES = (f"Contents/{name}" for name in ("MacOS/Vantorel", "Info.plist", "_CodeSignature/CodeResources"))


@functools.cache
def linked_program():
    """For both processors, as the cross-build's linker leaves it."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "main.c").write_text(SOURCE)
        for arch in ("arm64", "x86_64"):
            subprocess.run(["clang-19", "-target", f"{arch}-apple-macos13.0", "-O1", "-c", "main.c", "-o", f"{arch}.o"],
                           cwd=folder, check=True)
            subprocess.run(["ld64.lld-19", "-arch", arch, "-platform_version", "macos", "13.0", "15.1",
                            "-adhoc_codesign", "-o", arch, f"{arch}.o"], cwd=folder, check=True)
        subprocess.run(["llvm-lipo-19", "-create", "arm64", "x86_64", "-output", "both"], cwd=folder, check=True)
        return (folder / "both").read_bytes()


def make_bundle(folder):
    bundle = folder / "Vantorel.app"
    for name in ("MacOS", "Resources/en.lproj", "Resources/empty"):
        (bundle / "Contents" / name).mkdir(parents=True)
    (bundle / INFO).write_bytes(plistlib.dumps({
        "CFBundleIdentifier": IDENTIFIER, "CFBundleExecutable": "Vantorel", "CFBundleShortVersionString": "1.0"}))
    (bundle / PROGRAM).write_bytes(linked_program())
    (bundle / PROGRAM).chmod(0o755)
    (bundle / "Contents/Resources/Vantorel.icns").write_bytes(bytes(range(256)) * 20)
    (bundle / "Contents/Resources/Ação & <co>.txt").write_text("text")
    (bundle / "Contents/Resources/en.lproj/Main.strings").write_text('"a" = "b";')
    (bundle / "Contents/Resources/link").symlink_to("Vantorel.icns")
    return bundle


class Seal(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.bundle = make_bundle(self.folder)

    def sign(self, bundle=None):
        return subprocess.run([ROOT / "Packaging/sign", bundle or self.bundle], capture_output=True, text=True,
                              env={"PATH": "/usr/bin:/bin"})

    def sealed(self):
        run = self.sign()
        self.assertEqual(run.returncode, 0, run.stderr)
        return self.bundle

    def content(self, bundle=None):
        return {path.relative_to(bundle or self.bundle): path.is_symlink() or path.read_bytes()
                for path in (bundle or self.bundle).rglob("*") if path.is_symlink() or path.is_file()}

    def faults(self):
        return seal.faults(self.bundle, IDENTIFIER)


class Whole(Seal):
    def test_a_sealed_application_has_no_fault(self):
        self.sealed()
        self.assertEqual(self.faults(), [])

    def test_the_linkers_signature_is_no_seal(self):
        self.assertEqual(self.faults(), ["it is not sealed: it has no CodeResources"])
        (self.bundle / RESOURCES).parent.mkdir()
        (self.bundle / RESOURCES).write_bytes(plistlib.dumps({}))
        self.assertIn("arm64: unreadable: the blob of slot 0x0 is not behind the one before", self.faults())

    def test_only_the_signature_and_what_it_needs_is_changed(self):
        before = self.content()
        after = self.content(self.sealed())
        self.assertEqual({path for path in after if before.get(path) != after[path]},
                         {pathlib.Path(PROGRAM), pathlib.Path(RESOURCES)})
        self.assertEqual((self.bundle / PROGRAM).stat().st_mode & 0o777, 0o755)
        old = dict(seal.slices_of(linked_program()))
        for name, part in seal.slices_of((self.bundle / PROGRAM).read_bytes()):
            changed = {at // 8 * 8 for at in range(seal.Commands(part).signature[0]) if part[at] != old[name][at]}
            self.assertLessEqual(len(changed), 3, "the signature's size, and the last segment's two")

    def test_another_reader_sees_the_same(self):
        """LLVM's reader of load commands, which did not write them."""
        self.sealed()
        run = subprocess.run(["llvm-objdump-19", "--macho", "--private-headers", "--universal-headers", "--arch=all",
                              self.bundle / PROGRAM], capture_output=True, text=True)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertEqual(run.stdout.count("cmd LC_CODE_SIGNATURE"), 2)
        thin = self.folder / "thin"
        for arch in ("arm64", "x86_64"):
            subprocess.run(["llvm-lipo-19", self.bundle / PROGRAM, "-thin", arch, "-output", thin], check=True)
            self.assertEqual(thin.read_bytes(), dict(seal.slices_of((self.bundle / PROGRAM).read_bytes()))[arch])

    def test_the_same_application_gives_the_same_bytes(self):
        other = make_bundle(self.folder / "elsewhere")
        for path in other.rglob("*"):
            os.utime(path, (7, 7), follow_symlinks=False)
        self.assertEqual(self.sign(other).returncode, 0)
        self.assertEqual(self.content(other), self.content(self.sealed()))

    def test_sealing_again_changes_nothing_unless_a_file_did(self):
        first = self.content(self.sealed())
        self.assertEqual(self.content(self.sealed()), first)
        (self.bundle / INFO).write_bytes((self.bundle / INFO).read_bytes().replace(b"1.0<", b"1.1<"))
        (self.bundle / "Contents/_CodeSignature/stale").touch()
        self.assertNotEqual(self.faults(), [])
        self.sealed()
        self.assertEqual(self.faults(), [])


class Broken(Seal):
    """Each kind of change to a sealed application is found."""

    def setUp(self):
        super().setUp()
        self.sealed()
        self.data = (self.bundle / PROGRAM).read_bytes()
        self.info, self.resources = ((self.bundle / name).read_bytes() for name in (INFO, RESOURCES))

    def assert_found(self, positions):
        for at in positions:
            data = bytearray(self.data)
            data[at] ^= 0x10
            self.assertNotEqual(seal.program_faults(bytes(data), IDENTIFIER, self.info, self.resources), [], at)

    def slices(self):
        """Where each slice starts, its signature, and its end."""
        for number in range(2):
            start, size = struct.unpack_from(">II", self.data, 16 + 20 * number)
            part = self.data[start:start + size]
            yield start, start + seal.Commands(part).signature[0], start + size

    def test_every_byte_of_the_signatures(self):
        self.assertEqual(seal.program_faults(self.data, IDENTIFIER, self.info, self.resources), [])
        for _, signature, end in self.slices():
            self.assert_found(range(signature, end))

    def test_every_page_of_the_code(self):
        for start, signature, _ in self.slices():
            self.assert_found(range(start, signature, 509))
            self.assert_found([signature - 1])

    def test_the_universal_header_and_the_gaps_between_slices(self):
        first = next(self.slices())[0]
        self.assert_found(range(48))
        self.assert_found(range(48, first, 509))
        (_, _, end), (start, _, _) = self.slices()
        self.assert_found(range(end, start, 509))
        self.assertNotEqual(seal.program_faults(self.data + b"\0", IDENTIFIER, self.info, self.resources), [])
        self.assertNotEqual(seal.program_faults(self.data[:-1], IDENTIFIER, self.info, self.resources), [])

    def test_every_byte_of_the_lists(self):
        for at in range(0, len(self.info), 7):
            info = self.info[:at] + b"~" + self.info[at + 1:]
            self.assertNotEqual(seal.program_faults(self.data, IDENTIFIER, info, self.resources), [], at)
        for at in range(0, len(self.resources), 97):
            resources = self.resources[:at] + b"~" + self.resources[at + 1:]
            self.assertNotEqual(seal.program_faults(self.data, IDENTIFIER, self.info, resources), [], at)

    def test_another_identifier(self):
        self.assertIn("arm64: the identifier is not the bundle's",
                      seal.program_faults(self.data, "com.korvex.vantores", self.info, self.resources))

    def test_files_changed_added_removed_or_pointing_elsewhere(self):
        def resource(name):
            return self.bundle / "Contents/Resources" / name

        def change(name):
            path = resource(name)
            data = path.read_bytes()
            path.write_bytes(data[:-1] + bytes([data[-1] ^ 1]))

        def point_elsewhere():
            resource("link").unlink()
            resource("link").symlink_to("en.lproj")

        for what, damage, fault in (
                ("changed", lambda: change("Vantorel.icns"), "Resources/Vantorel.icns: not what was sealed"),
                ("one of a language", lambda: change("en.lproj/Main.strings"),
                 "Resources/en.lproj/Main.strings: not what was sealed"),
                ("added", lambda: resource("empty/new").touch(), "Resources/empty/new: not what was sealed"),
                ("added at the top", lambda: (self.bundle / "Contents/new").touch(), "new: not what was sealed"),
                ("added beside the program", lambda: (self.bundle / "Contents/MacOS/new").touch(),
                 "MacOS/new: not what was sealed"),
                ("removed", lambda: resource("Vantorel.icns").unlink(), "Resources/Vantorel.icns: missing"),
                ("a link", point_elsewhere, "Resources/link: not what was sealed")):
            with self.subTest(what):
                self.bundle = make_bundle(self.folder / what)
                self.sealed()
                self.assertEqual(self.faults(), [])
                damage()
                self.assertEqual(self.faults(), [fault])


class Refused(Seal):
    """What cannot be signed stays as it was."""

    def assert_refused(self, words):
        before = self.content()
        run = self.sign()
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertIn(words, run.stderr)
        self.assertEqual(self.content(), before)

    def test_programs_that_are_none(self):
        whole = linked_program()
        arm64 = struct.unpack_from(">I", whole, 16)[0]
        for words, data in (("ends too early", b""), ("ends too early", whole[:20]),
                            ("no universal Mach-O file", whole[arm64:]), ("beyond its end", whole[:-1]),
                            ("no 64-bit program", whole[:arm64] + bytes(len(whole) - arm64)),
                            ("no load command '__LINKEDIT'", whole.replace(b"__LINKEDIT", b"__LINKEDIX")),
                            ("no load command 29", self.without_signature(whole, arm64)),
                            ("does not end with its signature", self.with_signature_elsewhere(whole))):
            with self.subTest(words):
                (self.bundle / PROGRAM).write_bytes(data)
                self.assert_refused(words)

    @staticmethod
    def without_signature(data, start):
        at = data.index(struct.pack("<II", 0x1D, 16), start)
        return data[:at] + struct.pack("<I", 0x26) + data[at + 4:]  # as if it listed function starts

    @staticmethod
    def with_signature_elsewhere(data):
        at = data.index(struct.pack("<II", 0x1D, 16)) + 8
        return data[:at] + struct.pack("<I", 0x1000) + data[at + 4:]

    def test_code_that_would_need_a_signature_of_its_own(self):
        shutil.copy(self.bundle / PROGRAM, self.bundle / "Contents/MacOS/Helper")
        self.assert_refused("MacOS/Helper would be code of its own")

    def test_bundles_that_are_none(self):
        (self.bundle / INFO).write_text("{")
        self.assert_refused("no readable Info.plist")
        (self.bundle / INFO).write_bytes(plistlib.dumps({"CFBundleShortVersionString": "1", "CFBundleIdentifier": 7}))
        self.assert_refused("no CFBundleIdentifier")


if __name__ == "__main__":
    unittest.main(verbosity=2)
