"""Whether an application's seal is whole: read back byte by byte, by a reader that shares nothing with Packaging/signing.

TN2206, TN3126 and xnu's cs_blobs.h describe what is read here."""
import hashlib
import plistlib
import re
import struct

PROCESSORS = {0x01000007: ("x86_64", 12), 0x0100000C: ("arm64", 14)}  # and the alignment of its slice, as a power of 2
ADHOC_UNDER_HARDENED_RUNTIME = 0x10002
EMPTY_REQUIREMENTS = bytes.fromhex("fade0c01 0000000c 00000000")
EMPTY_CMS = bytes.fromhex("fade0b01 00000008")
FIELDS = ("magic", "length", "version", "flags", "hashOffset", "identOffset", "nSpecialSlots", "nCodeSlots",
          "codeLimit", "hashSize", "hashType", "platform", "pageSize", "spare2", "scatterOffset", "teamOffset",
          "spare3", "codeLimit64", "execSegBase", "execSegLimit", "execSegFlags", "runtime", "preEncryptOffset")


def slices_of(data):
    """(processor, bytes) of each slice; ValueError unless every byte of the file belongs to one, or is the zero it should be."""
    magic, count = struct.unpack(">II", data[:8])
    if magic != 0xCAFEBABE or not 1 <= count <= 2:
        raise ValueError("not a universal file of one or two slices")
    end = 8 + 20 * count
    for number in range(count):
        kind, _, offset, size, power = struct.unpack(">5I", data[8 + 20 * number:28 + 20 * number])
        name, usual = PROCESSORS[kind]
        if power != usual or offset % (1 << power) or any(data[end:offset]) or not end <= offset:
            raise ValueError(f"{name}: the slice is not where it belongs")
        end = offset + size
        if data[offset + 4:offset + 12] != struct.pack("<II", *struct.unpack_from(">II", data, 8 + 20 * number)):
            raise ValueError(f"{name}: the slice is for another processor than the universal file's header says")
        yield name, data[offset:end]
    if end != len(data):
        raise ValueError("something follows the last slice")


class Commands:
    """What a slice's load commands say that bears on its signature."""

    def __init__(self, data):
        position = 32
        for _ in range(struct.unpack("<I", data[16:20])[0]):
            command, length = struct.unpack("<II", data[position:position + 8])
            body = data[position + 8:position + length]
            if command == 0x19 and body.startswith(b"__TEXT\0"):
                self.text = struct.unpack("<QQ", body[32:48])
            elif command == 0x19 and body.startswith(b"__LINKEDIT\0"):
                self.linkedit_memory, start, size = struct.unpack("<QQQ", body[24:48])
                self.linkedit_end = start + size
                self.linkedit_size = size
            elif command == 0x1D:
                self.signature = struct.unpack("<II", body[:8])
            elif command == 0x32:
                self.sdk = struct.unpack("<I", body[8:12])[0]
            position += length


def blobs_of(signature):
    """The signature's blobs by slot; ValueError unless they follow each other without a gap, with zeros behind."""
    magic, length, count = struct.unpack(">III", signature[:12])
    if magic != 0xFADE0CC0:
        raise ValueError("no embedded signature")
    slots = [struct.unpack(">II", signature[12 + 8 * i:20 + 8 * i]) for i in range(count)]
    end, blobs = 12 + 8 * count, {}
    for slot, offset in slots:
        if offset != end:
            raise ValueError(f"the blob of slot {slot:#x} is not behind the one before")
        end += struct.unpack(">I", signature[offset + 4:offset + 8])[0]
        blobs[slot] = signature[offset:end]
    if end != length or any(signature[end:]) or len(signature) - end > 64 * 1024:
        raise ValueError("the blobs do not fill the signature")
    return blobs


