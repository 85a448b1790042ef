"""Debian packages, and the keys of those who publish them, for trying out what Packaging makes."""

import os
import shutil
import subprocess


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout.strip()


def with_fields(package, folder, **fields):
    """The package with other fields."""
    tree = folder / "tree"
    run("dpkg-deb", "--raw-extract", package, tree)
    control = tree / "DEBIAN/control"
    lines = [f"{name}: {fields.get(name, value)}" for name, _, value in
             (line.partition(": ") for line in control.read_text().splitlines()) if value]
    control.write_text("\n".join(lines) + "\n")
    made = folder / f"{'-'.join(fields.values())}.deb"
    run("dpkg-deb", "--root-owner-group", "-Zgzip", "--build", tree, made)
    shutil.rmtree(tree)
    return made


def make_key(home, name):
    """The fingerprint of a new key of gpg's."""
    home.mkdir(mode=0o700, exist_ok=True)
    environment = os.environ | {"GNUPGHOME": str(home)}
    run("gpg", "--batch", "--passphrase", "", "--quick-gen-key", f"{name} <{name}@localhost>", "ed25519", env=environment)
    listed = run("gpg", "--batch", "--with-colons", "--list-secret-keys", name, env=environment)
    return next(line.split(":")[9] for line in listed.splitlines() if line.startswith("fpr"))
