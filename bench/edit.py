#!/usr/bin/env python3
"""Edits of images: the rebuild from a layout and "replace" into a new image, compared with cp of the image; "replace
--in-place" of a small file, compared with reading the directories; memory with 50,000 files. All files in the page cache.

    edit.py [--size GIB] [--folder FOLDER]"""
import argparse
import os
import sys
import tempfile

from disc_image import SECTOR, both, record, write_disc
from side_by_side import compare, peak_memory, program, scratch_folder, timed

GIBIBYTE = 1 << 30
MAX_RATIO = 1.25
MAX_MEMORY = 64 << 10  # KiB
SMALL = 1024


def write_dvd(path, size):
    write_disc(path, size, False, b"PLAYSTATION")
    with open(path, "r+b") as image:
        image.seek(16 * SECTOR + 1024)
        image.write(bytes(8))
        image.seek(65925)
        image.write(b"DVD")


def sectors_of(records):
    """Directory records in sectors, none across a boundary."""
    sectors = [b""]
    for entry in records:
        if len(sectors[-1]) + len(entry) > SECTOR:
            sectors.append(b"")
        sectors[-1] += entry
    return b"".join(sector.ljust(SECTOR, b"\0") for sector in sectors)


def write_many(path, folders, files):
    """An image of folders with many small files each."""
    names = [[b"FILE%05d.BIN;1" % (folder * files + i) for i in range(files)] for folder in range(folders)]
    length = len(sectors_of([record(b"\0", 0, 0, 2)] * 2 + [record(name, 0, 0) for name in names[0]]))
    first_folder = 24
    first_file = first_folder + folders * length // SECTOR
    root = [record(b"\0", 20, SECTOR * 4, 2), record(b"\1", 20, SECTOR * 4, 2)]
    root += [record(b"D%03d" % i, first_folder + i * length // SECTOR, length, 2) for i in range(folders)]
    volume = bytearray(SECTOR)
    volume[0:8] = b"\1CD001\1\0"
    volume[8:40] = b"PLAYSTATION".ljust(32)
    volume[80:88] = both(first_file + folders * files)
    volume[128:132] = both(SECTOR, 2)
    volume[156:190] = record(b"\0", 20, SECTOR * 4, 2)
    volume[574:702] = b"PLAYSTATION".ljust(128)
    volume[1024:1032] = b"CD-XA001"
    with open(path, "wb") as image:
        image.seek(16 * SECTOR)
        image.write(volume + b"\xFFCD001\1".ljust(SECTOR, b"\0"))
        image.seek(20 * SECTOR)
        image.write(sectors_of(root).ljust(4 * SECTOR, b"\0"))
        sector = first_file
        for i in range(folders):
            entries = [record(b"\0", first_folder + i * length // SECTOR, length, 2), record(b"\1", 20, SECTOR * 4, 2)]
            entries += [record(name, sector + k, 2000) for k, name in enumerate(names[i])]
            image.write(sectors_of(entries).ljust(length, b"\0"))
            sector += files
        for number in range(folders * files):
            image.write((b"%08d" % number * 250).ljust(SECTOR, b"\0"))


def memory_within(title, words):
    peak = peak_memory([program("vantrel")] + words)
    print("%s: peak %d KiB, limit %d KiB  %s" % (title, peak, MAX_MEMORY, "ok" if peak <= MAX_MEMORY else "OVER"))
    return peak <= MAX_MEMORY


def add_small_file(image):
    """Adds PATCH.BIN behind the other files."""
    with open(image, "r+b") as file:
        file.seek(0, os.SEEK_END)
        sector = file.tell() // SECTOR
        file.write(bytes(SECTOR))
        file.seek(20 * SECTOR)
        end = len(file.read(SECTOR).rstrip(b"\0"))
        file.seek(20 * SECTOR + end + end % 2)
        file.write(record(b"PATCH.BIN;1", sector, SMALL))
        file.seek(16 * SECTOR + 80)
        file.write(both(sector + 1))


def patch_within(image, small):
    patch = [program("vantrel"), "replace", "-q", "--in-place", image, "PATCH.BIN=" + small]
    times = [(timed(patch), timed([program("vantrel"), "list", image])) for _ in range(15)]
    patched, listed = (min(column) for column in zip(*times))
    limit = 0.1 * listed + 0.05
    print("replace --in-place of %d bytes %.3f s  list %.3f s  limit %.3f s  %s"
          % (SMALL, patched, listed, limit, "ok" if patched <= limit else "OVER"))
    return patched <= limit


def large(folder, size):
    image, new, copy, small = (os.path.join(folder, name) for name in ("game.iso", "new.iso", "copy.iso", "small"))
    write_dvd(image, size)
    add_small_file(image)
    with open(small, "wb") as file:
        file.write(b"s" * SMALL)
    vantrel = program("vantrel")
    good = patch_within(image, small)
    good &= compare("replace -o", [vantrel, "replace", "-q", "-f", image, "PATCH.BIN=" + small, "-o", new],
                    ["cp", image, copy], MAX_RATIO)
    os.remove(new)
    layout = os.path.join(folder, "game.iml")
    timed([vantrel, "iso2iml", "-q", image, "--extract", os.path.join(folder, "files")])
    os.remove(image)
    rebuild = [vantrel, "iml2iso", "-q", "-f", "--files", os.path.join(folder, "files"), "-o", new, layout]
    good &= compare("iml2iso", rebuild, ["cp", copy, image], MAX_RATIO)
    return good & compare("iml2iso --exact", rebuild + ["--exact"], ["cp", copy, image], MAX_RATIO)


def many(folder):
    image, new, small = (os.path.join(folder, name) for name in ("game.iso", "new.iso", "small"))
    write_many(image, 50, 1000)
    with open(small, "wb") as file:
        file.write(b"s" * 5000)
    files = os.path.join(folder, "files")
    timed([program("vantrel"), "iso2iml", "-q", image, "--extract", files])
    good = memory_within("replace -o in 50,000 files",
                         ["replace", "-q", "-f", image, "D010/FILE10500.BIN=" + small, "-o", new])
    rebuild = ["iml2iso", "-q", "-f", "--files", files, "-o", new, os.path.join(folder, "game.iml")]
    good &= memory_within("iml2iso of 50,000 files", rebuild)
    with open(os.path.join(files, "D010", "FILE10500.BIN"), "wb") as file:
        file.write(b"s" * 5000)
    return good & memory_within("iml2iso of 50,000 files, one of which moves", rebuild)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--size", default="4", help="GiB of the large image")
    parser.add_argument("--folder", help="for files of four times this size")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.folder) if options.folder else scratch_folder() as folder:
        good = many(folder)
    with tempfile.TemporaryDirectory(dir=options.folder) if options.folder else scratch_folder() as folder:
        good &= large(folder, int(float(options.size) * GIBIBYTE) // SECTOR * SECTOR)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
