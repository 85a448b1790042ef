"""What the documents say where that can be looked up: links, pictures, commands, preferences."""

import os
import pathlib
import re
import subprocess
import unittest

from disk_image import product

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")])


def anchor(heading):
    return re.sub(r"[^\w -]", "", heading.strip().lower()).replace(" ", "-")


class Documents(unittest.TestCase):
    def test_links_and_pictures_lead_somewhere(self):
        for document in DOCUMENTS:
            for target in re.findall(r"\]\(([^)]+)\)", document.read_text("utf-8")):
                with self.subTest(f"{document.name}: {target}"):
                    path, _, section = target.partition("#")
                    if path.startswith("http"):
                        continue
                    file = (document.parent / path).resolve() if path else document
                    self.assertTrue(file.exists())
                    if section:
                        headings = re.findall(r"^#+ (.*)$", file.read_text("utf-8"), re.M)
                        self.assertIn(section, [anchor(heading) for heading in headings])

    def test_every_document_is_linked(self):
        linked = {(document.parent / target.partition("#")[0]).resolve() for document in DOCUMENTS
                  for target in re.findall(r"\]\(([^)]+)\)", document.read_text("utf-8"))}
        for document in DOCUMENTS:
            with self.subTest(document.name):
                self.assertTrue(document.resolve() in linked or document.name == "README.md")

    def test_commands_and_files_that_are_named_exist(self):
        pattern = r"(?:\./(?:run|test)\b|(?<![\w/])(?:Packaging|Benchmarks|Tests|Sources|cmake|scripts|toolchain)/[\w./+-]*\w)"
        for document in DOCUMENTS:
            for name in re.findall(pattern, document.read_text("utf-8")):
                with self.subTest(f"{document.name}: {name}"):
                    self.assertTrue((ROOT / name).exists() or "NAME" in name)

    def test_every_packaging_tool_is_in_the_readme_and_explains_itself(self):
        readme = (ROOT / "README.md").read_text("utf-8")
        tools = [path for path in (ROOT / "Packaging").iterdir() if path.is_file() and os.access(path, os.X_OK)]
        for tool in tools:
            with self.subTest(tool.name):
                self.assertIn(f"Packaging/{tool.name}", readme)
                run = subprocess.run([tool, "--help"], capture_output=True, text=True)
                self.assertIn("usage", run.stdout + run.stderr)

    def test_the_readme_has_every_preference(self):
        keys = re.findall(r'^inline constexpr char \w+\[\] = "(\w+)";', (ROOT / "Sources/Vantorel/Prefs.h").read_text(),
                          re.M)
        self.assertEqual(len(keys), 7)
        readme = (ROOT / "README.md").read_text("utf-8")
        for key in keys:
            self.assertIn(f"`{key}`", readme)

    def test_the_readme_names_the_server(self):
        self.assertIn(f"`{product()['PRODUCT_UPDATE_HOST']}`", (ROOT / "README.md").read_text("utf-8"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
