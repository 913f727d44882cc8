#!/usr/bin/env python3
"""Extraction of large files, compared with cp of the image; all files in the page cache."""
import os
import sys

from disc_image import MEBIBYTE, write_disc
from side_by_side import compare, program, scratch_folder


def main():
    with scratch_folder() as folder:
        image, other = (os.path.join(folder, name) for name in ("game.iso", "other.iso"))
        write_disc(image, 600 * MEBIBYTE, False)
        ours = [program("vantrel"), "extract", "-q", "-f", image, "-C", os.path.join(folder, "files")]
        good = compare("extract, 600 MiB (cp)", ours, ["cp", image, other], 1.25)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
