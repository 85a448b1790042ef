"""Pictures of a screen: read, compared, measured, cut out and written, with nothing but the standard library.

Formats: PNG (https://www.w3.org/TR/png/), PPM (https://netpbm.sourceforge.net/doc/ppm.html), and XWD, in which Xvfb keeps
its frame buffer (X11/XWDFile.h)."""

import collections
import struct
import zlib

Box = collections.namedtuple("Box", "left top right bottom")  # right and bottom are the first outside


def grown(box, margin):
    return Box(box.left - margin, box.top - margin, box.right + margin, box.bottom + margin)


def center(box):
    return (box.left + box.right) // 2, (box.top + box.bottom) // 2


class Picture:
    def __init__(self, width, height, pixels):
        self.width, self.height = width, height
        self.pixels = bytes(pixels)  # red, green and blue, row by row

    def __eq__(self, other):
        return (self.width, self.height, self.pixels) == (other.width, other.height, other.pixels)

    def row(self, y, left=0, right=None):
        start = y * self.width
        return self.pixels[3 * (start + left):3 * (start + (self.width if right is None else right))]

    def at(self, x, y):
        return tuple(self.pixels[3 * (y * self.width + x):3 * (y * self.width + x) + 3])

    def clamped(self, box):
        return Box(max(box.left, 0), max(box.top, 0), min(box.right, self.width), min(box.bottom, self.height))

    def cut(self, box):
        box = self.clamped(box)
        rows = (self.row(y, box.left, box.right) for y in range(box.top, box.bottom))
        return Picture(box.right - box.left, box.bottom - box.top, b"".join(rows))

    def colors(self):
        return [self.pixels[index:index + 3] for index in range(0, len(self.pixels), 3)]


def differing(one, other):
    """The pixels that differ, as a set of (x, y)."""
    points = set()
    for y in range(min(one.height, other.height)):
        a, b = one.row(y), other.row(y)
        if a != b:
            points |= {(x, y) for x in range(min(one.width, other.width)) if a[3 * x:3 * x + 3] != b[3 * x:3 * x + 3]}
    return points


def clusters(points, reach=8):
    """The boxes of points that lie together, the largest first."""
    cells = collections.defaultdict(list)
    for x, y in points:
        cells[x // reach, y // reach].append((x, y))
    boxes = []
    while cells:
        found, open_cells = [], [next(iter(cells))]
        while open_cells:
            column, row = open_cells.pop()
            if (column, row) in cells:
                found += cells.pop((column, row))
                open_cells += [(column + x, row + y) for x in (-1, 0, 1) for y in (-1, 0, 1)]
        xs, ys = [x for x, _ in found], [y for _, y in found]
        boxes.append(Box(min(xs), min(ys), max(xs) + 1, max(ys) + 1))
    return sorted(boxes, key=lambda box: (box.right - box.left) * (box.bottom - box.top), reverse=True)


def luminance(color):
    """https://www.w3.org/TR/WCAG21/#dfn-relative-luminance"""
    parts = [part / 255 for part in color]
    parts = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2]


