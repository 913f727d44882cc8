#!/usr/bin/env python3
"""CSO both ways against a bare zlib loop over the same blocks, and the memory they take."""
import os
import sys

from bench_image import write_image
from side_by_side import compare, peak_memory, program, scratch_folder


def main():
    good = True
    with scratch_folder() as folder:
        image, cso, other = (os.path.join(folder, name) for name in ("game.iso", "game.cso", "other"))
        write_image(image, 64)
        vantrel, bare = program("vantrel"), program("bare_zlib")
        for level in "1", "6", "9":
            good &= compare("iso2cso -l %s, 64 MiB" % level,
                            [vantrel, "iso2cso", "-q", "-f", "-l", level, "-o", cso, image],
                            [bare, "deflate", level, image, other], 1.05)
        good &= compare("cso2iso, 64 MiB", [vantrel, "cso2iso", "-q", "-f", "-o", other, cso],
                        [bare, "inflate", cso, other + ".2"], 1.15)
        for megabytes in 64, 512:
            write_image(image, megabytes)
            blocks = megabytes << 9
            limit = blocks * 4 // 1024 + 8192
            for words in (["iso2cso", "-q", "-f", "-l", "1", "-o", cso, image],
                          ["cso2iso", "-q", "-f", "-o", other, cso]):
                peak = peak_memory([vantrel] + words)
                print("%s of %d MiB: peak %d KiB, index + 8 MiB = %d KiB  %s"
                      % (words[0], megabytes, peak, limit, "ok" if peak <= limit else "OVER"))
                good &= peak <= limit
    return 0 if good else 1


sys.exit(main())
