"""What Packaging/release does around the builds, which stand-ins for CMake and CPack do here, and what it refuses."""

import datetime
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

CMAKE = """#!/bin/sh
echo "cmake $*" >> "$CALLS"
case "$1 $2" in
*build/release/macos)
    mkdir -p "$2/Vantorel.app/Contents/MacOS"
    printf program > "$2/Vantorel.app/Contents/MacOS/Vantorel"
    chmod 755 "$2/Vantorel.app/Contents/MacOS/Vantorel"
    version=$(cd Packaging && python3 -Bc 'import disk_image; print(disk_image.product()["PRODUCT_VERSION"])')
    cat > "$2/Vantorel.app/Contents/Info.plist" <<END
<plist><dict><key>CFBundleIdentifier</key><string>com.korvex.vantorel</string><key>CFBundleExecutable</key>
<string>Vantorel</string><key>CFBundleShortVersionString</key><string>$version</string></dict></plist>
END
    ;;
esac
"""
CPACK = """#!/bin/sh
echo "cpack with $SOURCE_DATE_EPOCH" >> "$CALLS"
mkdir -p "$4" tree/DEBIAN
version=$(sed -n 's/.*PRODUCT_VERSION "\\(.*\\)")/\\1/p' cmake/Product.cmake)
printf 'Package: vantorel\\nVersion: %s\\nArchitecture: amd64\\nMaintainer: Me <me@example.org>\\nDescription: cup\\n' \\
    "$version" > tree/DEBIAN/control
dpkg-deb --root-owner-group --build tree "$4/vantorel_amd64.deb" > "$CALLS.package"
rm -r tree
"""
CHANGELOG = "# Changelog\n\n## Unreleased\n\n- Quieter,\n  and faster.\n- Ação.\n\n## 0.9 (2026-01-02)\n\n- First.\n"


