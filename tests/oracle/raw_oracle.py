#!/usr/bin/env python3
"""Raw images and other tools: bchunk splits our image, chdman compresses and restores it bit by bit, raw images written by
chdman and vcdimager convert back, and data tracks beside audio tracks are the same as with bchunk.

usage: raw_oracle.py VANTREL
"""
import json
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
    """An image of a common mastering tool, to which the two marks of a PlayStation 2 CD are added."""
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


def film(packs):
    """A minimal MPEG stream: packs of one sector with a clock, the start of a picture and padding."""
    stream = b""
    for number in range(packs):
        ticks = number * 1200
        clock = bytes([0x21 | ticks >> 29 & 14, ticks >> 22 & 255, 1 | ticks >> 14 & 254, ticks >> 7 & 255,
                       1 | ticks << 1 & 254])
        pack = bytes.fromhex("000001ba") + clock + bytes.fromhex("801b91")
        if number == 0:
            pack += bytes.fromhex("000001bb000c801b9100e1ffe0e0e6c0c020")
        picture = clock + bytes.fromhex("000001b316012013ffffe018000001b880080040"
                                        "00000100000ffff8")
        room = 2324 - len(pack) - 6
        stream += pack + bytes.fromhex("000001e0") + room.to_bytes(2, "big") + picture.ljust(room, b"\xff")
    return stream


def check_foreign_image(vantrel):
    """A video disc encoded by vcdimager, with sectors of Form 1 and Form 2."""
    content = random.Random(9).randbytes(100_000)
    for name, bytes_of in ("film.mpg", film(300)), ("data.bin", content):
        with open(name, "wb") as file:
            file.write(bytes_of)
    run("vcdimager", "-q", "-t", "vcd2", "-c", "video.cue", "-b", "video.bin", "--add-file=data.bin,DATA.BIN", "film.mpg")
    raw = read("video.bin")
    # Sectors of Form 2 hold more than an image can, so the exit status is 1.
    refused = subprocess.run([vantrel, "bin2iso", "-o", "video.iso", "video.bin"], capture_output=True, text=True)
    if refused.returncode != 1 or "2324 bytes of Form 2 data" not in refused.stderr or os.path.exists("video.iso"):
        sys.exit("Form 2 is not refused: %s" % refused)
    subprocess.run([vantrel, "bin2iso", "-q", "--ignore-errors", "-o", "video.iso", "video.bin"], capture_output=True)
    same("user data of vcdimager's raw image", read("video.iso"),
         b"".join(raw[start + 24:start + 24 + 2048] for start in range(0, len(raw), 2352)))
    run("7z", "x", "-y", "-oout", "video.iso", "DATA.BIN")
    same("a file of it as 7z extracts it", read("out/DATA.BIN"), content)
    found = json.loads(subprocess.run([vantrel, "verify", "--json", "video.bin"], capture_output=True).stdout)
    # The volume ends before the film. All sync fields, addresses, EDCs and parities must be correct.
    if [problem for problem in found["problems"] if "volume descriptor says" not in problem]:
        sys.exit("faults in vcdimager's sectors: %s" % found["problems"])


def check_tracks(vantrel, image):
    """Sheets with a data track and two audio tracks, in one file and in a file for each track: bchunk and chdman find the
    same tracks in the same places."""
    data = read("game.bin")
    audio = [random.Random(number).randbytes(2352 * (300 + number)) for number in (1, 2)]
    sectors = len(data) // 2352
    time = lambda frames: "%02d:%02d:%02d" % (frames // 75 // 60, frames // 75 % 60, frames % 75)
    with open("mixed.bin", "wb") as file:
        file.write(data + b"".join(audio))
    with open("mixed.cue", "w") as file:
        file.write('FILE "mixed.bin" BINARY\n  TRACK 01 MODE2/2352\n    INDEX 01 00:00:00\n'
                   '  TRACK 02 AUDIO\n    INDEX 01 %s\n  TRACK 03 AUDIO\n    INDEX 01 %s\n'
                   % (time(sectors), time(sectors + 301)))
    run("bchunk", "mixed.bin", "mixed.cue", "part")
    run("chdman", "createcd", "-i", "mixed.cue", "-o", "mixed.chd")
    run("chdman", "extractcd", "-i", "mixed.chd", "-o", "chd.cue", "-ob", "chd.bin")
    with open("split.cue", "w") as file:
        for number, (mode, content) in enumerate([("MODE2/2352", data), ("AUDIO", audio[0]), ("AUDIO", audio[1])], 1):
            file.write('FILE "split%d.bin" BINARY\n  TRACK %02d %s\n    INDEX 01 00:00:00\n' % (number, number, mode))
            with open("split%d.bin" % number, "wb") as track:
                track.write(content)
    run("chdman", "createcd", "-i", "split.cue", "-o", "split.chd")
    run("chdman", "extractcd", "-i", "split.chd", "-o", "unsplit.cue", "-ob", "unsplit.bin")
    for sheet in "mixed.cue", "split.cue", "chd.cue", "unsplit.cue":
        done = subprocess.run([vantrel, "bin2iso", "-f", "-o", "mixed.iso", sheet], capture_output=True, text=True)
        if done.returncode != 1 or done.stderr.count("(AUDIO) is not in the image") != 2:
            sys.exit("%s: %s" % (sheet, done))
        same("data track of %s and the image" % sheet, read("mixed.iso"), image)
        same("data track of %s and bchunk's" % sheet, read("mixed.iso"), read("part01.iso"))
        found = json.loads(subprocess.run([vantrel, "verify", "--json", sheet], capture_output=True).stdout)
        if found["problems"] or [track["sectors"] for track in found["tracks"]] != [sectors, 301, 302]:
            sys.exit("%s: %s" % (sheet, found))


def main():
    vantrel = os.path.abspath(sys.argv[1])
    missing = [tool for tool in ("7z", "bchunk", "chdman", "vcdimager", "xorriso") if shutil.which(tool) is None]
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
        run(vantrel, "bin2iso", "-q", "-o", "back.iso", "back.bin")
        same("our image of chdman's raw image", read("back.iso"), image)

        # With this compression, chdman removes the error correction bytes and computes them again.
        run("chdman", "createcd", "-c", "cdzl", "-i", "game.cue", "-o", "computed.chd")
        run("chdman", "extractcd", "-i", "computed.chd", "-o", "computed.cue", "-ob", "computed.bin")
        same("raw image with chdman's parity and ours", read("computed.bin"), read("game.bin"))

        check_tracks(vantrel, image)
        check_foreign_image(vantrel)


main()