def contrast(one, other):
    """https://www.w3.org/TR/WCAG21/#dfn-contrast-ratio"""
    light, dark = sorted((luminance(one), luminance(other)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


def background(picture):
    return collections.Counter(picture.colors()).most_common(1)[0][0]


def plain(picture, box):
    """What of a box has the background's color for the greater part: a menu without its shadow, and without the panel."""
    part = picture.cut(box)
    ground = background(part)
    points = [divmod(index, part.width) for index, color in enumerate(part.colors()) if color == ground]
    in_rows, in_columns = collections.Counter(y for y, _ in points), collections.Counter(x for _, x in points)
    rows = [y for y, count in in_rows.items() if 2 * count > part.width]
    columns = [x for x, count in in_columns.items() if 2 * count > part.height]
    return Box(box.left + min(columns), box.top + min(rows), box.left + max(columns) + 1, box.top + max(rows) + 1)


def visibility(picture):
    """The contrast of what is drawn on a panel with the panel. What is drawn has blurred edges, which say nothing: its
    strongest quarter counts."""
    panel = background(picture)
    counted = collections.Counter(picture.colors())
    drawn = [contrast(color, panel) for color, count in counted.items() for _ in range(count)
             if max(abs(a - b) for a, b in zip(color, panel)) > 3]
    if not drawn:
        return 1.0
    drawn.sort(reverse=True)
    strongest = drawn[:max(len(drawn) // 4, 1)]
    return strongest[len(strongest) // 2]


def colored(picture):
    """How many pixels have a strong warm color: the filled cup is amber, outlines and panels, also under a pointer, are not."""
    return sum(color[0] - color[2] > 70 for color in picture.colors())


def text_lines(picture):
    """The lines of text of a menu, top to bottom, as (top, bottom) each. What is too low for text separates."""
    ground = background(picture)
    margin = 3
    lines, start = [], None
    for y in range(margin, picture.height - margin + 1):
        row = picture.row(y, margin, picture.width - margin) if y < picture.height - margin else b""
        has_ink = any(row[3 * x:3 * x + 3] != ground and contrast(row[3 * x:3 * x + 3], ground) > 1.5
                      for x in range(len(row) // 3))
        if has_ink and start is None:
            start = y
        elif not has_ink and start is not None:
            if y - start >= 6:
                lines.append((start, y))
            start = None
    return lines


def read_xwd(data):
    fields = struct.unpack(">25I", data[:100])
    header, width, height, byte_order, stride, colors = (fields[index] for index in (0, 4, 5, 7, 12, 19))
    start = header + 12 * colors
    order = (2, 1, 0) if byte_order == 0 else (1, 2, 3)
    pixels = bytearray(3 * width * height)
    body = data[start:start + stride * height]
    if stride != 4 * width:
        body = b"".join(body[y * stride:y * stride + 4 * width] for y in range(height))
    for part, source in enumerate(order):
        pixels[part::3] = body[source::4]
    return Picture(width, height, pixels)


def read_ppm(data):
    """Without comments, which no screenshot has."""
    kind, width, height, _ = data[:64].split(maxsplit=4)[:4]
    assert kind == b"P6", kind
    width, height = int(width), int(height)
    return Picture(width, height, data[-3 * width * height:])


def _unfiltered(kind, line, before, step):
    if kind == 1:
        for index in range(step, len(line)):
            line[index] = (line[index] + line[index - step]) & 255
    elif kind == 2:
        line = bytearray((a + b) & 255 for a, b in zip(line, before))
    elif kind == 3:
        for index in range(len(line)):
            left = line[index - step] if index >= step else 0
            line[index] = (line[index] + (left + before[index]) // 2) & 255
    elif kind == 4:
        for index in range(len(line)):
            left, corner = (line[index - step], before[index - step]) if index >= step else (0, 0)
            above = before[index]
            estimate = left + above - corner
            by_left, by_above, by_corner = abs(estimate - left), abs(estimate - above), abs(estimate - corner)
            nearest = left if by_left <= by_above and by_left <= by_corner else above if by_above <= by_corner else corner
            line[index] = (line[index] + nearest) & 255
    return line


def read_png(data):
    position, body, head = 8, b"", None
    while position < len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        chunk = data[position + 8:position + 8 + length]
        head = chunk if kind == b"IHDR" else head
        body += chunk if kind == b"IDAT" else b""
        position += 12 + length
    width, height, depth, color, _, _, interlaced = struct.unpack(">IIBBBBB", head)
    assert depth == 8 and color in (2, 6) and not interlaced, "a kind of PNG that no screenshot is"
    step = 3 if color == 2 else 4
    raw = zlib.decompress(body)
    rows, before = [], bytearray(step * width)
    for y in range(height):
        start = y * (step * width + 1)
        before = _unfiltered(raw[start], bytearray(raw[start + 1:start + 1 + step * width]), before, step)
        rows.append(bytes(before))
    pixels = b"".join(rows)
    if step == 4:
        opaque = bytearray(3 * width * height)
        for part in range(3):
            opaque[part::3] = pixels[part::4]
        pixels = opaque
    return Picture(width, height, pixels)


def write_png(picture, path):
    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    rows = b"".join(b"\0" + picture.row(y) for y in range(picture.height))
    head = struct.pack(">IIBBBBB", picture.width, picture.height, 8, 2, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows, 9)) +
                     chunk(b"IEND", b""))
