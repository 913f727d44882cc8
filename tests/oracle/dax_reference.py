#!/usr/bin/env python3
"""A second implementation of DAX, written from the definition of the format, with Python's zlib.

usage: dax_reference.py compress LEVEL IMAGE DAX
       dax_reference.py expand DAX IMAGE
"""
import struct
import sys
import zlib

FRAME = 8192


def compress(level, image, padded=False, version=0, areas=()):
    """`padded`: the last frame is a whole one, filled with zeros. `areas`: first frame and number of frames of each run
    that is stored plain, in a file of version 1."""
    frames = [image[at:at + FRAME] for at in range(0, len(image), FRAME)]
    if frames and padded:
        frames[-1] = frames[-1].ljust(FRAME, b"\0")
    plain = {frame for first, count in areas for frame in range(first, first + count)}
    frames = [frame if number in plain else zlib.compress(frame, level) for number, frame in enumerate(frames)]
    positions, position = [], 32 + 6 * len(frames) + 8 * len(areas)
    for frame in frames:
        positions.append(position)
        position += len(frame)
    return b"".join([b"DAX\0" + struct.pack("<3I16x", len(image), version, len(areas)),
                     struct.pack("<%dI" % len(frames), *positions),
                     struct.pack("<%dH" % len(frames), *map(len, frames))] +
                    [struct.pack("<2I", *area) for area in areas] + frames)


def expand(dax):
    assert dax[:4] == b"DAX\0"
    size, version, area_count = struct.unpack_from("<3I", dax, 4)
    count = (size + FRAME - 1) // FRAME
    positions = struct.unpack_from("<%dI" % count, dax, 32)
    lengths = struct.unpack_from("<%dH" % count, dax, 32 + 4 * count)
    plain = set()
    for area in range(area_count if version == 1 else 0):
        first, frames = struct.unpack_from("<2I", dax, 32 + 6 * count + 8 * area)
        plain.update(range(first, first + frames))
    image = b""
    for number, (at, length) in enumerate(zip(positions, lengths)):
        image += dax[at:at + length] if number in plain else zlib.decompress(dax[at:at + length])
        assert len(image) >= min(size, (number + 1) * FRAME)
    return image[:size]


def main(words):
    if words[0] == "compress":
        level, source, target = int(words[1]), words[2], words[3]
        result = compress(level, open(source, "rb").read())
    else:
        source, target = words[1], words[2]
        result = expand(open(source, "rb").read())
    with open(target, "wb") as output:
        output.write(result)


if __name__ == "__main__":
    main(sys.argv[1:])
