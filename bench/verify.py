#!/usr/bin/env python3
"""Verification of a raw image and of a plain image, in bytes with checksums per second; all files in the page cache. A raw
image has checksums of the image and of the file."""
import os
import statistics
import sys

from disc_image import MEBIBYTE, write_disc
from side_by_side import program, scratch_folder, timed

MIN_RATE = 500e6  # bytes per second for a raw image


def main():
    with scratch_folder() as folder:
        image, raw = (os.path.join(folder, name) for name in ("game.iso", "game.bin"))
        write_disc(image, 600 * MEBIBYTE, False, b"PLAYSTATION")
        timed([program("vantrel"), "iso2bin", "-q", image])
        rates = {}
        for path, files in (raw, (raw, image)), (image, (image,)):
            size = sum(map(os.path.getsize, files))
            times = [timed([program("vantrel"), "verify", path]) for _ in range(7)]
            rates[path], median = (size / seconds for seconds in (min(times), statistics.median(times)))
            print("verify %s: %.0f MB/s (median %.0f)" % (os.path.basename(path), rates[path] / 1e6, median / 1e6))
        good = rates[raw] >= MIN_RATE
        print("limit for the raw image: %.0f MB/s  %s" % (MIN_RATE / 1e6, "ok" if good else "BELOW"))
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
