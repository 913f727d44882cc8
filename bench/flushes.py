#!/usr/bin/env python3
"""What unnamed outputs and flushes cost, on the disk of a folder: new files, -f and --sync, compared with an older build.

    flushes.py [OLDER_PROGRAM [FOLDER]]

Without an older program, new files are compared with this one. The folder is by default that of temporary files.
"""
import os
import subprocess
import sys
import tempfile

from raw import write_cd_image
from side_by_side import compare, program

ROUNDS = 9


def write_images(folder):
    """An image of noise, and one of many small files. Returns their paths."""
    large, many, source = (os.path.join(folder, name) for name in ("large.iso", "many.iso", "source"))
    write_cd_image(large, 100)
    for i in range(3000):
        os.makedirs(os.path.join(source, "D%d" % (i // 100)), exist_ok=True)
        with open(os.path.join(source, "D%d" % (i // 100), "F%d.BIN" % i), "wb") as file:
            file.write(os.urandom(3000))
    subprocess.run(["genisoimage", "-quiet", "-sysid", "PSP GAME", "-A", "PSP GAME", "-o", many, source], check=True,
                   stderr=subprocess.DEVNULL)
    return large, many


def main():
    ours = program("vantrel")
    older = sys.argv[1] if len(sys.argv) > 1 else ours
    with tempfile.TemporaryDirectory(dir=sys.argv[2] if len(sys.argv) > 2 else None) as folder:
        large, many = write_images(folder)

        def commands(name, words, is_new=True):
            """The commands of both programs, after the removal of their outputs if these are to be new."""
            outputs = [os.path.join(folder, owner + name) for owner in ("ours", "older")]
            removal = 'rm -rf "$0" "$0.cue"; exec "$@"' if is_new else 'exec "$@"'
            return [["sh", "-c", removal, output, tool, words[0], "-q", words[1], output, *words[2:]]
                    for tool, output in zip((ours, older), outputs)]

        to_bin, extract = ["iso2bin", "-o", large], ["extract", "-C", many]
        new = commands("bin", to_bin)
        good = compare("iso2bin, 100 MiB, new", *new, 1.05, ROUNDS)
        good &= compare("extract, 3,000 files, new", *commands("files", extract), 1.05, ROUNDS)
        compare("iso2bin, 100 MiB, --sync (without)", commands("bin", [*to_bin, "--sync"])[0], new[1], 99, ROUNDS)
        compare("iso2bin, 100 MiB, -f", *commands("bin", [*to_bin, "-f"], False), 99, ROUNDS)
        compare("extract, 3,000 files, -f", *commands("files", [*extract, "-f"], False), 99, 3)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
