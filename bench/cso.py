#!/usr/bin/env python3
"""iso2cso and cso2iso compared with plain zlib loops over the same blocks, and their memory use.

usage: cso.py [deflate] [inflate] [memory]
"""
import os
import subprocess
import sys

from bench_image import write_image
from side_by_side import compare, compare_jobs, memory_within, program, scratch_folder

MEGABYTES = 128


def main(parts):
    good = True
    with scratch_folder() as folder:
        image, cso, other = (os.path.join(folder, name) for name in ("game.iso", "game.cso", "other"))
        vantrel, bare = program("vantrel"), program("bare_zlib")
        compressing = [vantrel, "iso2cso", "-q", "-f", "-o", cso, image]
        expanding = [vantrel, "cso2iso", "-q", "-f", "-o", other, cso]
        write_image(image, MEGABYTES)
        if "deflate" in parts:
            for level in "1", "6", "9":
                good &= compare_jobs("iso2cso -l %s, %d MiB" % (level, MEGABYTES), compressing + ["-l", level],
                                     [bare, "deflate-reused", level, image, other], 1.10)
            good &= compare("iso2cso -l 9 -j 1, new streams", compressing + ["-l", "9", "-j", "1"],
                            [bare, "deflate", "9", image, other], 1.05, rounds=3)
        if "inflate" in parts:
            subprocess.run(compressing, check=True)
            good &= compare_jobs("cso2iso, %d MiB" % MEGABYTES, expanding, [bare, "inflate-reused", cso, other + ".2"],
                                 1.25, copied=image, rounds=9)
            good &= compare("cso2iso -j 1, new streams", expanding + ["-j", "1"],
                            [bare, "inflate", cso, other + ".2"], 1.15, rounds=9)
            os.remove(image + ".copy")
        if "memory" in parts:
            for megabytes in 64, 512:
                write_image(image, megabytes)
                for jobs in 1, 2, 64:
                    good &= memory_within(vantrel, compressing[1:] + ["-l", "1"], jobs, megabytes << 9)
                    good &= memory_within(vantrel, expanding[1:], jobs, megabytes << 9)
    return 0 if good else 1


sys.exit(main(sys.argv[1:] or ["deflate", "inflate", "memory"]))
