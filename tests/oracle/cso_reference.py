#!/usr/bin/env python3
"""A second implementation of CSO, written from the definition of the format, with Python's zlib.

usage: cso_reference.py compress LEVEL TAIL IMAGE CSO
       cso_reference.py expand CSO IMAGE

TAIL says what becomes of a partial last block: "dropped", "rest" (stored as it is) or "padded" (with zeros).
"""
import struct
import sys
import zlib

BLOCK = 2048
PLAIN = 0x80000000


def deflate(level, block):
    stream = zlib.compressobj(level, zlib.DEFLATED, -15, 8, zlib.Z_DEFAULT_STRATEGY)
    return stream.compress(block) + stream.flush(zlib.Z_FINISH)


def blocks_of(image, size, tail):
    blocks = [image[at:at + size] for at in range(0, len(image), size)]
    if blocks and len(blocks[-1]) < size:
        last = blocks.pop()
        if tail != "dropped":
            blocks.append(last.ljust(size, b"\0") if tail == "padded" else last)
    return blocks


def compress(level, image, tail="dropped", block_size=BLOCK, align=0, version=1, magic=b"CISO"):
    blocks = blocks_of(image, block_size, tail)
    data = bytearray(24 + 4 * (len(blocks) + 1))
    index = []

    def entry():
        data.extend(b"\xEE" * (-len(data) % (1 << align)))
        return len(data) >> align

    for block in blocks:
        stored = deflate(level, block)
        is_plain = len(stored) >= len(block)
        index.append(entry() | (PLAIN if is_plain else 0))
        data += block if is_plain else stored
    index.append(entry())
    data[:24] = magic + struct.pack("<IQIBBH", 0, len(image), block_size, version, align, 0)
    struct.pack_into("<%dI" % len(index), data, 24, *index)
    return bytes(data)


def expand(cso):
    magic, _, total, block_size, _, align, _ = struct.unpack("<4sIQIBBH", cso[:24])
    assert magic == b"CISO"
    count = -(-total // block_size)
    if struct.unpack_from("<I", cso, 24)[0] & ~PLAIN == 24 + 4 * count:  # a partial last block is not stored
        count = total // block_size
        total = count * block_size
    index = struct.unpack_from("<%dI" % (count + 1), cso, 24)
    image = b""
    for here, following in zip(index, index[1:]):
        left = min(total - len(image), block_size)
        start = (here & ~PLAIN) << align
        if here & PLAIN:
            block = cso[start:start + left]
        else:
            block = zlib.decompressobj(-15).decompress(cso[start:(following & ~PLAIN) << align])
        assert len(block) in (left, block_size)
        image += block[:left]
    return image


def main(words):
    if words[0] == "compress":
        level, tail, source, target = int(words[1]), words[2], words[3], words[4]
        result = compress(level, open(source, "rb").read(), tail)
    else:
        source, target = words[1], words[2]
        result = expand(open(source, "rb").read())
    with open(target, "wb") as output:
        output.write(result)


if __name__ == "__main__":
    main(sys.argv[1:])
