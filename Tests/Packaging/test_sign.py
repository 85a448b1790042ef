"""What Packaging/sign asks of a Mac's tools, by tools that write down how they are called."""

import os
import pathlib
import plistlib
import subprocess
import tempfile
import unittest

PACKAGING = pathlib.Path(__file__).resolve().parent.parent.parent / "Packaging"
ENTITLEMENTS = PACKAGING / "macOS/Vantorel.entitlements"


class Sign(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.bundle = self.folder / "Vantorel.app"
        self.bundle.mkdir()
        self.image = self.folder / "Vantorel-1.0.dmg"
        self.image.touch()
        self.tools = self.folder / "tools"
        self.tools.mkdir()
        for name in ("codesign", "ditto", "xcrun"):
            self.make_tool(name)

    def make_tool(self, name, status=0):
        tool = self.tools / name
        tool.write_text(f'#!/bin/sh\necho "{name} $*" >> "{self.folder}/calls"\nexit {status}\n')
        tool.chmod(0o755)

    def sign(self, *arguments, identity="", profile=""):
        """Its exit status, what it said, and which tools it called."""
        environment = {"PATH": f"{self.tools}:/usr/bin:/bin", "VANTOREL_SIGNING_IDENTITY": identity,
                       "VANTOREL_NOTARY_PROFILE": profile, "TMPDIR": str(self.folder)}
        run = subprocess.run([PACKAGING / "sign", *arguments], env=environment, capture_output=True, text=True)
        calls = self.folder / "calls"
        lines = calls.read_text().replace(str(self.folder), "F").splitlines() if calls.exists() else []
        calls.unlink(missing_ok=True)
        return run.returncode, run.stderr, lines

    def test_without_an_identity_it_signs_ad_hoc_under_the_hardened_runtime(self):
        self.assertEqual(self.sign(self.bundle)[::2], (0, [
            f"codesign --force --sign - --options runtime --entitlements {ENTITLEMENTS} F/Vantorel.app",
            "codesign --verify --strict --verbose=2 F/Vantorel.app"]))

    def test_with_an_identity_it_adds_a_time_stamp(self):
        self.assertEqual(self.sign(self.image, identity="Developer ID")[::2], (0, [
            "codesign --force --sign Developer ID --timestamp F/Vantorel-1.0.dmg",
            "codesign --verify --strict --verbose=2 F/Vantorel-1.0.dmg"]))

    def test_with_credentials_the_image_is_notarised(self):
        self.assertEqual(self.sign(self.image, identity="ID", profile="me")[2][2:], [
            "xcrun notarytool submit F/Vantorel-1.0.dmg --keychain-profile me --wait",
            "xcrun stapler staple F/Vantorel-1.0.dmg"])

    def test_a_bundle_is_sent_as_an_archive_that_is_not_left_behind(self):
        before = sorted(os.listdir(self.folder))
        _, _, calls = self.sign(self.bundle, identity="ID", profile="me")
        self.assertRegex(calls[2], r"^ditto -c -k --keepParent F/Vantorel.app F/tmp\.\w+/bundle.zip$")
        self.assertRegex(calls[3], r"^xcrun notarytool submit F/tmp\.\w+/bundle.zip --keychain-profile me --wait$")
        self.assertEqual(calls[4:], ["xcrun stapler staple F/Vantorel.app"])
        self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_a_tool_that_fails_ends_it(self):
        self.make_tool("codesign", status=3)
        status, _, calls = self.sign(self.image, identity="ID", profile="me")
        self.assertEqual((status, len(calls)), (3, 1))

    def test_bad_input_is_refused_before_anything_is_called(self):
        for words, arguments, options in (("there is no", [self.folder / "none.app"], {}),
                                          ("neither a bundle nor a disk image", [self.tools], {}),
                                          ("signed ad hoc", [self.image], {"profile": "me"}),
                                          ("usage:", [], {}), ("usage:", [self.image, self.bundle], {})):
            with self.subTest(words):
                status, said, calls = self.sign(*arguments, **options)
                self.assertNotEqual(status, 0)
                self.assertIn(words, said)
                self.assertEqual(calls, [])

    def test_it_says_where_it_works(self):
        (self.tools / "codesign").unlink()
        self.assertIn("this needs a Mac", self.sign(self.image)[1])

    def test_the_program_is_granted_nothing(self):
        self.assertEqual(plistlib.loads(ENTITLEMENTS.read_bytes()), {})


if __name__ == "__main__":
    unittest.main(verbosity=2)
