#!/usr/bin/env python3
"""A second implementation of CSO and ZSO, written from the definition of the formats, with Python's zlib and lz4.

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


def lz4_block(block):
    import lz4.block
    return lz4.block.compress(block, mode="high_compression", compression=9, store_size=False)


def compress_strict(image, magic, block_size=BLOCK, align=0, tail="padded"):
    """ZSO (magic ZISO), or CSO 2 with LZ4 and deflate blocks in turn: the length says which blocks are plain."""
    is_zso = magic == b"ZISO"
    blocks = blocks_of(image, block_size, tail)
    data = bytearray(24 + 4 * (len(blocks) + 1))
    index = []

    def entry():
        data.extend(b"\xEE" * (-len(data) % (1 << align)))
        return len(data) >> align

    for number, block in enumerate(blocks):
        is_lz4 = is_zso or number % 2 == 0
        stored = lz4_block(block) if is_lz4 else deflate(9, block)
        here = entry()
        if is_zso:
            is_plain = len(stored) >= len(block)
            index.append(here | (PLAIN if is_plain else 0))
        else:
            is_plain = (-(-len(stored) // (1 << align)) << align) >= block_size
            index.append(here | (PLAIN if is_lz4 and not is_plain else 0))
        data += (block if is_zso else block.ljust(block_size, b"\0")) if is_plain else stored
    index.append(entry())
    data[:24] = magic + struct.pack("<IQIBBH", 24, len(image), block_size, 1 if is_zso else 2, align, 0)
    struct.pack_into("<%dI" % len(index), data, 24, *index)
    return bytes(data)


def expand_zso(zso):
    import lz4.block
    magic, header_size, total, block_size, version, align, unused = struct.unpack("<4sIQIBBH", zso[:24])
    assert (magic, header_size, version, unused) == (b"ZISO", 24, 1, 0)
    index = struct.unpack_from("<%dI" % (-(-total // block_size) + 1), zso, 24)
    assert (index[-1] << align) == len(zso) and sorted(entry & ~PLAIN for entry in index) == [e & ~PLAIN for e in index]
    image = b""
    for here, following in zip(index, index[1:]):
        stored = zso[(here & ~PLAIN) << align:(following & ~PLAIN) << align]
        if here & PLAIN:
            image += stored[:block_size]
            continue
        for padding in range(1 << align):  # the block does not say where it ends
            try:
                block = lz4.block.decompress(stored[:len(stored) - padding], uncompressed_size=block_size)
                break
            except lz4.block.LZ4BlockError:
                pass
        assert len(block) == block_size
        image += block
    return image[:total]


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
