#!/usr/bin/env python3
"""Memory and time of the console program for growing images of noise and of holes: memory stays within 64 MiB plus 8 bytes
per sector, and processor time grows no faster than the image. Other load on the machine changes neither much.

    growth.py [--sizes 1,2,4] [--folder FOLDER] [cso] [dax] [raw] [layout] [disc]

Sizes are in GiB; the limit of a format replaces a larger size. The folder needs room for twice the largest size; the
default is a folder in memory."""
import argparse
import os
import subprocess
import sys
import tempfile

from disc_image import MEBIBYTE, SECTOR, split, write_disc
from iml2iso import write_layout
from side_by_side import program, scratch_folder

GIBIBYTE = 1 << 30
MAX_MEMORY = 64 * MEBIBYTE
MAX_SECTOR_MEMORY = 8
# Limit of the ratio of processor seconds per byte, largest image to smallest. START_SECONDS is the cost of an empty run.
MAX_GROWTH = 1.5
START_SECONDS = 0.01

MAX_RAW = 449_850 * SECTOR
MAX_CSO = 2 * GIBIBYTE - SECTOR
MAX_DAX = 4 * GIBIBYTE - 64 * MEBIBYTE  # noise grows slightly when deflated, and positions end at 4 GiB


class Growth:
    """The table of results, one row per run."""

    def __init__(self):
        self.runs = {}
        self.good = True
        print("| command | content | GiB | seconds | processor seconds per GiB | MiB of memory | limit |\n|" + " --- |" * 7)

    def run(self, content, size, words):
        """Runs a command on an image of `size` bytes; the last of the words is its input."""
        done = subprocess.run(["/usr/bin/time", "-f", "%e %U %S %M", program("vantrel")] + words, check=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        elapsed, user, system, kibibytes = (float(word) for word in done.stderr.split()[-4:])
        seconds, memory = user + system, kibibytes * 1024
        limit = MAX_MEMORY + MAX_SECTOR_MEMORY * (size // SECTOR)
        name = "%s %s" % (words[0], os.path.splitext(words[-1])[1][1:]) if words[0] == "verify" else words[0]
        self.runs.setdefault((name, content), []).append((size, seconds))
        print("| `%s` | %s | %.2f | %.2f | %.2f | %.1f | %.1f |%s" % (
            name, content, size / GIBIBYTE, elapsed, seconds * GIBIBYTE / size, memory / MEBIBYTE, limit / MEBIBYTE,
            "" if memory <= limit else " OVER"), flush=True)
        self.good &= memory <= limit

    def check_times(self):
        for (name, content), runs in self.runs.items():
            first, last = (max(seconds - START_SECONDS, 0.05) / size for size, seconds in (min(runs), max(runs)))
            if last > MAX_GROWTH * first:
                self.good = False
                print("%s of %s: %.1f times the seconds per byte  OVER" % (name, content, last / first))


def there_and_back(growth, folder, content, size, names, there, back, application=b"PSP GAME"):
    """Runs a conversion and its inverse, and removes files as soon as they are no longer needed."""
    image, other, new = (os.path.join(folder, name) for name in names)
    write_disc(image, size, content == "holes", application)
    growth.run(content, size, there + ["-q", "-o", other, image])
    os.remove(image)
    growth.run(content, size, back + ["-q", "-o", new, other])
    return new


def cso(growth, folder, content, size):
    there_and_back(growth, folder, content, min(size, MAX_CSO), ("a.iso", "a.cso", "b.iso"), ["iso2cso", "-l", "1"],
                   ["cso2iso"])
    growth.run(content, min(size, MAX_CSO), ["verify", os.path.join(folder, "a.cso")])


def dax(growth, folder, content, size):
    there_and_back(growth, folder, content, min(size, MAX_DAX), ("a.iso", "a.dax", "b.iso"), ["iso2dax", "-l", "1"],
                   ["dax2iso"])


def raw(growth, folder, content, size):
    """CDs are smaller than 1 GiB, so the sizes are scaled down."""
    size = min(size, 4 * GIBIBYTE) * MAX_RAW // (4 * GIBIBYTE) // SECTOR * SECTOR
    there_and_back(growth, folder, content, size, ("a.iso", "a.bin", "b.iso"), ["iso2bin"], ["bin2iso"], b"PLAYSTATION")
    growth.run(content, size, ["verify", os.path.join(folder, "a.bin")])


def layout(growth, folder, content, size):
    lengths = split(size)
    write_layout(folder, "DVD", len(lengths), lengths[0], content == "holes")
    growth.run(content, sum(lengths), ["iml2iso", "--like-window", "-q", "-o", os.path.join(folder, "a.iso"),
                                       os.path.join(folder, "game.iml")])


def disc(growth, folder, content, size):
    image = os.path.join(folder, "a.iso")
    write_disc(image, size, content == "holes", b"PLAYSTATION")
    growth.run(content, size, ["verify", image])
    growth.run(content, size, ["iso2iml", "-q", "-o", os.path.join(folder, "a.iml"), image])
    growth.run(content, size, ["extract", "-q", "-C", os.path.join(folder, "files"), image])


GROUPS = {group.__name__: group for group in (cso, dax, raw, layout, disc)}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("groups", nargs="*", metavar="GROUP", help=", ".join(GROUPS))
    parser.add_argument("--sizes", default="1,2,4", help="GiB")
    parser.add_argument("--folder", help="for files of twice the largest size")
    options = parser.parse_args()
    growth = Growth()
    for group in options.groups or GROUPS:
        for content in "noise", "holes":
            for size in options.sizes.split(","):
                with tempfile.TemporaryDirectory(dir=options.folder) if options.folder else scratch_folder() as folder:
                    GROUPS[group](growth, folder, content, int(float(size) * GIBIBYTE) // SECTOR * SECTOR)
    growth.check_times()
    return 0 if growth.good else 1


if __name__ == "__main__":
    sys.exit(main())
