"""An application's bundle, and the disk image that holds it."""

import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

import finder_info

ROOT = pathlib.Path(__file__).resolve().parent.parent
HDIUTIL_TRIES = 3
HDIUTIL_PAUSE = 10  # seconds


class Refusal(Exception):
    """What is wrong with what was asked for, in words for the maintainer."""


class Bundle:
    """A folder that is an application, as far as an image of it needs to know."""

    def __init__(self, path):
        self.path = pathlib.Path(path).resolve()
        if self.path.suffix != ".app" or not self.path.is_dir():
            raise Refusal(f"{path} is no application bundle")
        try:
            self.info = plistlib.loads((self.path / "Contents/Info.plist").read_bytes())
        except (OSError, ValueError, plistlib.InvalidFileException) as error:
            raise Refusal(f"{path} has no readable Info.plist: {error}") from None
        self.name = self.path.stem
        self.version = self._text("CFBundleShortVersionString")
        self.identifier = self._text("CFBundleIdentifier")
        if not re.fullmatch(r"[0-9]+(\.[0-9]+)*", self.version):
            raise Refusal(f'{path} has the version "{self.version}", which is not numbers and dots')
        program = self.path / "Contents/MacOS" / self._text("CFBundleExecutable")
        if not program.is_file() or not os.access(program, os.X_OK):
            raise Refusal(f"{path} has no program at {program.relative_to(self.path)}")

    def _text(self, key):
        value = self.info.get(key) if isinstance(self.info, dict) else None
        if not isinstance(value, str) or not value:
            raise Refusal(f"{self.path} has no {key} in its Info.plist")
        return value

    def date(self):
        """SOURCE_DATE_EPOCH where that is set, else when the newest file in it was changed; in seconds."""
        epoch = os.environ.get("SOURCE_DATE_EPOCH")
        if epoch is None:
            return max(int(entry.lstat().st_mtime) for entry in [self.path, *self.path.rglob("*")])
        if not re.fullmatch(r"[0-9]+", epoch):
            raise Refusal(f'SOURCE_DATE_EPOCH is "{epoch}", which is not a number of seconds')
        return int(epoch)


def product():
    """The values of cmake/Product.cmake."""
    return dict(re.findall(r'^set\((\w+) "(.*)"\)', (ROOT / "cmake/Product.cmake").read_text("utf-8"), re.M))


def _run_quietly(command, **options):
    """Says what the command said only when it fails."""
    run = subprocess.run(command, capture_output=True, text=True, **options)
    if run.returncode:
        raise Refusal(f"{pathlib.Path(command[0]).name} failed:\n{run.stderr}")


def _write_with_hdiutil(folder, name, _date, output):
    """Something else on a Mac may be looking at the volume just when hdiutil lets go of it ("Resource busy")."""
    for attempt in range(1, HDIUTIL_TRIES + 1):
        run = subprocess.run(["hdiutil", "create", "-quiet", "-volname", name, "-srcfolder", folder, "-fs", "HFS+",
                              "-format", "UDZO", output], stderr=subprocess.PIPE, text=True)
        if not run.returncode:
            break
        output.unlink(missing_ok=True)
        if attempt == HDIUTIL_TRIES:
            raise Refusal(f"hdiutil failed {HDIUTIL_TRIES} times, at last with:\n{run.stderr}")
        time.sleep(HDIUTIL_PAUSE)
    if os.environ.get("VANTOREL_SIGNING_IDENTITY"):  # before anyone takes its checksum
        _run_quietly([ROOT / "Packaging/sign", output])


def _write_with_xorriso(folder, name, date, output):
    """HFS+, which a Mac mounts, and ISO 9660 over the same data, which everyone else reads."""
    if not shutil.which("xorriso"):
        raise Refusal("xorriso is missing: scripts/dependencies/install test")
    _run_quietly(
        ["xorriso", "-no_rc", "-as", "mkisofs", "-quiet", "-volid", name, "-R", "-uid", "0", "-gid", "0",
         "-hfsplus", "-iso-level", "3", "-o", output, folder],
        env={**os.environ, "SOURCE_DATE_EPOCH": str(date), "TZ": "UTC", "LC_ALL": "C.UTF-8"})
    finder_info.clear_types(output)


def write(bundle, output):
    """The image that people install from and that the updater downloads: the bundle, and a link to where it belongs."""
    output = pathlib.Path(output)
    if output.exists():
        raise Refusal(f"{output} is there already")
    if not output.parent.is_dir():
        raise Refusal(f"there is no folder {output.parent}")
    date = bundle.date()
    with tempfile.TemporaryDirectory(dir=output.parent, prefix=".image-") as temporary:
        folder = pathlib.Path(temporary, "volume")
        folder.mkdir()
        shutil.copytree(bundle.path, folder / bundle.path.name, symlinks=True)
        (folder / "Applications").symlink_to("/Applications")
        for path in [folder, *folder.rglob("*")]:
            if not path.is_symlink():  # as for everyone, whatever the umask of the build was
                path.chmod(0o755 if path.is_dir() or path.stat().st_mode & 0o111 else 0o644)
            os.utime(path, (date, date), follow_symlinks=False)
        image = pathlib.Path(temporary, f"{output.stem}.dmg")  # the name that a signature gives it
        write_image = _write_with_hdiutil if sys.platform == "darwin" else _write_with_xorriso
        write_image(folder, bundle.name, date, image)
        image.rename(output)
