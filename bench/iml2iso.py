#!/usr/bin/env python3
"""Rebuild of images from layouts as in the window, compared with cp of a file of the output's size, or with cat of the files if they are
many and small; all files in the page cache."""
import os
import sys

from disc_image import write_content
from side_by_side import compare, program, scratch_folder

SECTOR = 2048
LEADING_SECTORS = 30


def write_layout(folder, media, count, size, sparse=False):
    """Writes a layout of `count` consecutive files of `size` bytes, and the files."""
    dvd = media == "DVD"
    sectors = -(-size // SECTOR)
    lines = ["[SYS]", "VERSION=1.00", "MEDIA=" + media, "[LOC]"] + ([] if dvd else ["#Track"])
    lines += ["# the number of entries: %d" % (count + (2 if dvd else 1)), "#Start   End      Mode Fno Path",
              '%-8d %-8d 0.0  0   "game.ims"' % (0, LEADING_SECTORS - 1)]
    sector = LEADING_SECTORS
    for i in range(count):
        name = "F%05d.BIN" % i
        with open(os.path.join(folder, name), "wb") as file:
            write_content(file, size, sparse)
        lines.append('%-8d %-8d 0.0  0   "%s"' % (sector, sector + sectors - 1, name))
        sector += sectors
    if dvd:
        lines.append('%-8d %-8d 0.0  0   "game.ims" %d' % (sector, sector, LEADING_SECTORS * SECTOR))
    with open(os.path.join(folder, "game.iml"), "wb") as file:
        file.write("\r\n".join(lines + ["[/LOC]", "", ""]).encode())
    with open(os.path.join(folder, "game.ims"), "wb") as file:
        file.write(bytes(LEADING_SECTORS * SECTOR))
        if dvd:
            file.write(bytes(12) + sector.to_bytes(4, "little") + bytes(SECTOR - 16))


def main():
    good = True
    for media, count, size in (("DVD", 6, 96 << 20), ("CD", 6, 96 << 20), ("CD", 10000, 20000)):
        with scratch_folder() as folder:
            write_layout(folder, media, count, size)
            output, other = os.path.join(folder, "out.iso"), os.path.join(folder, "other.iso")
            ours = [program("vantrel"), "iml2iso", "--like-window", "-q", "-f", "-o", output, os.path.join(folder, "game.iml")]
            few = count < 100
            theirs = ["cp", output, other] if few else ["sh", "-c", "cd '%s' && cat game.ims F*.BIN > cat.iso" % folder]
            good &= compare("iml2iso, %s of %d files of %d bytes (%s)" % (media, count, size, "cp" if few else "cat"),
                            ours, theirs, 1.25 if few else 1.5)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
