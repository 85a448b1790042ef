"""What a Mach-O file says about itself: its slices, their load commands, and symbols."""
import struct
import typing

PROCESSORS = {(0x01000007, 3): "x86_64", (0x0100000C, 0): "arm64"}  # for all models of each
MH_EXECUTE = 2
MH_WEAK_DEFINES = 0x8000
MH_PIE = 0x200000
VM_PROT_READ, VM_PROT_WRITE, VM_PROT_EXECUTE = 1, 2, 4

LC_SYMTAB, LC_LOAD_DYLIB, LC_SEGMENT_64, LC_UUID, LC_BUILD_VERSION = 0x2, 0xC, 0x19, 0x1B, 0x32
LC_RPATH = 0x8000001C
LC_LOADING = {0xC, 0x80000018, 0x8000001F, 0x20, 0x80000023}  # every way to load a library


def slices(data):
    """The slices of a universal file, by processor."""
    magic, count = struct.unpack_from(">II", data)
    if magic != 0xCAFEBABE:
        raise ValueError("not a universal Mach-O file")
    found = {}
    for i in range(count):
        processor, model, offset, size, _ = struct.unpack_from(">IIIII", data, 8 + 20 * i)
        kind = processor, model & 0xFFFFFF  # without the flags
        found[PROCESSORS.get(kind, f"{kind}")] = Slice(data[offset:offset + size], offset)
    return found


def version(number):
    return f"{number >> 16}.{number >> 8 & 0xFF}" + (f".{number & 0xFF}" if number & 0xFF else "")


def c_string(data, offset):
    return data[offset:data.index(b"\0", offset)].decode()


class Segment(typing.NamedTuple):
    address: int
    size: int
    offset: int
    protection: int  # at most


class Slice:
    def __init__(self, data, offset):
        self.data, self.offset = data, offset
        magic, _, _, self.filetype, count, _, self.flags, _ = struct.unpack_from("<8I", data)
        if magic != 0xFEEDFACF:
            raise ValueError("not a 64-bit Mach-O file")
        self.libraries, self.rpaths, self.segments, self.sections, self.symbols = [], [], {}, {}, []
        self.library_versions = {}
        self.platform = self.minimum_system = self.uuid = None
        offset = 32
        for _ in range(count):
            command, size = struct.unpack_from("<II", data, offset)
            self._read(command, offset)
            offset += size

    def _read(self, command, offset):
        if command == LC_BUILD_VERSION:
            self.platform, minimum = struct.unpack_from("<II", self.data, offset + 8)
            self.minimum_system = version(minimum)
        elif command in LC_LOADING:
            at, _, current = struct.unpack_from("<III", self.data, offset + 8)
            name = c_string(self.data, offset + at)
            self.libraries.append((command, name))
            self.library_versions[name] = version(current)
        elif command == LC_RPATH:
            self.rpaths.append(c_string(self.data, offset + struct.unpack_from("<I", self.data, offset + 8)[0]))
        elif command == LC_UUID:
            self.uuid = self.data[offset + 8:offset + 24]
        elif command == LC_SEGMENT_64:
            name, address, size, start, _, protection = struct.unpack_from("<16s4QI", self.data, offset + 8)
            self.segments[name.rstrip(b"\0").decode()] = Segment(address, size, start, protection)
            for i in range(struct.unpack_from("<I", self.data, offset + 64)[0]):
                at = offset + 72 + 80 * i
                name = self.data[at:at + 16].rstrip(b"\0").decode()
                self.sections[name] = struct.unpack_from("<Q", self.data, at + 40)[0]
        elif command == LC_SYMTAB:
            self._read_symbols(*struct.unpack_from("<4I", self.data, offset + 8))

    def _read_symbols(self, offset, count, strings, _):
        for i in range(count):
            name, kind, _, description, _ = struct.unpack_from("<IBBHQ", self.data, offset + 16 * i)
            self.symbols.append((c_string(self.data, strings + name), kind, description >> 8))

    def undefined(self):
        """(symbol, install name of the library it is taken from) for each symbol that others define."""
        for name, kind, ordinal in self.symbols:
            if kind & 0x0F == 0x01:  # external and undefined
                known = 1 <= ordinal <= len(self.libraries)
                yield name, self.libraries[ordinal - 1][1] if known else f"ordinal {ordinal}"

    def local_symbols(self):
        return [name for name, kind, _ in self.symbols if not kind & 0x01]
