#!/usr/bin/env python3
"""iso2dax and dax2iso compared with plain zlib loops over the same frames, and their memory use.

usage: dax.py [deflate] [inflate] [memory]
"""
import os
import subprocess
import sys

from bench_image import write_image
from side_by_side import compare, compare_jobs, memory_within, program, scratch_folder

MEGABYTES = 128

# By default, the C library returns zlib's memory to the system after every frame in the loop over the one-call routines.
# These thresholds prevent that, so that the loop measures only zlib.
KEEP_MEMORY = ["env", "MALLOC_TRIM_THRESHOLD_=500000000", "MALLOC_MMAP_THRESHOLD_=500000000"]


def main(parts):
    good = True
    with scratch_folder() as folder:
        image, dax, other = (os.path.join(folder, name) for name in ("game.iso", "game.dax", "other"))
        vantrel, bare = program("vantrel"), program("bare_dax")
        compressing = [vantrel, "iso2dax", "-q", "-f", "-o", dax, image]
        expanding = [vantrel, "dax2iso", "-q", "-f", "-o", other, dax]
        write_image(image, MEGABYTES)
        if "deflate" in parts:
            for level in "1", "6", "9":
                good &= compare_jobs("iso2dax -l %s, %d MiB" % (level, MEGABYTES), compressing + ["-l", level],
                                     [bare, "compress-reused", level, image, other], 1.10)
            good &= compare("iso2dax -l 9 -j 1, new streams", compressing + ["-l", "9", "-j", "1"],
                            KEEP_MEMORY + [bare, "compress", "9", image, other], 1.05, rounds=3)
        if "inflate" in parts:
            subprocess.run(compressing, check=True)
            good &= compare_jobs("dax2iso, %d MiB" % MEGABYTES, expanding, [bare, "uncompress-reused", dax, other + ".2"],
                                 1.25, copied=image, rounds=9)
            good &= compare("dax2iso -j 1, new streams", expanding + ["-j", "1"],
                            KEEP_MEMORY + [bare, "uncompress", dax, other + ".2"], 1.15, rounds=9)
            os.remove(image + ".copy")
        if "memory" in parts:
            for megabytes in 64, 512:
                write_image(image, megabytes)
                for jobs in 1, 2, 64:
                    good &= memory_within(vantrel, compressing[1:] + ["-l", "1"], jobs, megabytes << 7)
                    good &= memory_within(vantrel, expanding[1:], jobs, megabytes << 7)
    return 0 if good else 1


sys.exit(main(sys.argv[1:] or ["deflate", "inflate", "memory"]))
