"""The signature inside a program: a table of hashes (the code directory), and what else a signature that is ad hoc has.

The formats: https://github.com/apple-oss-distributions/xnu/blob/main/osfmk/kern/cs_blobs.h
What is hashed: https://developer.apple.com/documentation/technotes/tn3126-inside-code-signing-hashes"""

import hashlib
import struct

CSMAGIC_REQUIREMENTS, CSMAGIC_CODEDIRECTORY = 0xFADE0C01, 0xFADE0C02
CSMAGIC_EMBEDDED_SIGNATURE, CSMAGIC_BLOBWRAPPER = 0xFADE0CC0, 0xFADE0B01
CSSLOT_CODEDIRECTORY, CSSLOT_REQUIREMENTS, CSSLOT_SIGNATURE = 0, 2, 0x10000
CS_SUPPORTSRUNTIME = 0x20500
CS_ADHOC, CS_RUNTIME = 0x2, 0x10000
CS_HASHTYPE_SHA256 = 2
CS_EXECSEG_MAIN_BINARY = 1
PAGE_SIZE_POWER = 12
CODE_DIRECTORY = struct.Struct(">9I4B4I4Q2I")

NO_REQUIREMENTS = struct.pack(">III", CSMAGIC_REQUIREMENTS, 12, 0)
NO_CMS_SIGNATURE = struct.pack(">II", CSMAGIC_BLOBWRAPPER, 8)


def sha256(data):
    return hashlib.sha256(data).digest()


def embedded(program, identifier, info, resources):
    """What goes behind a program's code. `program`: a macho.Slice; `info`, `resources`: Info.plist and CodeResources."""
    blobs = {CSSLOT_CODEDIRECTORY: _code_directory(program, identifier, [resources, NO_REQUIREMENTS, info]),
             CSSLOT_REQUIREMENTS: NO_REQUIREMENTS, CSSLOT_SIGNATURE: NO_CMS_SIGNATURE}
    index, at = b"", 12 + 8 * len(blobs)
    for slot, blob in blobs.items():
        index += struct.pack(">II", slot, at)
        at += len(blob)
    return struct.pack(">III", CSMAGIC_EMBEDDED_SIGNATURE, at, len(blobs)) + index + b"".join(blobs.values())


def _code_directory(program, identifier, special):
    """`special`: what the slots before the pages' stand for, from -3 to -1."""
    code, name = program.code(), identifier.encode("utf-8") + b"\0"
    pages = [code[start:start + (1 << PAGE_SIZE_POWER)] for start in range(0, len(code), 1 << PAGE_SIZE_POWER)]
    hashes = b"".join(map(sha256, [*special, *pages]))
    first_page = CODE_DIRECTORY.size + len(name) + len(special) * hashlib.sha256().digest_size
    size = CODE_DIRECTORY.size + len(name) + len(hashes)
    header = CODE_DIRECTORY.pack(
        CSMAGIC_CODEDIRECTORY, size, CS_SUPPORTSRUNTIME, CS_ADHOC | CS_RUNTIME, first_page, CODE_DIRECTORY.size,
        len(special), len(pages), len(code), hashlib.sha256().digest_size, CS_HASHTYPE_SHA256, 0, PAGE_SIZE_POWER,
        0, 0, 0, 0, 0,  # spare; no scatter vector, no team; spare; the code's size is below 4 GiB
        program.text_offset, program.text_size, CS_EXECSEG_MAIN_BINARY, program.sdk, 0)
    return header + name + hashes
