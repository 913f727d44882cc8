#!/usr/bin/env python3
"""iso2bin and bin2iso, compared with cp of a file of the output's size; all files in the page cache."""
import os
import random
import sys

from side_by_side import compare, peak_memory, program, scratch_folder

MEBIBYTE = 1 << 20


def write_cd_image(path, megabytes):
    with open(path, "wb") as image:
        head = bytearray(random.Random(3).randbytes(MEBIBYTE))
        head[33792:33795] = b"CD-"
        head[33342:33345] = b"PLA"
        head[32848:32852] = (megabytes * 512).to_bytes(4, "little")
        image.write(head)
        for i in range(1, megabytes):
            image.write(random.Random(i % 7).randbytes(MEBIBYTE))


def main():
    good = True
    with scratch_folder() as folder:
        image, raw, other = (os.path.join(folder, name) for name in ("game.iso", "game.bin", "other"))
        write_cd_image(image, 600)
        vantrel = program("vantrel")
        to_bin = [vantrel, "iso2bin", "-q", "-f", "-o", raw, image]
        to_iso = [vantrel, "bin2iso", "-q", "-f", "-o", other + ".iso", raw]
        for words in to_bin, to_iso:
            print("%s of 600 MiB: peak %d KiB" % (words[1], peak_memory(words)))
        good &= compare("iso2bin, 600 MiB", to_bin, ["cp", raw, other], 1.5)
        os.remove(other)
        good &= compare("bin2iso, 600 MiB", to_iso, ["cp", image, other], 1.25)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
