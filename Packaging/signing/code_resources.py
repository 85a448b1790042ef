"""_CodeSignature/CodeResources: the hashes of a bundle's files, and the rules by which those were chosen.

What codesign's rules mean: https://developer.apple.com/library/archive/technotes/tn2206/_index.html
The rules themselves are in every application that it signed."""

import hashlib
import os
import plistlib
import re

RULES = {
    r"^Resources/": True,
    r"^Resources/.*\.lproj/": {"optional": True, "weight": 1000.0},
    r"^Resources/.*\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    r"^Resources/Base\.lproj/": {"weight": 1010.0},
    r"^version.plist$": True,
}
RULES2 = {
    r".*\.dSYM($|/)": {"weight": 11.0},
    r"^(.*/)?\.DS_Store$": {"omit": True, "weight": 2000.0},
    r"^(Frameworks|SharedFrameworks|PlugIns|Plug-ins|XPCServices|Helpers|MacOS|Library/(Automator|Spotlight|LoginItems))/":
        {"nested": True, "weight": 10.0},
    r"^.*": True,
    r"^Info\.plist$": {"omit": True, "weight": 20.0},
    r"^PkgInfo$": {"omit": True, "weight": 20.0},
    r"^Resources/": {"weight": 20.0},
    r"^Resources/.*\.lproj/": {"optional": True, "weight": 1000.0},
    r"^Resources/.*\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    r"^Resources/Base\.lproj/": {"weight": 1010.0},
    r"^[^/]+$": {"nested": True, "weight": 10.0},
    r"^embedded\.provisionprofile$": {"weight": 20.0},
    r"^version\.plist$": {"weight": 20.0},
}


def _rule(rules, name):
    """The weightiest rule that matches, or none."""
    matching = [{} if rule is True else rule for pattern, rule in rules.items() if re.search(pattern, name)]
    return max(matching, key=lambda rule: rule.get("weight", 1.0), default=None)


def _old_entry(path, rule):
    digest = hashlib.sha1(path.read_bytes()).digest()
    return {"hash": digest, "optional": True} if rule.get("optional") else digest


def _entry(path, rule):
    entry = {"symlink": os.readlink(path)} if path.is_symlink() else {
        "hash2": hashlib.sha256(path.read_bytes()).digest()}
    return entry | ({"optional": True} if rule.get("optional") else {})


def of(contents, program):
    """The file's text, for a bundle's folder Contents. `program` has its hashes in itself."""
    files, files2 = {}, {}
    for path in contents.rglob("*"):
        name = path.relative_to(contents).as_posix()
        if path == program or name.startswith("_CodeSignature/") or path.is_dir() and not path.is_symlink():
            continue
        old_rule, rule = _rule(RULES, name), _rule(RULES2, name)
        if rule.get("nested") and not path.is_symlink():
            raise ValueError(f"{name} would be code of its own, in need of a signature of its own")
        if old_rule is not None and not old_rule.get("omit") and not path.is_symlink():
            files[name] = _old_entry(path, old_rule)
        if not rule.get("omit"):
            files2[name] = _entry(path, rule)
    return plistlib.dumps({"files": files, "files2": files2, "rules": RULES, "rules2": RULES2})
