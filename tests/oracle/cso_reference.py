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


def assemble(blocks, align, header, encode):
    """A file of these blocks. `encode` returns the bytes of a block and its flag, given its number and content."""
    data = bytearray(24 + 4 * (len(blocks) + 1))
    index = []

    def entry():
        data.extend(b"\xEE" * (-len(data) % (1 << align)))
        return len(data) >> align

    for number, block in enumerate(blocks):
        stored, flag = encode(number, block)
        index.append(entry() | flag)
        data += stored
    index.append(entry())
    data[:24] = header
    struct.pack_into("<%dI" % len(index), data, 24, *index)
    return bytes(data)


def compress(level, image, tail="dropped", block_size=BLOCK, align=0, version=1):
    """CSO with deflate blocks."""
    def encode(_, block):
        stored = deflate(level, block)
        return (block, PLAIN) if len(stored) >= len(block) else (stored, 0)

    header = struct.pack("<4sIQIBBH", b"CISO", 0, len(image), block_size, version, align, 0)
    return assemble(blocks_of(image, block_size, tail), align, header, encode)


def compress_strict(image, magic, block_size=BLOCK, align=0, tail="padded"):
    """ZSO (magic ZISO), or CSO 2 with LZ4 and deflate blocks in turn: the length says which blocks are plain."""
    def encode_zso(_, block):
        stored = lz4_block(block)
        return (block, PLAIN) if len(stored) >= len(block) else (stored, 0)

    def encode_cso2(number, block):
        is_lz4 = number % 2 == 0
        stored = lz4_block(block) if is_lz4 else deflate(9, block)
        if (-(-len(stored) // (1 << align)) << align) >= block_size:
            return block.ljust(block_size, b"\0"), 0
        return stored, PLAIN if is_lz4 else 0

    is_zso = magic == b"ZISO"
    header = struct.pack("<4sIQIBBH", magic, 24, len(image), block_size, 1 if is_zso else 2, align, 0)
    return assemble(blocks_of(image, block_size, tail), align, header, encode_zso if is_zso else encode_cso2)


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
