#!/usr/bin/env python3
"""A second implementation of the window's rebuild of images from layouts, and its comparison with the program's output.

usage: rebuild_reference.py VANTREL

Generates layouts of all kinds (CD, UMD, DVD; sizes around every boundary; holes; files shorter and longer than their
range; nested folders), rebuilds each with the program and with the functions below, and compares the images.
"""

import os
import random
import struct
import subprocess
import sys
import tempfile

SECTOR = 2048
MARK = bytes([0x0B, 0x02, 0x13, 0x06, 0x01, 0x1A, 0x0C, 0x03, 0x15, 0x08])
SIZES = [0, 1, 2038, 2043, 2047, 2048, 2049]


def padding(size):
    count = SECTOR if size == 0 else -size % SECTOR
    return (MARK + bytes(SECTOR))[:count]


def listed_files(text, without_tail):
    """(first, last, path) of the entries after the leading entry, without the last `without_tail` entries."""
    lines = text[text.index("# the number of entries"):].split("\r\n")
    count = int(lines[0].split(":")[1])
    entries = lines[2:2 + count][1:count - without_tail]
    return [(int(e[0:9]), int(e[9:19].split()[0]), e[28:-1]) for e in entries]


def with_volume_size(image):
    sectors = len(image) // SECTOR
    image[32848:32856] = struct.pack("<I", sectors) + struct.pack(">I", sectors)
    return image


def read(folder, path):
    with open(os.path.join(folder, path.replace("\\", "/")), "rb") as file:
        return file.read()


def rebuilt_cd(text, leading, folder):
    image = bytearray(leading)
    for first, _, path in listed_files(text, 0):
        content = read(folder, path)
        content += padding(len(content))
        start = first * SECTOR
        if len(image) < start:
            image += bytes(start - len(image))
        image[start:start + len(content)] = content
    is_cd = leading[32777:32778] == b"L" and leading[33792:33793] == b"C"
    if is_cd:
        image += b"postgap".ljust(150 * SECTOR, b"\0")
    return with_volume_size(image)


def rebuilt_dvd(text, leading, folder):
    image = bytearray(leading[:-SECTOR])
    trailing = leading[-SECTOR:]
    files = listed_files(text, 1)
    next_sector = len(image) // SECTOR
    for first, last, path in files:
        image += bytes(max(0, first - next_sector) * SECTOR)
        content = read(folder, path)
        image += content + padding(len(content))
        next_sector = last + 1
    place = struct.unpack("<I", trailing[12:16])[0]
    image += bytes(max(0, place - next_sector) * SECTOR) + trailing
    return with_volume_size(image)


def layout_text(media, entries, leading_sectors, volume_last):
    dvd = media == "DVD"
    mode = "0.0" if dvd else "2.1"
    lines = ["[SYS]", "VERSION=1.00", "MEDIA=" + media, "TARGET=" + ("PSP" if media == "UMD" else "PS2"),
             "DISCVERSION=1.00", "DATE=2026/01/02-03:04:05", "[/SYS]", "", "[CUE]", 'DISCNAME="%32s"' % ""]
    if not dvd:
        lines += ["#Track   Index   Time        Form        Control        LBN",
                  " 00      00      00:00:00    CDROM2_0    DATA"]
    lines += ["[/CUE]", "", "[LOC]", "# the number of entries: %d" % (len(entries) + (2 if dvd else 1)),
              "#Start   End      Mode Fno " + ("Source" if dvd else "Path"),
              '%-8d %-8d %s  0   "%s"' % (0, leading_sectors - 1, mode, "game.ims")]
    lines += ['%-8d %-8d %s  0   "%s"' % (first, last, mode, path) for first, last, path in entries]
    if dvd:
        lines += ['%-8d %-8d %s  0   "%s" %d' % (volume_last, volume_last, mode, "game.ims", leading_sectors * SECTOR)]
    return "\r\n".join(lines + ["[/LOC]", "", ""])


def leading_bytes(media, sectors, volume_last, marked, rng):
    data = bytearray(rng.randbytes(sectors * SECTOR))
    data[32776:32779] = b"PSP" if media == "UMD" else b"PLA"
    data[33792:33800] = b"CD-XA001" if marked and media != "DVD" else bytes(8)
    if media == "DVD":
        data += rng.randbytes(12) + struct.pack("<I", volume_last) + bytes(2032)
    return bytes(data)


def generate(folder, media, sizes, rng, fit):
    """Files of the given sizes in ascending ranges, which have the exact length if `fit`, otherwise also other lengths."""
    leading_sectors = rng.randint(17, 30)
    sector = leading_sectors + rng.choice([0, 0, 3])
    entries = []
    for i, size in enumerate(sizes):
        name = rng.choice(["", "DIR\\", "DIR\\SUB\\"]) + "F%03d.BIN" % i
        path = os.path.join(folder, name.replace("\\", "/"))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(rng.randbytes(size))
        sectors = max(1, -(-size // SECTOR)) + (0 if fit else rng.choice([-1, 0, 0, 1, 5]))
        sectors = max(1, sectors)
        entries.append((sector, sector + sectors - 1, name))
        sector += sectors + rng.choice([0, 0, 0, 1, 7, 40])
    volume_last = sector + rng.choice([0, 1, 16])
    leading = leading_bytes(media, leading_sectors, volume_last, rng.random() < 0.7, rng)
    return layout_text(media, entries, leading_sectors, volume_last), leading


def check(vantrel, media, sizes, rng, fit, what):
    with tempfile.TemporaryDirectory() as folder:
        text, leading = generate(folder, media, sizes, rng, fit)
        with open(os.path.join(folder, "game.iml"), "wb") as file:
            file.write(text.encode("latin-1"))
        with open(os.path.join(folder, "game.ims"), "wb") as file:
            file.write(leading)
        expected = (rebuilt_dvd if media == "DVD" else rebuilt_cd)(text, leading, folder)
        image = os.path.join(folder, "out.iso")
        subprocess.run([vantrel, "iml2iso", "--like-window", "-q", "-o", image, os.path.join(folder, "game.iml")], check=True)
        with open(image, "rb") as file:
            if file.read() != bytes(expected):
                sys.exit("%s: the images differ" % what)


def main():
    vantrel = sys.argv[1]
    rng = random.Random(20260102)
    count = 0
    for media in ("CD", "UMD", "DVD"):
        cases = [[], [0], [2048], [1]]
        cases += [[SIZES[(i + shift) % len(SIZES)] for i in range(len(SIZES))] for shift in range(len(SIZES))]
        cases += [[rng.choice(SIZES + [5000, 40960, 123457]) for _ in range(rng.randint(1, 60))] for _ in range(25)]
        for sizes in cases:
            for fit in (True, False):
                check(vantrel, media, sizes, rng, fit, "%s %s" % (media, sizes))
                count += 1
    print("%d layouts rebuilt identically" % count)


if __name__ == "__main__":
    main()
