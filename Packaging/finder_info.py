"""Takes from the files of an HFS+ image the type and creator '????', which xorriso gives to all and cannot be told not to.
A Mac would show them as the attribute com.apple.FinderInfo, copy that along, and then refuse to sign what was copied.

The format: https://developer.apple.com/library/archive/technotes/tn/tn1150.html"""

import mmap
import struct

PARTITION_MAP_BLOCK = 512
CATALOG_FORK = 1024 + 272  # from the volume's start
FILE_RECORD, USER_INFO = 2, 48  # and where a record has type and creator
UNKNOWN = b"????" * 2


def _volume(image):
    """Where the HFS+ volume starts, by Apple's partition map."""
    at = PARTITION_MAP_BLOCK
    while image[at:at + 2] == b"PM":
        if image[at + 48:at + 80].rstrip(b"\0") == b"Apple_HFS":
            return struct.unpack_from(">I", image, at + 8)[0] * PARTITION_MAP_BLOCK
        at += PARTITION_MAP_BLOCK
    raise ValueError("the image has no HFS+ partition")


def _leaf_records(image):
    """Where the data of each of the catalog's records starts."""
    volume = _volume(image)
    block_size = struct.unpack_from(">I", image, volume + 1024 + 40)[0]
    blocks, first_block, first_count = struct.unpack_from(">III", image, volume + CATALOG_FORK + 12)
    if first_count != blocks:
        raise ValueError("the catalog is in several pieces")
    catalog = volume + first_block * block_size
    node, = struct.unpack_from(">I", image, catalog + 24)
    node_size, = struct.unpack_from(">H", image, catalog + 32)
    while node:
        start = catalog + node * node_size
        node, count = struct.unpack_from(">I6xH", image, start)
        for number in range(1, count + 1):
            key = start + struct.unpack_from(">H", image, start + node_size - 2 * number)[0]
            yield key + 2 + struct.unpack_from(">H", image, key)[0]


def clear_types(path):
    with open(path, "r+b") as file, mmap.mmap(file.fileno(), 0) as image:
        for record in _leaf_records(image):
            kind, = struct.unpack_from(">H", image, record)
            info = slice(record + USER_INFO, record + USER_INFO + len(UNKNOWN))
            if kind == FILE_RECORD and image[info] == UNKNOWN:
                image[info] = bytes(len(UNKNOWN))
