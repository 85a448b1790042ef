"""Seals an application as `codesign --sign - --options runtime` does, on a system that has no codesign."""

import os
import plistlib
import shutil
import struct

from . import code_resources, code_signature, macho


def _replace(path, data):
    """By a new file: the system remembers a file's signature for as long as that file lives."""
    beside = path.with_name(f".{path.name}.new")
    beside.write_bytes(data)
    if path.exists():
        shutil.copymode(path, beside)
    os.replace(beside, path)


def seal(bundle):
    """Raises ValueError, with the reason, for a bundle that cannot be signed; and has changed nothing then."""
    contents = bundle / "Contents"
    info = (contents / "Info.plist").read_bytes()
    names = plistlib.loads(info)
    identifier = names["CFBundleIdentifier"]
    program = contents / "MacOS" / names["CFBundleExecutable"]
    resources = code_resources.of(contents, program)

    def signed(data):
        part = macho.Slice(data)
        part.make_room(len(code_signature.embedded(part, identifier, info, resources)))
        return part.with_signature(code_signature.embedded(part, identifier, info, resources))

    try:
        data = macho.rewritten(program.read_bytes(), signed)
    except struct.error:
        raise ValueError(f"{program.name} ends too early") from None
    shutil.rmtree(contents / "_CodeSignature", ignore_errors=True)
    (contents / "_CodeSignature").mkdir()
    _replace(contents / "_CodeSignature/CodeResources", resources)
    _replace(program, data)
