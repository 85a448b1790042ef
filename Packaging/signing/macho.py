"""Universal Mach-O files and their 64-bit slices, as far as putting a signature at a slice's end takes.

The formats: https://github.com/apple-oss-distributions/xnu/blob/main/EXTERNAL_HEADERS/mach-o/fat.h and loader.h there."""

import struct

FAT_MAGIC = 0xCAFEBABE
MH_MAGIC_64 = 0xFEEDFACF
LC_SEGMENT_64, LC_CODE_SIGNATURE, LC_BUILD_VERSION = 0x19, 0x1D, 0x32
FAT_HEADER, FAT_ARCH = struct.Struct(">II"), struct.Struct(">5I")
MACH_HEADER_SIZE = 32
PAGE_SIZES = {0x01000007: 0x1000, 0x0100000C: 0x4000}  # of memory, by processor: x86_64, arm64
SIGNATURE_ALIGNMENT = 16


def align(number, unit):
    return -(-number // unit) * unit


def rewritten(data, change):
    """A universal file with each of its slices changed by `change`, and laid out anew."""
    magic, count = FAT_HEADER.unpack_from(data)
    if magic != FAT_MAGIC:
        raise ValueError("it is no universal Mach-O file")
    arches, slices = [], b""
    end = FAT_HEADER.size + count * FAT_ARCH.size
    for index in range(count):
        processor, model, start, size, power = FAT_ARCH.unpack_from(data, FAT_HEADER.size + index * FAT_ARCH.size)
        if start + size > len(data):
            raise ValueError("a slice reaches beyond its end")
        changed = change(data[start:start + size])
        start = align(end, 1 << power)
        slices += bytes(start - end) + changed
        end = start + len(changed)
        arches.append(FAT_ARCH.pack(processor, model, start, len(changed), power))
    return FAT_HEADER.pack(magic, count) + b"".join(arches) + slices


class Slice:
    """A program for one processor. Its signature is at its end, where the linker put one."""

    def __init__(self, data):
        self._data = bytearray(data)
        magic, self._processor = struct.unpack_from("<II", data)
        if magic != MH_MAGIC_64 or self._processor not in PAGE_SIZES:
            raise ValueError("a slice is no 64-bit program for a Mac")
        commands = dict(self._commands())
        try:
            self._signature_command = commands[LC_CODE_SIGNATURE]
            self._linkedit = commands["__LINKEDIT"]
            text = commands["__TEXT"]
            self.sdk = struct.unpack_from("<I", data, commands[LC_BUILD_VERSION] + 16)[0]
        except KeyError as missing:
            raise ValueError(f"a slice has no load command {missing}") from None
        self.text_offset, self.text_size = struct.unpack_from("<QQ", data, text + 40)
        start, size = struct.unpack_from("<II", data, self._signature_command + 8)
        if start % SIGNATURE_ALIGNMENT or start + size != len(data):
            raise ValueError("a slice does not end with its signature")
        del self._data[start:]

    def _commands(self):
        """Where each load command is, by its kind, or by the segment's name."""
        count = struct.unpack_from("<I", self._data, 16)[0]
        at = MACH_HEADER_SIZE
        for _ in range(count):
            kind, size = struct.unpack_from("<II", self._data, at)
            is_segment = kind == LC_SEGMENT_64
            yield self._data[at + 8:at + 24].rstrip(b"\0").decode("ascii") if is_segment else kind, at
            at += size

    def make_room(self, size):
        """Has the load commands say that a signature of this size follows."""
        size = align(size, SIGNATURE_ALIGNMENT)
        struct.pack_into("<II", self._data, self._signature_command + 8, len(self._data), size)
        start = struct.unpack_from("<Q", self._data, self._linkedit + 40)[0]
        file_size = len(self._data) + size - start
        struct.pack_into("<Q", self._data, self._linkedit + 48, file_size)
        struct.pack_into("<Q", self._data, self._linkedit + 32, align(file_size, PAGE_SIZES[self._processor]))

    def code(self):
        """All that a signature covers."""
        return bytes(self._data)

    def with_signature(self, signature):
        return self.code() + signature.ljust(align(len(signature), SIGNATURE_ALIGNMENT), b"\0")
