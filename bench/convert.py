#!/usr/bin/env python3
"""convert compared with bare loops over the same blocks, with cp, and with the two commands that it replaces.

usage: convert.py [MEGABYTES]
"""
import os
import subprocess
import sys

from bench_image import write_image, write_image_of_programs
from side_by_side import compare, compare_jobs, program, scratch_folder


def main(megabytes):
    good = True
    with scratch_folder() as folder:
        image, other = os.path.join(folder, "game.iso"), os.path.join(folder, "other")
        files = {form: os.path.join(folder, "game." + form) for form in ("cso", "zso", "dax")}
        vantrel = program("vantrel")

        def converting(source, target, form, *words):
            return [vantrel, "convert", "-q", "-f", "--to", form, "-o", target, source] + list(words)

        write_image(image, megabytes)
        for form, file in files.items():
            subprocess.run(converting(image, file, form), check=True)
        good &= compare_jobs("ISO to ZSO", converting(image, files["zso"], "zso"),
                             [program("bare_lz4"), "compress", image, other], 1.10)
        for form, bare in (("cso", ["bare_zlib", "inflate-reused"]), ("zso", ["bare_lz4", "expand"]),
                           ("dax", ["bare_dax", "uncompress-reused"])):
            good &= compare_jobs("%s to ISO" % form.upper(), converting(files[form], other, "iso"),
                                 [program(bare[0]), bare[1], files[form], other + ".2"], 1.25, copied=image, rounds=9)
        os.remove(image + ".copy")
        compare("CSO to DAX, and the slower half", converting(files["cso"], files["dax"], "dax", "-j", "2"),
                converting(image, other, "dax", "-j", "2"))
        write_image_of_programs(image, megabytes)
        subprocess.run(converting(image, files["cso"], "cso"), check=True)
        good &= compare("The same with programs", converting(files["cso"], files["dax"], "dax", "-j", "2"),
                        converting(image, other, "dax", "-j", "2"), 1.10)
    return 0 if good else 1


sys.exit(main(int(sys.argv[1]) if len(sys.argv) > 1 else 128))
