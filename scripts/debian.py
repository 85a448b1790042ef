"""Debian packages, where they come from, and the keys of those who publish them, for trying out what Packaging makes."""

import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout.strip()


def made_package(folder):
    """The package of what stands here."""
    run("cmake", "--preset", "linux", "--log-level=WARNING", cwd=ROOT)
    run("cmake", "--build", ROOT / "build/linux", "--target", "Vantorel", "Transfer", "--", "--quiet")
    run("cpack", "--config", ROOT / "build/linux/CPackConfig.cmake", "-B", folder)
    return next(pathlib.Path(folder).glob("*.deb"))


def mirror(suite):
    """The first address from which this machine's apt gets a release of Debian's, by its code name."""
    for line in run("apt-get", "indextargets", "--format", "$(RELEASE) $(COMPONENT) $(REPO_URI)",
                    "Created-By: Packages").splitlines():
        release, component, address = line.split(maxsplit=2)
        if (release, component) == (suite, "main"):
            return address
    sys.exit(f"apt knows no mirror of {suite}")


def use_sources_of_this_machine(tree):
    """Gives a new system the mirrors that this machine's apt has, and what it trusts."""
    shutil.rmtree(tree / "etc/apt")
    shutil.copytree("/etc/apt", tree / "etc/apt", symlinks=True)
    for keys in ("usr/share/keyrings", "etc/ssl/certs"):
        shutil.copytree(f"/{keys}", tree / keys, symlinks=True, dirs_exist_ok=True)


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