def directory_faults(data, commands, identifier, special):
    """What the code directory says that is not so. `special`: the contents for the slots -1, -2, ..."""
    limit, size = commands.signature
    blobs = blobs_of(data[limit:limit + size])
    if list(blobs) != [0, 2, 0x10000] or blobs[2] != EMPTY_REQUIREMENTS or blobs[0x10000] != EMPTY_CMS:
        yield "the signature has other blobs than an ad-hoc one"
        return
    directory = blobs[0]
    found = dict(zip(FIELDS, struct.unpack(">9I4B4IQ3Q2I", directory[:96])))
    name = identifier.encode() + b"\0"
    pages = -(-limit // 4096)
    expected = {
        "magic": 0xFADE0C02, "length": 96 + len(name) + 32 * (len(special) + pages), "version": 0x20500,
        "flags": ADHOC_UNDER_HARDENED_RUNTIME, "hashOffset": 96 + len(name) + 32 * len(special), "identOffset": 96,
        "nSpecialSlots": len(special), "nCodeSlots": pages, "codeLimit": limit, "hashSize": 32, "hashType": 2,
        "platform": 0, "pageSize": 12, "spare2": 0, "scatterOffset": 0, "teamOffset": 0, "spare3": 0, "codeLimit64": 0,
        "execSegBase": commands.text[0], "execSegLimit": commands.text[1], "execSegFlags": 1,
        "runtime": commands.sdk, "preEncryptOffset": 0}
    for field, value in found.items():
        if value != expected[field]:
            yield f"{field} is {value:#x}, not {expected[field]:#x}"
    if directory[96:96 + len(name)] != name:
        yield "the identifier is not the bundle's"
    hashes = directory[96 + len(name):]
    contents = [*reversed(special), *(data[at:min(at + 4096, limit)] for at in range(0, limit, 4096))]
    for number, content in enumerate(contents):
        if hashes[32 * number:32 * number + 32] != hashlib.sha256(content).digest():
            yield f"the hash of slot {number - len(special)} is another"


def slice_faults(data, identifier, special):
    try:
        commands = Commands(data)
        limit, size = commands.signature
        if limit + size != len(data) or commands.linkedit_end != len(data) or limit % 16 or size % 16:
            yield "the signature is not the end of the file and of its last segment"
        if not 0 <= commands.linkedit_memory - commands.linkedit_size < 0x4000:
            yield "the last segment has not the memory that it needs"
        yield from directory_faults(data, commands, identifier, special)
    except (struct.error, AttributeError, ValueError) as error:
        yield f"unreadable: {error}"


def program_faults(data, identifier, info, resources):
    """What is wrong with a universal program's signatures."""
    try:
        parts = list(slices_of(data))
    except (struct.error, KeyError, ValueError) as error:
        return [f"unreadable: {error}"]
    return [f"{name}: {fault}" for name, part in parts
            for fault in slice_faults(part, identifier, [info, EMPTY_REQUIREMENTS, resources])]


def omitted(name, rules):
    weights = {pattern: 1.0 if rule is True else rule.get("weight", 1.0) for pattern, rule in rules.items()
               if re.search(pattern, name)}
    rule = rules[max(weights, key=weights.get)]
    return rule is not True and rule.get("omit", False)


def file_faults(contents, program, resources):
    """What is in the folder and not in the list, or the other way round, or different."""
    try:
        sealed = plistlib.loads(resources)
    except (ValueError, plistlib.InvalidFileException) as error:
        return [f"CodeResources: unreadable: {error}"]
    if set(sealed) != {"files", "files2", "rules", "rules2"}:
        return ["CodeResources: other keys than it should have"]
    there = {path.relative_to(contents).as_posix(): path for path in contents.rglob("*")
             if path.is_symlink() or not path.is_dir()}
    for own in (program, "_CodeSignature/CodeResources"):
        there.pop(own)
    faults = [f"{name}: missing" for name in {*sealed["files"], *sealed["files2"]} - there.keys()]
    for name, path in there.items():
        if omitted(name, sealed["rules2"]):
            continue
        entry, old = sealed["files2"].get(name, {}), sealed["files"].get(name)
        if path.is_symlink():
            right = entry.get("symlink") == str(path.readlink())
        else:
            right = entry.get("hash2") == hashlib.sha256(path.read_bytes()).digest()
            if name.startswith("Resources/"):
                digest = old["hash"] if isinstance(old, dict) else old
                right = right and digest == hashlib.sha1(path.read_bytes()).digest()
        if not right:
            faults.append(f"{name}: not what was sealed")
    return faults


def faults(bundle, identifier):
    """All that is wrong with the seal of an application that should have this identifier."""
    contents = bundle / "Contents"
    info = (contents / "Info.plist").read_bytes()
    try:
        resources = (contents / "_CodeSignature/CodeResources").read_bytes()
    except OSError:
        return ["it is not sealed: it has no CodeResources"]
    program = f"MacOS/{plistlib.loads(info)['CFBundleExecutable']}"
    return program_faults((contents / program).read_bytes(), identifier, info, resources) \
        + file_faults(contents, program, resources)


def identity(program):
    """The code directory hash of each slice, by which the system knows an application that is signed ad hoc."""
    return {name: hashlib.sha256(blobs_of(part[Commands(part).signature[0]:])[0]).hexdigest()[:40]
            for name, part in slices_of(program)}
