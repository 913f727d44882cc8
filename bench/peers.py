#!/usr/bin/env python3
"""The same work done by vantrel and by the tools that people would take instead, in turns. All files are in memory.

usage: peers.py [MEGABYTES]

Ratios above 1 are those of work in which the other tool is faster.
"""
import os
import shutil
import subprocess
import sys

from disc_image import NOISE
from side_by_side import program, scratch_folder, timed

ROUNDS = 5


def shell(text, *words):
    """A command that needs redirection, or more than one program."""
    return ["sh", "-c", text, "sh", *words]


def row(work, ours, peers):
    """Measures all in turns and prints the best times."""
    times = [[timed(command) for command in (ours, *peers.values())] for _ in range(ROUNDS)]
    own, *others = [min(column) for column in zip(*times)]
    for name, seconds in zip(peers, others):
        print("| %s | %.3f s | `%s` | %.3f s | %.2f |" % (work, own, name, seconds, own / seconds), flush=True)


class Disc:
    """A CD image in all forms that the tools read."""

    def __init__(self, folder, megabytes):
        self.folder = folder
        self.iso, self.bin, self.cue, self.chd, self.cso = (
            os.path.join(folder, "game." + extension) for extension in ("iso", "bin", "cue", "chd", "cso"))
        os.mkdir(self.path("source"))
        self.master(megabytes)
        self.make("vantrel", "convert", "-q", "--to", "bin", self.iso)
        self.make("vantrel", "convert", "-q", "--to", "cso", self.iso)
        subprocess.run(["chdman", "createcd", "-i", self.cue, "-o", self.chd], check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    def master(self, megabytes):
        """Two files of noise."""
        for name in ("F0.BIN", "F1.BIN"):
            with open(os.path.join(self.folder, "source", name), "wb") as file:
                for i in range(megabytes // 2):
                    file.write(NOISE[i % len(NOISE)])
        subprocess.run(["genisoimage", "-quiet", "-sysid", "PLAYSTATION", "-o", self.iso, self.path("source")], check=True)

    @staticmethod
    def make(name, *words):
        subprocess.run([program(name), *words], check=True, stdout=subprocess.DEVNULL)

    def path(self, name):
        return os.path.join(self.folder, name)


def verifying(disc):
    vantrel = program("vantrel")
    row("CRC-32, MD5 and SHA-1 of an ISO, and its structures (`verify`)", [vantrel, "verify", disc.iso], {
        "md5sum": ["md5sum", disc.iso],
        "sha1sum": ["sha1sum", disc.iso],
        "7z h -scrcSHA1": ["7z", "h", "-scrcSHA1", disc.iso],
    })
    row("a BIN, its sectors, and the ISO in it (`verify`)", [vantrel, "verify", disc.bin],
        {"chdman verify": shell('chdman verify -i "$1" 2>&1', disc.chd)})
    row("comparing two images (`verify --against`)", [vantrel, "verify", disc.cso, "--against", disc.iso],
        {"cmp": ["cmp", disc.iso, disc.iso + "2"]})


def converting(disc):
    vantrel, other = program("vantrel"), disc.path("other")
    row("BIN to ISO (`bin2iso`)", [vantrel, "bin2iso", "-q", "-f", "-o", other + ".iso", disc.cue], {
        "bchunk": ["bchunk", disc.bin, disc.cue, other],
        "cp": ["cp", disc.iso, other + ".copy"],
    })
    row("a compressed image to BIN and CUE (`convert`)",
        [vantrel, "convert", "-q", "-f", "--to", "bin", "-o", other + ".bin", disc.cso],
        {"chdman extractcd": shell('chdman extractcd -f -i "$1" -o "$2.cue" -ob "$2.chd.bin" 2>&1', disc.chd, other)})


def listing(folder):
    vantrel, image = program("vantrel"), os.path.join(folder, "many.iso")
    Disc.make("export_image", image, "50")
    row("list of 50,000 files (`list`)", [vantrel, "list", image], {
        "isoinfo -l": ["isoinfo", "-l", "-i", image],
        "7z l": ["7z", "l", image],
        "xorriso -find": shell('xorriso -indev "stdio:$1" -find / 2>&1', image),
    })


def extracting(disc):
    vantrel, files = program("vantrel"), disc.path("files")
    row("extracting large files (`extract`)", [vantrel, "extract", "-q", "-f", "-C", files, disc.iso], {
        "7z x": ["7z", "x", "-y", "-o" + files + "7z", disc.iso],
        "7z t (no output)": ["7z", "t", disc.iso],
        "xorriso -extract": shell('rm -rf "$2"; xorriso -osirrox on -indev "stdio:$1" -extract / "$2" 2>&1',
                                  disc.iso, files + "x"),
        "isoinfo -x": shell('for i in 0 1; do isoinfo -i "$1" -x "/F$i.BIN;1" >"$2$i"; done', disc.iso, disc.path("F")),
    })


def main(megabytes):
    print("| work | ours | other tool | its time | ratio |\n| --- | --- | --- | --- | --- |")
    with scratch_folder() as folder:
        disc = Disc(folder, megabytes)
        shutil.copy(disc.iso, disc.iso + "2")
        verifying(disc)
        converting(disc)
        extracting(disc)
        listing(folder)


main(int(sys.argv[1]) if len(sys.argv) > 1 else 600)
