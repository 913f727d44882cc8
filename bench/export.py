#!/usr/bin/env python3
"""Export of an image with 50,000 files in 1,000 directories, compared with isoinfo's listing; memory per file."""
import os
import subprocess
import sys

from side_by_side import compare, peak_memory, program, scratch_folder


def main():
    with scratch_folder() as folder:
        many, few, layout = (os.path.join(folder, name) for name in ("many.iso", "few.iso", "out.iml"))
        subprocess.run([program("export_image"), many, "50"], check=True)
        subprocess.run([program("export_image"), few, "1"], check=True)

        def export(image):
            return [program("vantrel"), "iso2iml", "-q", "-f", "-o", layout, image]

        good = compare("iso2iml, 50,000 files (isoinfo -l)", export(many), ["isoinfo", "-l", "-i", many], 3.0, 15)
        cost = (peak_memory(export(many)) - peak_memory(export(few))) * 1024 / 49000
        print("memory: %.0f bytes per file, limit 300  %s" % (cost, "ok" if cost <= 300 else "OVER"))
    return 0 if good and cost <= 300 else 1


sys.exit(main())
