"""What can be known of the workflows without running them: their machines, what they take from each other, what they call."""

import os
import pathlib
import re
import unittest

import yaml

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FOLDER = ROOT / ".github/workflows"
WORKFLOWS = {path.name: yaml.safe_load(path.read_text("utf-8")) for path in sorted(FOLDER.glob("*.yml"))}
RUNNERS = "runners.yml"
RETIRED = {f"macos-{version}" for version in ("10.15", 11, 12, 13, 14)}
OUTPUT = re.compile(r"\$\{\{ needs\.([\w-]+)\.outputs\.([\w-]+) \}\}")


def jobs():
    return ((f"{file}: {name}", job, workflow) for file, workflow in WORKFLOWS.items()
            for name, job in workflow["jobs"].items())


def needed(job):
    needs = job.get("needs", [])
    return [needs] if isinstance(needs, str) else needs


class Workflows(unittest.TestCase):
    def test_every_mac_is_named_in_one_file_that_says_when_it_was_looked_up(self):
        text = (FOLDER / RUNNERS).read_text("utf-8")
        self.assertRegex(text, r"Looked up on 20\d\d-\d\d-\d\d in https://github.com/actions/runner-images")
        named = WORKFLOWS[RUNNERS]["jobs"]["names"]["outputs"].values()
        self.assertTrue(named)
        for name in named:
            self.assertRegex(name, r"^(macos|xcode)-")
            self.assertNotIn(name, RETIRED)
            self.assertRegex(text, rf"(?m)^#   {name} ", "its line in the comment")
        for file in WORKFLOWS.keys() - {RUNNERS}:
            self.assertNotRegex((FOLDER / file).read_text("utf-8"), r"\b(macos|xcode)-\d", file)

    def test_every_job_runs_on_a_machine_that_is_named(self):
        for name, job, _ in jobs():
            with self.subTest(name):
                runner = job.get("runs-on", "ubuntu-latest" if "uses" in job else None)
                found = OUTPUT.fullmatch(runner)
                if not found:
                    self.assertEqual(runner, "ubuntu-latest")
                    continue
                self.assertEqual(found[1], "runners")
                self.assertIn("runners", needed(job))
                self.assertIn(found[2], WORKFLOWS[RUNNERS]["jobs"]["names"]["outputs"])

    def test_the_names_are_handed_on(self):
        handed = WORKFLOWS[RUNNERS][True]["workflow_call"]["outputs"]  # YAML 1.1 takes the key "on" for a boolean
        names = WORKFLOWS[RUNNERS]["jobs"]["names"]["outputs"]
        self.assertEqual({key: output["value"] for key, output in handed.items()},
                         {key: f"${{{{ jobs.names.outputs.{key} }}}}" for key in names})

    def test_what_a_job_needs_is_there(self):
        for name, job, workflow in jobs():
            with self.subTest(name):
                self.assertLessEqual(set(needed(job)), set(workflow["jobs"]))
                if "uses" in job:
                    self.assertTrue((ROOT / job["uses"]).is_file())

    def test_what_is_downloaded_was_uploaded_by_a_job_that_is_needed(self):
        for name, job, workflow in jobs():
            uploaded = {step["with"]["name"] for other in needed(job) for step in workflow["jobs"][other].get("steps", [])
                        if step.get("uses", "").startswith("actions/upload-artifact")}
            for step in job.get("steps", []):
                if step.get("uses", "").startswith("actions/download-artifact"):
                    with self.subTest(name):
                        self.assertIn(step["with"]["name"], uploaded)

    def test_the_commands_of_ours_exist(self):
        commands = {command for _, job, _ in jobs() for step in job.get("steps", [])
                    for command in re.findall(r"(?:^|\s)((?:\./|[\w-]+/)[\w./-]+)", step.get("run", ""), re.M)
                    if (ROOT / command.split("/")[0]).is_dir() and not command.startswith("build/")
                    or command.startswith("./")}
        self.assertIn("./test", commands)
        for command in commands:
            with self.subTest(command):
                self.assertTrue(os.access(ROOT / command, os.X_OK))

    def test_no_application_is_uploaded_as_a_folder(self):
        """An upload keeps neither the folder around its content nor that a file can be executed."""
        for name, job, _ in jobs():
            for step in job.get("steps", []):
                if step.get("uses", "").startswith("actions/upload-artifact"):
                    with self.subTest(name):
                        self.assertNotIn(".app", step["with"]["path"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
