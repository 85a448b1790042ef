"""The configuration profile and the Linux file that Packaging/profile writes, read back, and what it refuses."""

import json
import pathlib
import plistlib
import re
import subprocess
import tempfile
import unittest

import jsonschema

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PREFERENCES = json.loads((ROOT / "Packaging/preferences.schema.json").read_text("utf-8"))
PROFILE = json.loads((ROOT / "Tests/Data/configuration-profile.schema.json").read_text("utf-8"))
ALL = {"appLanguage": "pt-BR", "launchAtLogin": True, "autoUpdate": False, "scheduleEnabled": True,
       "scheduleOnMinutes": 0, "scheduleOffMinutes": 1439}


def arguments(settings):
    return [f"{key}={value if isinstance(value, str) else json.dumps(value)}" for key, value in settings.items()]


class Profile(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory())) / "made"

    def run_tool(self, *options):
        return subprocess.run([ROOT / "Packaging/profile", self.folder, *options], capture_output=True, text=True)

    def write(self, settings, *options):
        """The profile and the Linux file."""
        run = self.run_tool(*options, *arguments(settings))
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        profile, linux = (pathlib.Path(line) for line in run.stdout.splitlines())
        self.assertEqual((profile.name, linux.name), ("com.korvex.vantorel.mobileconfig",
                                                      "com.korvex.vantorel.managed.plist"))
        return plistlib.loads(profile.read_bytes()), plistlib.loads(linux.read_bytes())

    def refuse(self, words, *options):
        run = self.run_tool(*options)
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertRegex(run.stderr, f"^profile: .*{re.escape(words)}")
        self.assertFalse(self.folder.exists())

    def test_both_say_the_same_and_fit_the_schemas(self):
        for settings in (ALL, {"autoUpdate": True}, {"scheduleOnMinutes": 540, "appLanguage": "en"}):
            with self.subTest(settings):
                profile, linux = self.write(settings)
                self.assertEqual(linux, settings)
                jsonschema.validate(linux, PREFERENCES)
                jsonschema.validate(profile, PROFILE)
                preferences, login_item = profile["PayloadContent"]
                [forced] = preferences["PayloadContent"]["com.korvex.vantorel"]["Forced"]
                self.assertEqual(forced, {"mcx_preference_settings": settings})
                [rule] = login_item["Rules"]
                self.assertEqual((rule["RuleType"], rule["RuleValue"]), ("BundleIdentifier", "com.korvex.vantorel"))

    def test_a_team_is_approved_where_one_is_given(self):
        profile, linux = self.write(ALL, "--team", "0A1B2C3D4E")
        jsonschema.validate(profile, PROFILE)
        [rule] = profile["PayloadContent"][1]["Rules"]
        self.assertEqual((rule["RuleType"], rule["RuleValue"]), ("TeamIdentifier", "0A1B2C3D4E"))
        self.assertEqual(linux, ALL)

    def test_identifiers_come_from_the_content(self):
        def identifiers(settings, *options):
            profile, _ = self.write(settings, *options)
            return [part["PayloadUUID"] for part in (profile, *profile["PayloadContent"])]

        first = identifiers({"autoUpdate": True, "scheduleEnabled": True})
        self.assertEqual(identifiers({"scheduleEnabled": True, "autoUpdate": True}), first)
        self.assertEqual(len(set(first)), 3)
        other = identifiers({"autoUpdate": True, "scheduleEnabled": False})
        self.assertEqual([one == two for one, two in zip(first, other)], [False, False, True])
        of_a_team = identifiers({"autoUpdate": True, "scheduleEnabled": True}, "--team", "0A1B2C3D4E")
        self.assertEqual([one == two for one, two in zip(first, of_a_team)], [False, True, False])

    def test_the_same_arguments_give_the_same_bytes(self):
        def bytes_written(settings):
            self.write(settings)
            return [path.read_bytes() for path in sorted(self.folder.iterdir())]

        self.assertEqual(bytes_written(ALL), bytes_written(dict(reversed(ALL.items()))))

    def test_what_is_wrong_is_refused_and_writes_nothing(self):
        self.refuse('there is no key "autoupdate"; there are appLanguage, launchAtLogin', "autoupdate=true")
        self.refuse('there is no key "updateAttempts"', "updateAttempts=1")
        self.refuse('autoUpdate is true or false, not "yes"', "autoUpdate=yes")
        self.refuse('autoUpdate is true or false, not "1"', "autoUpdate=1")
        self.refuse('appLanguage is en or pt-BR, not "pt"', "appLanguage=pt")
        for wrong in ("9:00", "-1", "1440", "540.0", "", "true", "99999999999999999999", "٥"):
            self.refuse(f'scheduleOnMinutes is a whole number from 0 to 1439, not "{wrong}"', f"scheduleOnMinutes={wrong}")
        self.refuse('"autoUpdate" is not KEY=VALUE', "autoUpdate")
        self.refuse("autoUpdate is there twice", "autoUpdate=true", "autoUpdate=true")
        self.refuse('"0a1b2c3d4e" is no team identifier', "--team", "0a1b2c3d4e", "autoUpdate=true")
        self.assertEqual(self.run_tool().returncode, 2)

    def test_a_folder_that_cannot_be_written_to_is_an_error(self):
        self.folder.write_text("in the way")
        run = self.run_tool("autoUpdate=true")
        self.assertEqual(run.returncode, 1)
        self.assertIn("made", run.stderr)

    def test_the_schema_has_the_programs_keys(self):
        jsonschema.Draft7Validator.check_schema(PREFERENCES)
        jsonschema.Draft7Validator.check_schema(PROFILE)
        keys = re.findall(r'^inline constexpr char \w+\[\] = "(\w+)";',
                          (ROOT / "Sources/Vantorel/Prefs.h").read_text("utf-8"), re.M)
        self.assertEqual(set(PREFERENCES["properties"]) | {"updateAttempts"}, set(keys))


if __name__ == "__main__":
    unittest.main(verbosity=2)
