#!/usr/bin/env python3
"""A second implementation of DAX, written from the definition of the format, with Python's zlib.

usage: dax_reference.py compress LEVEL IMAGE DAX
       dax_reference.py expand DAX IMAGE
"""
import struct
import sys
import zlib

FRAME = 8192


def compress(level, image):
    frames = [zlib.compress(image[i:i + FRAME], level) for i in range(0, len(image), FRAME)]
    positions, position = [], 32 + 6 * len(frames)
    for frame in frames:
        positions.append(position)
        position += len(frame)
    return b"".join([b"DAX\0" + struct.pack("<I24x", len(image)),
                     struct.pack("<%dI" % len(frames), *positions),
                     struct.pack("<%dH" % len(frames), *map(len, frames))] + frames)


def expand(dax):
    assert dax[:4] == b"DAX\0"
    size, = struct.unpack_from("<I", dax, 4)
    count = (size + FRAME - 1) // FRAME
    positions = struct.unpack_from("<%dI" % count, dax, 32)
    lengths = struct.unpack_from("<%dH" % count, dax, 32 + 4 * count)
    image = b"".join(zlib.decompress(dax[at:at + length]) for at, length in zip(positions, lengths))
    assert len(image) == size
    return image


def main(words):
    if words[0] == "compress":
        level, source, target = int(words[1]), words[2], words[3]
        result = compress(level, open(source, "rb").read())
    else:
        source, target = words[1], words[2]
        result = expand(open(source, "rb").read())
    with open(target, "wb") as output:
        output.write(result)


main(sys.argv[1:])
