#!/usr/bin/env python3
"""Makes a sample UMD image: a valid ISO 9660 volume with mixed content, identical on every machine.

    make_sample_image.py FILE [MEBIBYTES]

The image has at least the given size (default: 64 MiB). Its files compress well, badly or not at all, so conversions
handle every kind of block."""
import os
import struct
import sys

SECTOR = 2048
MEBIBYTE = 1 << 20
FIRST_DIRECTORY = 22
DIRECTORY_FLAG = 2
STAMP = bytes([110, 1, 1, 0, 0, 0, 0])  # 2010-01-01, UTC
LONG_STAMP = b"2010010100000000\0"
NO_STAMP = b"0" * 16 + b"\0"


def both16(value):
    return struct.pack("<H", value) + struct.pack(">H", value)


def both32(value):
    return struct.pack("<I", value) + struct.pack(">I", value)


def sectors(length):
    return (length + SECTOR - 1) // SECTOR


def noise(count, seed):
    """Incompressible bytes from a 64-bit xorshift generator."""
    words = []
    state = seed * 0x9E3779B97F4A7C15 & (1 << 64) - 1 or 1
    for _ in range(count // 8):
        state ^= state << 13 & (1 << 64) - 1
        state ^= state >> 7
        state ^= state << 17 & (1 << 64) - 1
        words.append(state)
    return struct.pack("<%dQ" % len(words), *words)


class Content:
    """The content of a file, written in pieces so that the image is never completely in memory."""

    def __init__(self, length, piece):
        self.length = length
        self.piece = piece  # of an index: MEBIBYTE bytes

    def write(self, file):
        left, index = self.length, 0
        while left > 0:
            data = self.piece(index)[:left]
            file.write(data)
            left -= len(data)
            index += 1
        file.write(bytes(-self.length % SECTOR))


def text_piece(index):
    line = "Line %06d of the script: a door opens, somebody speaks, the music changes.\r\n"
    data = "".join(line % (index * 20000 + number) for number in range(20000)).encode()
    return data[:MEBIBYTE]


def mixed_piece(index):
    """Alternating blocks: noise, a repeated sequence of numbers, nearly incompressible bytes, zeros."""
    base = noise(MEBIBYTE // 8, index + 1)
    row = bytes(range(256)) * 8
    blocks = []
    for number in range(MEBIBYTE // SECTOR):
        kind = number % 4
        part = base[number * 256 % len(base):][:256]
        if kind == 0:
            blocks.append(base[number % 48 * SECTOR:][:SECTOR])
        elif kind == 1:
            blocks.append(bytes([number & 255]) + row[1:])
        elif kind == 2:
            blocks.append(base[number % 40 * SECTOR:][:SECTOR - 200] + part[:100] * 2)
        else:
            blocks.append(bytes(SECTOR))
    return b"".join(blocks)


def whole(data):
    return Content(len(data), lambda index: data[index * MEBIBYTE:(index + 1) * MEBIBYTE])


def tree(size):
    movie = max(size // MEBIBYTE - 40, 8) * MEBIBYTE
    return {
        "UMD_DATA.BIN": whole(b"SAMP-00001|0000000000000001|0001|G               |"),
        "PSP_GAME": {
            "ICON0.PNG": whole(noise(24 * 1024, 7)),
            "PARAM.SFO": whole(b"\0PSF\x01\x01\0\0" + b"sample volume of the converter\0" * 8),
            "SYSDIR": {
                "BOOT.BIN": Content(3 * MEBIBYTE // 2 + 17, text_piece),
                "EBOOT.BIN": Content(6 * MEBIBYTE, mixed_piece),
            },
            "USRDIR": {
                "EMPTY.DAT": whole(b""),
                "SCRIPT.TXT": Content(9 * MEBIBYTE, text_piece),
                "SPARE.DAT": Content(12 * MEBIBYTE, lambda index: bytes(MEBIBYTE)),
                "VOICE.BIN": Content(11 * MEBIBYTE + 5, lambda index: noise(MEBIBYTE, index + 100)),
                "MOVIE.BIN": Content(movie, mixed_piece),
            },
        },
    }


class Directory:
    def __init__(self, name, parent, children):
        self.name = name
        self.parent = parent or self
        self.children = children
        self.sector = 0
        self.number = 0


def directories_of(root):
    """Breadth first, as the path table requires."""
    found = [Directory("\0", None, root)]
    for directory in found:
        for name in sorted(directory.children):
            if isinstance(directory.children[name], dict):
                child = Directory(name, directory, directory.children[name])
                directory.children[name] = child
                found.append(child)
    return found


def record(name, sector, length, flags):
    """A directory record, ECMA-119 9.1."""
    padding = b"" if len(name) % 2 else b"\0"
    size = 33 + len(name) + len(padding)
    return (bytes([size, 0]) + both32(sector) + both32(length) + STAMP + bytes([flags, 0, 0]) + both16(1)
            + bytes([len(name)]) + name + padding)


def directory_sector(directory, places):
    data = record(b"\0", directory.sector, SECTOR, DIRECTORY_FLAG)
    data += record(b"\1", directory.parent.sector, SECTOR, DIRECTORY_FLAG)
    for name in sorted(directory.children):
        child = directory.children[name]
        if isinstance(child, Directory):
            data += record(name.encode(), child.sector, SECTOR, DIRECTORY_FLAG)
        else:
            data += record(name.encode() + b";1", places[id(child)], child.length, 0)
    assert len(data) <= SECTOR
    return data.ljust(SECTOR, b"\0")


def path_table(found, order):
    """A path table, ECMA-119 9.4, in one of the byte orders."""
    data = b""
    for directory in found:
        name = directory.name.encode()
        data += bytes([len(name), 0]) + struct.pack(order + "IH", directory.sector, directory.parent.number)
        data += name + b"\0" * (len(name) % 2)
    return data


def primary_descriptor(total, table_length, root_record):
    """The primary volume descriptor, ECMA-119 8.4, with the CD-XA mark in its application use area."""
    data = b"\1CD001\1\0" + b"PSP GAME".ljust(32) + b"SAMPLE".ljust(32) + bytes(8) + both32(total) + bytes(32)
    data += both16(1) + both16(1) + both16(SECTOR) + both32(table_length)
    data += struct.pack("<II", 18, 19) + struct.pack(">II", 20, 21) + root_record
    data += b" " * 128 + b"SAMPLE MAKER".ljust(128) + b" " * 128 + b"PSP GAME".ljust(128) + b" " * 37 * 3
    data += LONG_STAMP * 2 + NO_STAMP * 2 + b"\1\0"
    data = data.ljust(1024, b"\0") + b"CD-XA001"
    return data.ljust(SECTOR, b"\0")


def write_image(path, size):
    found = directories_of(tree(size))
    for index, directory in enumerate(found):
        directory.number = index + 1
        directory.sector = FIRST_DIRECTORY + index
    files = [child for directory in found for _, child in sorted(directory.children.items())
             if not isinstance(child, Directory)]
    places, position = {}, FIRST_DIRECTORY + len(found)
    for content in files:
        places[id(content)] = position
        position += sectors(content.length)
    total = max(position, sectors(size))
    little, big = path_table(found, "<"), path_table(found, ">")
    root_record = record(b"\0", found[0].sector, SECTOR, DIRECTORY_FLAG)
    with open(path, "wb") as image:
        image.write(bytes(16 * SECTOR))
        image.write(primary_descriptor(total, len(little), root_record))
        image.write(b"\xffCD001\1".ljust(SECTOR, b"\0"))
        for table in (little, little, big, big):
            image.write(table.ljust(SECTOR, b"\0"))
        for directory in found:
            image.write(directory_sector(directory, places))
        for content in files:
            content.write(image)
        image.truncate(total * SECTOR)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    path = sys.argv[1]
    write_image(path + ".part", int(sys.argv[2] if len(sys.argv) == 3 else 64) * MEBIBYTE)
    os.replace(path + ".part", path)


if __name__ == "__main__":
    main()
