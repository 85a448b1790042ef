"""What Packaging/sign asks of the tools that sign, by stand-ins that write down how they are called."""

import os
import pathlib
import plistlib
import subprocess
import tempfile
import unittest

PACKAGING = pathlib.Path(__file__).resolve().parent.parent.parent / "Packaging"
IDENTITY = "Developer ID Application: Someone (AB12CD34EF)"
INFO = {"CFBundleShortVersionString": "1.0", "CFBundleExecutable": "Vantorel", "CFBundleIdentifier": "com.korvex.vantorel"}


class Sign(unittest.TestCase):
    tools_there = ()

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.bundle = self.folder / "Vantorel.app"
        (self.bundle / "Contents/MacOS").mkdir(parents=True)
        (self.bundle / "Contents/MacOS/Vantorel").touch(mode=0o755)
        self.info = self.bundle / "Contents/Info.plist"
        self.info.write_bytes(plistlib.dumps(INFO))
        self.image = self.folder / "Vantorel-1.0.dmg"
        self.image.touch()
        self.tools = self.folder / "tools"
        self.tools.mkdir()
        for name in self.tools_there:
            self.make_tool(name)

    def make_tool(self, name, status=0):
        tool = self.tools / name
        tool.write_text(f'#!/bin/sh\necho "{name} $*" >> "{self.folder}/calls"\nexit {status}\n')
        tool.chmod(0o755)

    def sign(self, *arguments, **variables):
        """Its exit status, what it said, and which tools it called."""
        environment = {"PATH": f"{self.tools}:/usr/bin:/bin", "TMPDIR": str(self.folder),
                       **{f"VANTOREL_{name}": value for name, value in variables.items()}}
        run = subprocess.run([PACKAGING / "sign", *arguments], env=environment, capture_output=True, text=True)
        calls = self.folder / "calls"
        lines = calls.read_text().replace(str(self.folder), "F").splitlines() if calls.exists() else []
        calls.unlink(missing_ok=True)
        return run.returncode, run.stderr, lines

    def assert_refused(self, words, *arguments, **variables):
        before = self.info.read_bytes()
        status, said, calls = self.sign(*arguments, **variables)
        self.assertNotEqual(status, 0)
        self.assertIn(words, said)
        self.assertEqual((calls, self.info.read_bytes()), ([], before))


class WithCodesign(Sign):
    tools_there = ("codesign", "ditto", "xcrun", "rcodesign")

    def test_without_an_identity_it_signs_ad_hoc_under_the_hardened_runtime(self):
        self.assertEqual(self.sign(self.bundle)[::2], (0, [
            "codesign --force --sign - --options runtime F/Vantorel.app",
            "codesign --verify --strict --verbose=2 F/Vantorel.app"]))

    def test_with_an_identity_it_adds_a_time_stamp(self):
        self.assertEqual(self.sign(self.image, SIGNING_IDENTITY=IDENTITY)[::2], (0, [
            f"codesign --force --sign {IDENTITY} --timestamp F/Vantorel-1.0.dmg",
            "codesign --verify --strict --verbose=2 F/Vantorel-1.0.dmg"]))

    def test_with_credentials_the_image_is_notarised(self):
        self.assertEqual(self.sign(self.image, SIGNING_IDENTITY=IDENTITY, NOTARY_PROFILE="me")[2][2:], [
            "xcrun notarytool submit F/Vantorel-1.0.dmg --keychain-profile me --wait --timeout 30m",
            "xcrun stapler staple F/Vantorel-1.0.dmg"])

    def test_a_bundle_is_sent_as_an_archive_that_is_not_left_behind(self):
        before = sorted(os.listdir(self.folder))
        _, _, calls = self.sign(self.bundle, SIGNING_IDENTITY=IDENTITY, NOTARY_PROFILE="me")
        self.assertRegex(calls[2], r"^ditto -c -k --keepParent F/Vantorel.app F/tmp\w+/application.zip$")
        self.assertRegex(calls[3], r"^xcrun notarytool submit F/tmp\w+/application.zip --keychain-profile me --wait")
        self.assertEqual(calls[4:], ["xcrun stapler staple F/Vantorel.app"])
        self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_a_tool_that_fails_ends_it(self):
        self.make_tool("codesign", status=3)
        status, said, calls = self.sign(self.image, SIGNING_IDENTITY=IDENTITY, NOTARY_PROFILE="me")
        self.assertEqual((status, len(calls)), (1, 1))
        self.assertIn("codesign failed", said)

    def test_what_is_signed_with_a_team_may_be_replaced_by_its_own_later_versions_only(self):
        self.sign(self.bundle, SIGNING_IDENTITY=IDENTITY)
        self.assertEqual(plistlib.loads(self.info.read_bytes()), INFO | {
            "NSUpdateSecurityPolicy": {"AllowProcesses": {"AB12CD34EF": ["com.korvex.vantorel"]}}})
        self.sign(self.bundle)
        self.assertEqual(plistlib.loads(self.info.read_bytes()), INFO)

    def test_ad_hoc_nothing_of_the_bundle_is_rewritten(self):
        self.info.write_bytes(self.info.read_bytes() + b"<!-- as the build made it -->\n")
        before = self.info.read_bytes()
        self.sign(self.bundle)
        self.assertEqual(self.info.read_bytes(), before)

    def test_bad_input_is_refused_before_anything_is_called(self):
        self.assert_refused("is no application", self.folder / "none.app")
        self.assert_refused("neither an application nor a disk image", self.folder / "none.dmg")
        self.assert_refused("neither an application nor a disk image", self.tools)
        self.assert_refused("signed ad hoc", self.image, NOTARY_PROFILE="me")
        self.assert_refused("does not end with its team", self.bundle, SIGNING_IDENTITY="Developer ID")
        self.assert_refused("usage:")
        self.assert_refused("usage:", self.image, self.bundle)


class WithRcodesign(Sign):
    tools_there = ("rcodesign",)

    def test_without_an_identity_it_signs_ad_hoc_under_the_hardened_runtime(self):
        self.assertEqual(self.sign(self.bundle)[::2], (0, [
            "rcodesign sign --code-signature-flags runtime F/Vantorel.app"]))

    def test_with_a_developer_id_and_credentials_the_application_is_notarised(self):
        self.assertEqual(self.sign(self.bundle, SIGNING_IDENTITY=IDENTITY, SIGNING_CERTIFICATE="c.p12",
                                   SIGNING_PASSWORD="c.txt", NOTARY_PROFILE="key.json")[::2], (0, [
            "rcodesign sign --code-signature-flags runtime --p12-file c.p12 --p12-password-file c.txt F/Vantorel.app",
            "rcodesign notary-submit --api-key-file key.json --max-wait-seconds 1800 --staple F/Vantorel.app"]))
        self.assertIn("NSUpdateSecurityPolicy", plistlib.loads(self.info.read_bytes()))

    def test_bad_input_is_refused_before_anything_is_called(self):
        self.assert_refused("set VANTOREL_SIGNING_CERTIFICATE", self.bundle, SIGNING_IDENTITY=IDENTITY)
        self.assert_refused("on a Mac only", self.image)


class WithNeither(Sign):
    def test_bad_input_is_refused(self):
        self.assert_refused("needs codesign", self.bundle, SIGNING_IDENTITY=IDENTITY)
        self.assert_refused("on a Mac only", self.image)


if __name__ == "__main__":
    unittest.main(verbosity=2)
