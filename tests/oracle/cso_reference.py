#!/usr/bin/env python3
"""A second implementation of CSO, written from the definition of the format, with Python's zlib.

usage: cso_reference.py compress LEVEL IMAGE CSO
       cso_reference.py expand CSO IMAGE
"""
import struct
import sys
import zlib

BLOCK = 2048
PLAIN = 0x80000000


def compress(level, image):
    blocks = [image[i * BLOCK:(i + 1) * BLOCK] for i in range(len(image) // BLOCK)]
    position = 24 + 4 * (len(blocks) + 1)
    index, data = [], []
    for block in blocks:
        stream = zlib.compressobj(level, zlib.DEFLATED, -15, 8, zlib.Z_DEFAULT_STRATEGY)
        stored = stream.compress(block) + stream.flush(zlib.Z_FINISH)
        entry = position
        if len(stored) >= BLOCK:
            stored, entry = block, position | PLAIN
        index.append(entry)
        data.append(stored)
        position += len(stored)
    index.append(position)
    header = b"CISO" + struct.pack("<IQIBBH", 0, len(image), BLOCK, 1, 0, 0)
    return header + struct.pack("<%dI" % len(index), *index) + b"".join(data)


def expand(cso):
    magic, _, total, block_size, _, align, _ = struct.unpack("<4sIQIBBH", cso[:24])
    assert magic == b"CISO"
    count = total // block_size
    index = struct.unpack_from("<%dI" % (count + 1), cso, 24)
    image = []
    for here, following in zip(index, index[1:]):
        start = (here & ~PLAIN) << align
        if here & PLAIN:
            image.append(cso[start:start + block_size])
        else:
            stored = cso[start:(following & ~PLAIN) << align]
            image.append(zlib.decompressobj(-15).decompress(stored))
        assert len(image[-1]) == block_size
    return b"".join(image)


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
