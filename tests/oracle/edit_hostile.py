#!/usr/bin/env python3
"""Edits discs with damaged structures: each is refused with a reason and left alone, or the edit is right and makes nothing
worse.

usage: edit_hostile.py VANTREL [IMAGE SEED]
"""
import os
import random
import re
import struct
import subprocess
import sys
import tempfile

from disc import SECTOR, Disc
from edit_images import own_image

IMAGES = ("umd", "joliet", "dvd", "dvd-joliet", "umd-folders")
ROUNDS = 120
PATH = {"umd-folders": "SOUND/VOICE007.VAG"}
INTERESTING = (0, 1, 2, 16, 33, 34, 127, 128, 255)


def structure_bytes(disc):
    """Positions of bytes that mean something: those of structures that are not zero, and some behind them."""
    positions = []
    for first, count, what in disc.areas():
        if what != "file":
            part = disc.image[first * SECTOR:(first + count) * SECTOR]
            positions += [first * SECTOR + index for index, byte in enumerate(part) if byte or index % 61 == 0]
    return positions


def damaged(image, positions, rng):
    """The image with one to three changes: of a byte, of a number, or a copy of a structure over another one."""
    image = bytearray(image)
    for _ in range(rng.choice((1, 1, 2, 3))):
        position = rng.choice(positions)
        kind = rng.randrange(4)
        if kind == 0:
            image[position] = rng.choice(INTERESTING + (image[position] ^ 1 << rng.randrange(8),))
        elif kind == 1:
            image[position] = (image[position] + rng.choice((1, 255))) % 256
        elif kind == 2:
            number = rng.choice((0, 16, 17, 256, 0x7FFFFFFF, 0xFFFFFFFF, len(image) // SECTOR))
            image[position:position + 8] = struct.pack("<I", number) + struct.pack(">I", number)
        else:
            source = rng.choice(positions)
            length = rng.choice((4, 8, 34, 48))
            image[position:position + length] = image[source:source + length]
    return bytes(image)


def problems_of(image):
    """The problems of an image without their numbers, or None if it cannot be read at all."""
    try:
        disc = Disc(image)
    except (ValueError, struct.error, IndexError, KeyError, UnicodeDecodeError):
        return None, None
    return disc, sorted(re.sub(r"\d+", "N", text) for text in disc.problems)


def wrong_after(base_image, new_image, path, content):
    """What is wrong after an edit of a damaged image."""
    base, before = problems_of(base_image)
    new, after = problems_of(new_image)
    if base is None:
        return None
    if new is None:
        return "the new image cannot be read"
    added = list(after)
    for text in before:
        if text in added:
            added.remove(text)
    if added:
        return "new problems: %s" % added[:3]
    sides = [(tree.files, new.trees[name].files) for name, tree in base.trees.items()]
    if base.udf and new.udf:
        sides.append((base.udf.files, new.udf.files))
    for old_files, new_files in sides:
        file = new_files.get(path)
        if path in old_files and (file is None or new.content(file) != content):
            return "%s lacks its new content" % path
    return None


def check(vantrel, folder, name, image, size):
    path = PATH.get(name, "DATA/DEEP/GAMMA.BIN")
    content = random.Random(size).randbytes(size)
    for file_name, data in (("game.iso", image), ("new", content)):
        with open(os.path.join(folder, file_name), "wb") as file:
            file.write(data)
    place = os.path.join(folder, "game.iso")
    done = subprocess.run([vantrel, "replace", "--in-place", "game.iso", path + "=new"], cwd=folder, capture_output=True,
                          stdin=subprocess.DEVNULL, timeout=20)
    with open(place, "rb") as file:
        after = file.read()
    if done.returncode == 1:
        if after != image:
            return "refused, but the image has changed", False
        return (None if b"game.iso" in done.stderr else "the reason does not name the image: %s" % done.stderr), False
    if done.returncode != 0:
        return "status %d: %s" % (done.returncode, done.stderr[-300:]), False
    return wrong_after(image, after, path, content), True


def main():
    vantrel = os.path.abspath(sys.argv[1])
    only = sys.argv[2:4]
    failures, accepted = [], 0
    with tempfile.TemporaryDirectory(prefix="vantrel-hostile-") as folder:
        for name in only[:1] or IMAGES:
            image = own_image(name)
            positions = structure_bytes(Disc(image))
            for seed in [int(only[1])] if only else range(ROUNDS):
                rng = random.Random("%s %d" % (name, seed))
                wrong, was_accepted = check(vantrel, folder, name, damaged(image, positions, rng),
                                            rng.choice((100, 70001, 70002, 150000)))
                accepted += was_accepted
                if wrong:
                    failures.append("%s %d: %s" % (name, seed, wrong))
    print("%d damaged images were accepted" % accepted)
    sys.exit("\n".join(failures) if failures else 0)


if __name__ == "__main__":
    main()
