#!/usr/bin/env python3
"""Raw images against other people's tools: bchunk takes our image apart, chdman packs and unpacks it bit for bit, and a
raw image that chdman wrote converts back.

usage: raw_oracle.py VANTREL
"""
import os
import random
import shutil
import subprocess
import sys
import tempfile


def run(*words):
    done = subprocess.run(words, capture_output=True, text=True, errors="replace", stdin=subprocess.DEVNULL)
    if done.returncode != 0:
        sys.exit("%s: status %d\n%s%s" % (" ".join(words), done.returncode, done.stdout, done.stderr))


def read(name):
    with open(name, "rb") as file:
        return file.read()


def same(what, first, second):
    if first != second:
        sys.exit("%s: %d and %d bytes, different" % (what, len(first), len(second)))
    print("%s: %d bytes, the same" % (what, len(first)))


def master(name):
    """An image that a common mastering tool made, with the two marks of a PlayStation 2 CD put in."""
    os.mkdir("tree")
    for number in range(20):
        with open("tree/FILE%02d.BIN" % number, "wb") as file:
            file.write(random.Random(number).randbytes(number * 7919))
    run("xorriso", "-as", "mkisofs", "-quiet", "-appid", "PLAYSTATION", "-o", name, "tree")
    image = bytearray(read(name))
    image[33792:33795] = b"CD-"
    image[32848:32852] = (len(image) // 2048).to_bytes(4, "little")
    with open(name, "wb") as file:
        file.write(image)
    return bytes(image)


def main():
    vantrel = os.path.abspath(sys.argv[1])
    missing = [tool for tool in ("bchunk", "chdman", "xorriso") if shutil.which(tool) is None]
    if missing:
        sys.exit("not installed: " + ", ".join(missing))
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        image = master("game.iso")
        run(vantrel, "iso2bin", "-q", "game.iso")

        run("bchunk", "game.bin", "game.cue", "track")
        same("bchunk's image and ours", read("track01.iso"), image)

        run("chdman", "createcd", "-i", "game.cue", "-o", "game.chd")
        run("chdman", "extractcd", "-i", "game.chd", "-o", "back.cue", "-ob", "back.bin")
        same("chdman's raw image and ours", read("back.bin"), read("game.bin"))
        run(vantrel, "bin2iso", "-q", "back.bin")
        same("our image of chdman's raw image", read("new-back.iso"), image)

        # chdman's own error correction: it drops the parity that it can compute itself and puts it back.
        run("chdman", "createcd", "-c", "cdzl", "-i", "game.cue", "-o", "computed.chd")
        run("chdman", "extractcd", "-i", "computed.chd", "-o", "computed.cue", "-ob", "computed.bin")
        same("raw image with chdman's parity and ours", read("computed.bin"), read("game.bin"))


main()
