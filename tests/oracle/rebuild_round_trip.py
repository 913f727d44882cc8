#!/usr/bin/env python3
"""Exports, extracts and rebuilds images. By default and with --exact, they must be bit-identical; with --like-window, isoinfo
and 7z must find the same files with the same content, and another export must give the same list.

usage: rebuild_round_trip.py VANTREL EXPORT_IMAGES
"""
import filecmp
import os
import sys
import tempfile

import export_oracle as oracle
from export_oracle import run, vantrel


def entries_of(layout):
    """The entry lines of a layout without the leading and the trailing entry."""
    text = oracle.read(layout).decode("latin-1")
    lines = text[text.index("# the number of entries"):text.index("[/LOC]")].splitlines()
    return [line for line in lines[2:] if ".ims" not in line]


def files_share_sectors(layout):
    ranges = [(int(line[0:9]), int(line[9:18])) for line in entries_of(layout)]
    return any(later[0] <= earlier[1] for earlier, later in zip(ranges, ranges[1:]))


def path_table_sector(path):
    with open(path, "rb") as file:
        file.seek(32768 + 140)
        return int.from_bytes(file.read(4), "little")


def check_exact(name, path, layout, files, work):
    for number, words in enumerate(([], ["--exact"])):
        image = os.path.join(work, "exact-%d.iso" % number)
        run(vantrel, "iml2iso", "-q", *words, "--files", files, "-o", image, layout)
        if not filecmp.cmp(image, path, shallow=False):
            sys.exit("%s: the rebuild %s differs" % (name, words))


def check_rebuilt(name, path, layout, files, work):
    image = os.path.join(work, "rebuilt.iso")
    run(vantrel, "iml2iso", "-q", "--like-window", "--files", files, "-o", image, layout)
    test = run("7z", "t", "-tiso", image)
    if "Everything is Ok" not in test:
        sys.exit("%s: 7z does not accept the rebuilt image: %s" % (name, test))
    oracle.check(name + ": files seen by isoinfo", oracle.isoinfo_files(image), oracle.isoinfo_files(path))
    oracle.check(name + ": files seen by 7z", oracle.sevenzip_files(image), oracle.sevenzip_files(path))
    theirs = os.path.join(work, "theirs")
    run("7z", "x", "-y", "-tiso", "-o" + theirs, image)
    oracle.check(name + ": names", oracle.files_below(theirs), oracle.files_below(files))
    for file in oracle.files_below(theirs):
        if not filecmp.cmp(os.path.join(files, file), os.path.join(theirs, file), shallow=False):
            sys.exit("%s: %s has another content in the rebuilt image" % (name, file))
    # An export needs the path table, which some programs put after the folders, outside of what a layout keeps.
    if path_table_sector(path) < os.path.getsize(layout[:-4] + ".ims") // 2048:
        again = os.path.join(work, "again.iml")
        run(vantrel, "iso2iml", "-q", "-o", again, image)
        oracle.check(name + ": list of the rebuilt image", entries_of(again), entries_of(layout))


def without_empty_files(top, seed):
    make_folder(top, seed)
    for file in oracle.files_below(top):
        path = os.path.join(top, file)
        if os.path.getsize(path) == 0:
            os.remove(path)


make_folder = oracle.make_folder


def master_images(folder):
    """Images of the builder, and of other programs with and without empty files, which share sectors in their images."""
    run(oracle.export_images, "make", folder)
    images = sorted(os.path.join(folder, name) for name in os.listdir(folder) if name.endswith(".iso"))
    for name, make in (("full", make_folder), ("no-empty-files", without_empty_files)):
        oracle.make_folder = make
        below = os.path.join(folder, name)
        os.mkdir(below)
        images += oracle.master_images(below)
    return images


def main():
    with tempfile.TemporaryDirectory() as folder:
        images = master_images(folder)
        rebuilt = 0
        for path in images:
            name = os.path.basename(path)
            with tempfile.TemporaryDirectory() as work:
                layout, files = os.path.join(work, "game.iml"), os.path.join(work, "files")
                run(vantrel, "iso2iml", "-q", "-o", layout, path, "--extract=" + files)
                check_exact(name, path, layout, files, work)
                # Of files that share sectors, the window's rebuild keeps only the last one, and it leaves the volume size
                # of a supplementary volume descriptor as it was.
                whole = not files_share_sectors(layout) and "joliet" not in name
                if whole:
                    check_rebuilt(name, path, layout, files, work)
                    rebuilt += 1
                print("%s: exact%s" % (name, ", rebuilt" if whole else ""))
        if rebuilt < 7:
            sys.exit("only %d images have no shared sectors" % rebuilt)


if __name__ == "__main__":
    main()
