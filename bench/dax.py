#!/usr/bin/env python3
"""DAX both ways against a bare loop over zlib's one-call routines."""
import os
import sys

from bench_image import write_image
from side_by_side import compare, program, scratch_folder


# The C library hands zlib's memory back to the system after every frame until it has learnt not to, which the short loop
# never teaches it. Both keep it, so that the same work is compared.
os.environ.update(MALLOC_TRIM_THRESHOLD_="500000000", MALLOC_MMAP_THRESHOLD_="500000000")


def main():
    good = True
    with scratch_folder() as folder:
        image, dax, other = (os.path.join(folder, name) for name in ("game.iso", "game.dax", "other"))
        write_image(image, 32)
        vantrel, bare = program("vantrel"), program("bare_dax")
        for level in "1", "6", "9":
            good &= compare("iso2dax -l %s, 32 MiB" % level,
                            [vantrel, "iso2dax", "-q", "-f", "-l", level, "-o", dax, image],
                            [bare, "compress", level, image, other], 1.05, rounds=9)
        good &= compare("dax2iso, 32 MiB", [vantrel, "dax2iso", "-q", "-f", "-o", other, dax],
                        [bare, "uncompress", dax, other + ".2"], 1.15)
    return 0 if good else 1


sys.exit(main())
