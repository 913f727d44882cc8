#!/usr/bin/env python3
"""Renders the drawings of resources/art into the icons and bitmaps that the resource script embeds.

    scripts/render_art.py            renders into resources/icons and resources/bitmaps
    scripts/render_art.py --check    renders into a temporary folder and compares with the committed files

It needs only rsvg-convert (librsvg2-bin) and python3. Pixels are compared with a tolerance, because versions of the
renderer differ in anti-aliasing.
"""
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
ART = ROOT / "resources" / "art"

APPLICATION_ICON = 128
APPLICATION_SIZES = (16, 20, 24, 32, 40, 48, 64, 128, 256)
BUTTON_SIZES = (16, 24, 32, 40, 48, 64)
SMALL_DRAWING_UP_TO = 24  # up to this size, a simplified "_small" drawing is used if there is one
BITMAPS = {171: (575, 330), 187: (24, 24), 189: (24, 24)}

MEAN_TOLERANCE = 2.0  # mean difference per channel, of 255
FAR_DIFFERENCE = 64  # a pixel with a channel that differs by more counts as different
FAR_SHARE = 0.02


def unfilter(kind, line, above, step):
    for i in range(len(line)):
        left = line[i - step] if i >= step else 0
        up = above[i]
        corner = above[i - step] if i >= step else 0
        if kind == 1:
            line[i] = (line[i] + left) & 255
        elif kind == 2:
            line[i] = (line[i] + up) & 255
        elif kind == 3:
            line[i] = (line[i] + (left + up) // 2) & 255
        elif kind == 4:
            guess = left + up - corner
            distances = (abs(guess - left), abs(guess - up), abs(guess - corner))
            line[i] = (line[i] + (left, up, corner)[distances.index(min(distances))]) & 255


def read_png(data):
    """Width, height and RGBA rows of a non-interlaced 8-bit PNG, as rsvg-convert and this script write it."""
    position, compressed = 8, b""
    width = height = channels = 0
    while position < len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        body = data[position + 8:position + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", body)
            if depth != 8 or interlace or colour not in (2, 6):
                raise ValueError("unexpected kind of PNG")
            channels = 4 if colour == 6 else 3
        elif kind == b"IDAT":
            compressed += body
        position += 12 + length
    raw = zlib.decompress(compressed)
    stride = width * channels
    above, rows = bytearray(stride), []
    for y in range(height):
        start = y * (stride + 1)
        line = bytearray(raw[start + 1:start + 1 + stride])
        unfilter(raw[start], line, above, channels)
        above = line
        if channels == 3:
            line = bytearray(b"".join(bytes(line[i:i + 3]) + b"\xff" for i in range(0, stride, 3)))
        rows.append(bytes(line))
    return width, height, rows


def write_png(width, height, rows):
    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))
    raw = b"".join(b"\0" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def render(drawing, width, height):
    png = subprocess.run(["rsvg-convert", "-w", str(width), "-h", str(height), "-f", "png", str(drawing)],
                         check=True, stdout=subprocess.PIPE).stdout
    return read_png(png)


def swap_red_and_blue(row):
    out = bytearray(row)
    out[0::4], out[2::4] = row[2::4], row[0::4]
    return bytes(out)


def icon_bitmap(width, height, rows):
    """An icon entry in bitmap format: header, 32-bit pixels bottom up, one-bit transparency mask."""
    header = struct.pack("<IiiHHIIiiII", 40, width, height * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels, mask = b"", b""
    mask_stride = (width + 31) // 32 * 4
    for row in reversed(rows):
        pixels += swap_red_and_blue(row)
        bits = bytearray(mask_stride)
        for x in range(width):
            if row[x * 4 + 3] == 0:
                bits[x // 8] |= 0x80 >> (x % 8)
        mask += bytes(bits)
    return header + pixels + mask


def write_icon(images):
    entries, bodies = b"", b""
    offset = 6 + 16 * len(images)
    for width, height, rows in images:
        body = write_png(width, height, rows) if width >= 256 else icon_bitmap(width, height, rows)
        entries += struct.pack("<BBBBHHII", width & 255, height & 255, 0, 0, 1, 32, len(body), offset + len(bodies))
        bodies += body
    return struct.pack("<HHH", 0, 1, len(images)) + entries + bodies


def read_icon(data):
    """The images of an icon that write_icon wrote, as (width, height, RGBA rows)."""
    images = []
    for i in range(struct.unpack_from("<H", data, 4)[0]):
        size, offset = struct.unpack_from("<II", data, 6 + 16 * i + 8)
        body = data[offset:offset + size]
        if body[:4] == b"\x89PNG":
            images.append(read_png(body))
            continue
        width, doubled = struct.unpack_from("<ii", body, 4)
        rows = [swap_red_and_blue(body[40 + y * width * 4:40 + (y + 1) * width * 4]) for y in range(doubled // 2)]
        images.append((width, doubled // 2, rows[::-1]))
    return images


def write_bitmap(width, height, rows):
    """A 24-bit bitmap, bottom up. The drawing must be opaque."""
    stride = (width * 3 + 3) // 4 * 4
    body = b""
    for row in reversed(rows):
        line = bytearray(stride)
        line[0:width * 3:3], line[1:width * 3:3], line[2:width * 3:3] = row[2::4], row[1::4], row[0::4]
        body += bytes(line)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(body), 2835, 2835, 0, 0)
    return struct.pack("<2sIHHI", b"BM", 54 + len(body), 0, 0, 54) + info + body


def read_bitmap(data):
    width, height = struct.unpack_from("<ii", data, 18)
    stride = (width * 3 + 3) // 4 * 4
    rows = []
    for y in range(height):
        line = data[54 + (height - 1 - y) * stride:][:width * 3]
        row = bytearray(width * 4)
        row[0::4], row[1::4], row[2::4], row[3::4] = line[2::3], line[1::3], line[0::3], b"\xff" * width
        rows.append(bytes(row))
    return [(width, height, rows)]


def render_all(target):
    """Renders every drawing into target; returns the paths relative to it."""
    made = []
    for drawing in sorted(ART.glob("*.svg")):
        name = drawing.stem
        if name.endswith("_small"):
            continue
        number = int(re.match(r"\d+", name).group())
        if number in BITMAPS:
            path = pathlib.Path("bitmaps") / f"{number}.bmp"
            data = write_bitmap(*render(drawing, *BITMAPS[number]))
        else:
            path = pathlib.Path("icons") / f"{name}.ico"
            small = ART / f"{name}_small.svg"
            sizes = APPLICATION_SIZES if number == APPLICATION_ICON else BUTTON_SIZES
            data = write_icon([render(small if size <= SMALL_DRAWING_UP_TO and small.exists() else drawing, size, size)
                               for size in sizes])
        (target / path).parent.mkdir(parents=True, exist_ok=True)
        (target / path).write_bytes(data)
        made.append(path)
    return made


def difference(first, second):
    """None if both have the same images within the tolerance; otherwise a description of the difference."""
    if [image[:2] for image in first] != [image[:2] for image in second]:
        return "different sizes"
    for (width, height, a), (_, _, b) in zip(first, second):
        total = far = 0
        for row_a, row_b in zip(a, b):
            for x in range(0, width * 4, 4):
                alpha_a, alpha_b = row_a[x + 3], row_b[x + 3]
                channels = [abs(row_a[x + c] * alpha_a - row_b[x + c] * alpha_b) / 255 for c in range(3)]
                channels.append(abs(alpha_a - alpha_b))
                total += sum(channels)
                far += max(channels) > FAR_DIFFERENCE
        if total / (width * height * 4) > MEAN_TOLERANCE or far > FAR_SHARE * width * height:
            return f"the {width} x {height} image differs ({far} pixels)"
    return None


def check():
    faults = []
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        made = render_all(scratch)
        for path in made:
            committed = ROOT / "resources" / path
            if not committed.exists():
                faults.append(f"{path}: missing")
                continue
            reader = read_bitmap if path.suffix == ".bmp" else read_icon
            fault = difference(reader((scratch / path).read_bytes()), reader(committed.read_bytes()))
            if fault:
                faults.append(f"{path}: {fault}")
        for kind, pattern in (("icons", "*.ico"), ("bitmaps", "*.bmp")):
            for stray in (ROOT / "resources" / kind).glob(pattern):
                if stray.relative_to(ROOT / "resources") not in made:
                    faults.append(f"{stray.name}: has no drawing")
    for fault in faults:
        print(fault)
    print(f"{len(made)} files compared, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        sys.exit(check())
    render_all(ROOT / "resources")