class Release(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.root = self.folder / "sources"
        shutil.copytree(ROOT / "Packaging", self.root / "Packaging", ignore=shutil.ignore_patterns("__pycache__"))
        shutil.copytree(ROOT / "cmake", self.root / "cmake")
        (self.root / ".gitignore").write_text("/build/\n/dist/\n")
        (self.root / "CHANGELOG.md").write_text(CHANGELOG, "utf-8")
        tools = self.folder / "tools"
        tools.mkdir()
        for name, text in (("cmake", CMAKE), ("cpack", CPACK)):
            (tools / name).write_text(text)
            (tools / name).chmod(0o755)
        self.environment = {"PATH": f"{tools}:/usr/bin:/bin", "HOME": str(self.folder), "LANG": "C.UTF-8",
                            "CALLS": str(self.folder / "calls"), "GIT_CONFIG_NOSYSTEM": "1"}
        for name in ("AUTHOR", "COMMITTER"):
            self.environment |= {f"GIT_{name}_NAME": "Tester", f"GIT_{name}_EMAIL": "tester@localhost",
                                 f"GIT_{name}_DATE": "1700000000 +0000"}
        self.git("init", "--quiet", "--initial-branch=main")
        self.git("add", "--all")
        self.git("commit", "--quiet", "--message", "Begin")

    def run_in_root(self, *command):
        return subprocess.run(command, cwd=self.root, env=self.environment, capture_output=True, text=True)

    def git(self, *arguments):
        run = self.run_in_root("git", *arguments)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout

    def release(self, version):
        run = self.run_in_root("Packaging/release", version)
        self.assertEqual(run.returncode, 0, run.stderr)
        return pathlib.Path(run.stdout.strip())

    def refuse(self, words, *arguments):
        before = self.git("rev-parse", "HEAD"), self.git("status", "--porcelain")
        run = self.run_in_root("Packaging/release", *arguments)
        self.assertEqual(run.returncode, 1)
        self.assertIn(words, run.stderr)
        self.assertEqual((self.git("rev-parse", "HEAD"), self.git("status", "--porcelain")), before)

    def test_a_version_number_gives_everything(self):
        made = self.release("1.2.0")
        self.assertEqual(made, self.root / "dist/1.2.0")
        files = sorted(str(path.relative_to(made)) for path in made.rglob("*") if path.is_file())
        apt = [file for file in files if file.startswith("server/apt/")]
        self.assertEqual([file for file in files if file not in apt], [
            "CHANGES.md", "SHA256SUMS", "server/updates/Vantorel-1.2.0.dmg", "server/updates/Vantorel-1.2.0.dmg.sha256",
            "server/updates/vantorel.json", "vantorel.rb", "vantorel_amd64.deb"])
        self.assertIn("server/apt/pool/main/v/vantorel/vantorel_1.2.0_amd64.deb", apt)
        self.assertIn("\nDate: Tue, 14 Nov 2023 22:13:20 UTC\n", (made / "server/apt/dists/stable/Release").read_text())
        checked = subprocess.run(["sha256sum", "--check", "--strict", "SHA256SUMS"], cwd=made, capture_output=True,
                                 text=True)
        self.assertEqual((checked.returncode, checked.stdout.count(": OK")), (0, len(files) - 1))
        self.assertEqual((made / "CHANGES.md").read_text("utf-8"), "- Quieter,\n  and faster.\n- Ação.\n")

    def test_manifest_and_cask_name_the_image_and_its_checksum(self):
        made = self.release("1.2.0")
        digest = hashlib.sha256((made / "server/updates/Vantorel-1.2.0.dmg").read_bytes()).hexdigest()
        latest = json.loads((made / "server/updates/vantorel.json").read_text("utf-8"))["latest"]
        self.assertEqual((latest["version"], latest["sha256"]), ("1.2.0", digest))
        self.assertEqual(latest["notes"], {"en": "- Quieter,\n  and faster.\n- Ação."})
        cask = (made / "vantorel.rb").read_text("utf-8")
        self.assertIn('version "1.2.0"', cask)
        self.assertIn(f'sha256 "{digest}"', cask)
        self.assertIn('url "https://korvex.example/updates/Vantorel-#{version}.dmg"', cask)
        self.assertIn("depends_on macos: :ventura\n", cask)  # "or later"; the form with ">=" is deprecated
        self.assertNotIn("@", cask)

    def test_the_version_is_committed_once(self):
        self.release("1.2.0")
        self.assertEqual(self.git("log", "--format=%s"), "Release 1.2.0\nBegin\n")
        self.assertEqual(self.git("status", "--porcelain"), "")
        self.assertIn('set(PRODUCT_VERSION "1.2.0")', (self.root / "cmake/Product.cmake").read_text("utf-8"))
        today = datetime.datetime.now(datetime.timezone.utc).date()
        self.assertEqual((self.root / "CHANGELOG.md").read_text("utf-8"),
                         CHANGELOG.replace("Unreleased", f"1.2.0 ({today})"))
        shutil.rmtree(self.root / "dist")
        self.git("checkout", "--quiet", "--detach")
        self.release("1.2.0")
        self.assertEqual(self.git("log", "--format=%s"), "Release 1.2.0\nBegin\n")

    def test_with_an_identity_the_application_is_signed_before_it_goes_into_the_image(self):
        tool = self.folder / "tools/rcodesign"
        tool.write_text('#!/bin/sh\nfor path; do :; done\necho "signing $path"\nprintf " signed" >> "$path/Contents/MacOS/Vantorel"\n')
        tool.chmod(0o755)
        self.environment |= {"VANTOREL_SIGNING_IDENTITY": "Developer ID Application: Someone (AB12CD34EF)",
                             "VANTOREL_SIGNING_CERTIFICATE": "c.p12", "VANTOREL_SIGNING_PASSWORD": "c.txt"}
        image = (self.release("1.2.0") / "server/updates/Vantorel-1.2.0.dmg").read_bytes()
        self.assertIn(b"program signed", image)

    def test_the_commit_dates_everything(self):
        self.release("1.2.0")
        self.assertIn("cpack with 1700000000\n", (self.folder / "calls").read_text())

    def test_what_is_not_ready_is_refused_and_changes_nothing(self):
        self.refuse("is not numbers and dots", "v1.2")
        self.refuse("is older than", "0.9.9")
        (self.root / "new").touch()
        self.refuse("not committed", "1.2.0")
        (self.root / "new").unlink()
        self.git("checkout", "--quiet", "--detach")
        self.refuse("on no branch", "1.2.0")
        self.git("checkout", "--quiet", "main")
        self.release("1.2.0")
        self.refuse("is there already", "1.2.0")
        self.refuse('nothing under "## Unreleased"', "1.3.0")

    def test_a_build_that_fails_leaves_no_release(self):
        (self.folder / "tools/cpack").write_text("#!/bin/sh\nexit 1\n")
        run = self.run_in_root("Packaging/release", "1.2.0")
        self.assertEqual(run.returncode, 1)
        self.assertIn("cpack failed", run.stderr)
        self.assertFalse((self.root / "dist").exists())

    def test_debian_reads_the_changelog(self):
        self.release("1.2.0")
        text = self.run_in_root("Packaging/changelog", "debian", "Me <me@example.org>").stdout
        (self.folder / "changelog").write_text(text, "utf-8")
        run = subprocess.run(["dpkg-parsechangelog", "--all", "--format", "rfc822", "--file",
                              self.folder / "changelog"], capture_output=True, text=True)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertEqual([line.split(": ")[1] for line in run.stdout.splitlines() if line.startswith("Version:")],
                         ["1.2.0", "0.9"])
        self.assertIn("* Quieter, and faster.", run.stdout)


if __name__ == "__main__":
    unittest.main(verbosity=2)
