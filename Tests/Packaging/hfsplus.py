"""Reads the HFS+ volume of a disk image, as far as a Mac needs it to open an application in it (Apple's TN1150)."""

import struct
import unicodedata

SECTOR = 512
ROOT_FOLDER = 2


class Entry:
    def __init__(self, mode, content=None, finder_info=bytes(32)):
        self.mode = mode
        self.content = content  # absent for a folder; a symbolic link's is where it points
        self.finder_info = finder_info


class Volume:
    def __init__(self, image):
        self._image = image
        self._start = self._partition() * SECTOR
        header = image[self._start + 1024:][:512]
        if header[:2] != b"H+":
            raise ValueError("no HFS+ volume header")
        self._block_size = struct.unpack_from(">I", header, 40)[0]
        self.created = struct.unpack_from(">I", header, 16)[0]
        self.name = None
        self._catalog = self._fork(header, 272)
        self.entries = self._read_entries()

    def _partition(self):
        """The first sector of the partition that Apple's map calls Apple_HFS."""
        count, index = 1, 0
        unit = struct.unpack_from(">H", self._image, 2)[0]
        while index < count:
            entry = self._image[unit * (index + 1):][:unit]
            signature, count, start = struct.unpack_from(">2s2xII", entry)
            if signature != b"PM":
                raise ValueError("no Apple partition map")
            if entry[48:80].rstrip(b"\0") == b"Apple_HFS":
                return start * unit // SECTOR
            index += 1
        raise ValueError("no HFS partition")

    def _fork(self, data, offset):
        size = struct.unpack_from(">Q", data, offset)[0]
        content = b""
        for extent in range(8):
            start, count = struct.unpack_from(">II", data, offset + 16 + 8 * extent)
            begin = self._start + start * self._block_size
            content += self._image[begin:begin + count * self._block_size]
        if len(content) < size:
            raise ValueError("a file in more than eight pieces, or beyond the end")
        return content[:size]

    def _leaves(self):
        """Every record of the catalog's leaves, in their order."""
        first_leaf = struct.unpack_from(">I", self._catalog, 14 + 10)[0]
        node_size = struct.unpack_from(">H", self._catalog, 14 + 18)[0]
        number = first_leaf
        while number:
            node = self._catalog[number * node_size:][:node_size]
            number, kind, count = struct.unpack_from(">I4xbxH", node)
            if kind != -1:
                raise ValueError("a node that is no leaf among the leaves")
            for record in range(count):
                yield node[struct.unpack_from(">H", node, node_size - 2 * (record + 1))[0]:]

    def _read_entries(self):
        folders = {}  # by number: parent and name
        files = []
        for record in self._leaves():
            key_length, parent, name_length = struct.unpack_from(">HIH", record)
            name = unicodedata.normalize("NFC", record[8:8 + 2 * name_length].decode("utf-16-be"))
            data = record[2 + key_length + key_length % 2:]
            kind = struct.unpack_from(">h", data)[0]
            if kind not in (1, 2):
                continue  # a thread, which leads back to what was read already
            number = struct.unpack_from(">I", data, 8)[0]
            mode = struct.unpack_from(">H", data, 42)[0]
            if kind == 1:
                folders[number] = (parent, name)
                files.append((parent, name, Entry(mode, finder_info=data[48:80])))
            else:
                files.append((parent, name, Entry(mode, self._fork(data, 88), data[48:80])))
        self.name = folders[ROOT_FOLDER][1]

        def path(parent, name):
            return name if parent == ROOT_FOLDER else path(*folders[parent]) + "/" + name

        return {path(parent, name): entry for parent, name, entry in files if parent >= ROOT_FOLDER}
