"""The icon's files are those that the program's own cup gives. usage: test_icons.py ICON_MAKER [TEST...]"""

import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest

KEPT = pathlib.Path(__file__).resolve().parent.parent.parent / "Packaging/icons"
SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
# What stands in an .icns under which type: pixels, and whether as PNG.
TYPES = {"ic04": (16, False), "ic05": (32, False), "ic07": (128, True), "ic08": (256, True), "ic09": (512, True),
         "ic10": (1024, True), "ic11": (32, True), "ic12": (64, True), "ic13": (256, True), "ic14": (512, True)}


def pixels(png):
    """Straight RGBA, whatever compressed it."""
    return subprocess.run(["convert", "png:-", "-depth", "8", "rgba:-"], input=png, check=True,
                          capture_output=True).stdout


def unpacked_argb(data, side):
    """Four planes of runs, as straight RGBA."""
    assert data[:4] == b"ARGB"
    planes, position = b"", 4
    while position < len(data):
        count = data[position]
        if count < 128:
            planes += data[position + 1:position + 2 + count]
            position += 2 + count
        else:
            planes += data[position + 1:position + 2] * (count - 125)
            position += 2
    area = side * side
    assert len(planes) == 4 * area
    alpha, red, green, blue = (planes[i * area:(i + 1) * area] for i in range(4))
    return bytes(value for pixel in zip(red, green, blue, alpha) for value in pixel)


def elements(icns):
    """RGBA pixels by type."""
    magic, length = struct.unpack_from(">4sI", icns)
    assert (magic, length) == (b"icns", len(icns))
    found, position = {}, 8
    while position < length:
        kind, size = struct.unpack_from(">4sI", icns, position)
        kind, data = kind.decode(), icns[position + 8:position + size]
        side, is_png = TYPES[kind]
        found[kind] = pixels(data) if is_png else unpacked_argb(data, side)
        position += size
    return found


class Icons(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.made = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        subprocess.run([ICON_MAKER, cls.made], check=True)

    def compare(self, kept, made):
        """Another compiler may round differently, by one."""
        self.assertEqual(len(kept), len(made))
        if kept != made:
            self.assertLessEqual(max(abs(a - b) for a, b in zip(kept, made)), 1)

    def test_the_pictures_kept_are_those_that_the_cup_gives(self):
        self.assertEqual({path.name for path in KEPT.iterdir() if path.suffix in ('.png', '.icns')}, {path.name for path in self.made.iterdir()})
        for size in SIZES:
            with self.subTest(size):
                kept = pixels((KEPT / f"{size}.png").read_bytes())
                self.assertEqual(len(kept), 4 * size * size)
                self.compare(kept, pixels((self.made / f"{size}.png").read_bytes()))

    def test_the_mac_icon_has_every_size_of_the_same_pictures(self):
        kept, made = (elements((folder / "Vantorel.icns").read_bytes()) for folder in (KEPT, self.made))
        self.assertEqual(set(kept), set(TYPES))
        for kind, (side, _) in TYPES.items():
            with self.subTest(kind):
                self.assertEqual(len(kept[kind]), 4 * side * side)
                self.compare(kept[kind], made[kind])
                if side in SIZES:
                    self.compare(kept[kind], pixels((KEPT / f"{side}.png").read_bytes()))

    def test_it_is_the_cup_on_a_plate_in_every_size(self):
        for size in SIZES:
            with self.subTest(size):
                picture = pixels((KEPT / f"{size}.png").read_bytes())

                def pixel(x, y):
                    return picture[4 * (int(y * size) * size + int(x * size)):][:4]

                self.assertEqual(pixel(0.001, 0.001)[3], 0, "the corner is not empty")
                self.assertEqual(pixel(0.5, 0.85)[3], 255, "the plate is not there")
                red, green, blue, alpha = pixel(0.45, 0.6)
                for actual, expected in zip((red, green, blue, alpha), (0.93 * 255, 0.62 * 255, 0.22 * 255, 255)):
                    self.assertAlmostEqual(actual, expected, delta=2)

    def test_what_cannot_be_written_is_said(self):
        self.assertEqual(subprocess.run([ICON_MAKER, "/nowhere"], capture_output=True).returncode, 1)
        self.assertEqual(subprocess.run([ICON_MAKER], capture_output=True).returncode, 2)


if __name__ == "__main__":
    ICON_MAKER = sys.argv.pop(1)
    unittest.main(verbosity=2)
