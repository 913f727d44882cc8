#!/usr/bin/env python3
"""Compares what the programs read of UDF volumes, and what they write when a file moves, with a second implementation and
with 7z, for images of genisoimage and of the image builder.

usage: udf_oracle.py VANTREL UDF_VOLUMES
"""
import os
import random
import subprocess
import sys
import tempfile

import udf_reference

vantrel, udf_volumes = sys.argv[1:3]
SECTOR = 2048
NAMES = ["A.TXT", "a_long_name_of_a_file.data", "caf\u00e9.dat", "\u65e5\u672c\u8a9e.bin", "two words", "B.BIN", "EMPTY"]


def run(*words):
    done = subprocess.run(words, capture_output=True)
    if done.returncode != 0:
        sys.exit("%s: status %d: %s" % (words, done.returncode, (done.stdout + done.stderr)[-2000:].decode(errors="replace")))
    return done.stdout.decode()


def read(path):
    with open(path, "rb") as file:
        return file.read()


def make_source(folder, source, depth=0):
    os.makedirs(folder)
    for name in NAMES:
        with open(os.path.join(folder, name), "wb") as file:
            file.write(source.randbytes(0 if name == "EMPTY" else source.choice([1, 2047, 2048, 2049, 70000])))
    for i in range(40):
        with open(os.path.join(folder, "one_of_many_files_in_a_directory_of_several_sectors_%03d" % i), "wb"):
            pass
    if depth < 3:
        make_source(os.path.join(folder, "DIR%d" % depth), source, depth + 1)
        make_source(os.path.join(folder, "\u30d5\u30a9\u30eb\u30c0"), source, depth + 1)


def listing(path):
    """What the programs read, like the files of udf_reference.Volume; adjacent extents are joined."""
    found = []
    for line in run(udf_volumes, "list", path).splitlines():
        name, kind, entry, size, extents = line.split("\t")
        places = [tuple(map(int, extent.split("+"))) for extent in extents.split()]
        found.append((name, kind == "folder", int(entry), int(size), places))
    return sorted(found)


def joined(extents):
    found = []
    for sector, size in extents:
        if found and found[-1][0] * SECTOR + found[-1][1] == sector * SECTOR:
            found[-1] = (found[-1][0], found[-1][1] + size)
        else:
            found.append((sector, size))
    return found


def reference(path):
    volume = udf_reference.Volume(read(path))
    return volume, sorted(file[:4] + (joined(file[4]),) for file in volume.files)


def contents(volume):
    return {path: volume.content(size, extents) for path, is_folder, _, size, extents in volume.files if not is_folder}


def check(path):
    """Both implementations, 7z and verify agree; returns the contents of the files."""
    volume, expected = reference(path)
    assert listing(path) == expected, path
    run("7z", "t", "-tudf", path)
    run(vantrel, "verify", path)
    return contents(volume)


def check_moves(path, folder, source):
    """Files move to the end of the image one after the other, and no other file changes."""
    expected = contents(reference(path)[0])
    names = sorted(expected)
    for size in 0, 1, 2048, 5000, 400000:
        name = source.choice(names)
        content = os.path.join(folder, "content")
        with open(content, "wb") as file:
            file.write(source.randbytes(size))
        run(udf_volumes, "move", path, name, content)
        expected[name] = read(content)
        volume, files = reference(path)
        assert contents(volume) == expected, (path, name, size)
        assert listing(path) == files, (path, name, size)
        out = subprocess.run(["7z", "x", "-tudf", "-so", path, name], capture_output=True, check=True).stdout
        assert out == expected[name], (path, name, size)


def main():
    source = random.Random(5)
    with tempfile.TemporaryDirectory(prefix="vantrel-udf-") as folder:
        make_source(os.path.join(folder, "src"), source)
        run(udf_volumes, "make", folder)
        images = [os.path.join(folder, "builder.iso")]
        for name, options in (("padded", []), ("short", ["-no-pad"]), ("joliet", ["-J", "-R", "-D"])):
            images.append(os.path.join(folder, name + ".iso"))
            run("genisoimage", "-quiet", "-udf", "-allow-limited-size", *options, "-o", images[-1], os.path.join(folder, "src"))
        for image in images:
            print("%s: %d files" % (os.path.basename(image), len(check(image))))
            check_moves(image, folder, source)
    return 0


if __name__ == "__main__":
    sys.exit(main())
