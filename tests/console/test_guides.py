"""Every command in docs/guides is run, and what it prints is compared with what the guide shows.

A guide's blocks of "console" hold commands after "$ " and their output; "..." stands for the rest of a line. All blocks of
a guide run one after the other in one folder, with the images that the guide starts from.

"test_guides.py --update" writes the present output into the guides.
"""
import os
import random
import re
import shutil
import struct
import subprocess
import sys
import unittest
import zlib

from support import COMMAND, ConsoleTest
from disc_master import POSTGAP, Entry, Master, make

GUIDES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../docs/guides")
BLOCK = re.compile(r"^```console\n(.*?)^```$", re.MULTILINE | re.DOTALL)
BOOT = b"BOOT2 = cdrom0:\\%s;1\r\nVER = 1.00\r\nVMODE = NTSC\r\n"


def parameters(**values):
    """A PARAM.SFO file: a table of texts."""
    keys, data, index = b"", b"", b""
    for key, value in sorted(values.items()):
        text = value.encode() + b"\0"
        index += struct.pack("<HHIII", len(keys), 0x204, len(text), len(text), len(data))
        keys += key.encode() + b"\0"
        data += text
    start = 20 + len(index)
    return struct.pack("<4sIIII", b"\0PSF", 0x101, start, start + len(keys), len(values)) + index + keys + data


def script(lines):
    return b"".join(b"%04d: The captain waits at the harbour.\r\n" % number for number in range(lines))


def psp_game():
    noise = random.Random(7).randbytes
    return make(Master("umd", [
        Entry("UMD_DATA.BIN", b"SAMP-00001|0000000000000001|0001|G               |"),
        Entry("PSP_GAME/PARAM.SFO", parameters(DISC_ID="SAMP00001", TITLE="Harbour Quest")),
        Entry("PSP_GAME/ICON0.PNG", noise(9000)),
        Entry("PSP_GAME/SYSDIR/EBOOT.BIN", noise(150000)),
        Entry("PSP_GAME/USRDIR/SCRIPT.TXT", script(200)),
        Entry("PSP_GAME/USRDIR/FONT.BIN", noise(30000)),
        Entry("PSP_GAME/USRDIR/MOVIE.PMF", noise(80000))]))


def ps2_game(seed, **medium):
    noise = random.Random(seed).randbytes
    return make(Master(entries=[
        Entry("SYSTEM.CNF", BOOT % b"SLUS_000.01"), Entry("SLUS_000.01", noise(90000)),
        Entry("DATA/MENU.TXT", b"NEW GAME\r\nLOAD GAME\r\n"), Entry("DATA/LEVEL1.BIN", noise(40000)),
        Entry("DATA/LEVEL2.BIN", noise(50000))], **medium))


def ps2_cd():
    return ps2_game(11, kind="cd", attributes=True, postgap=POSTGAP)


def ps2_dvd():
    return ps2_game(12, kind="dvd", udf=True)


def catalogue(**images):
    """A disc database that knows these images."""
    games = "".join('<game name="%s"><rom name="%s.iso" size="%d" crc="%08x"/></game>\n'
                    % (name, name, len(image), zlib.crc32(image)) for name, image in images.items())
    return ('<?xml version="1.0"?>\n<datafile>\n' + games + "</datafile>\n").encode()


STARTS = {
    "translate_a_psp_game.md": lambda: {"game.iso": psp_game()},
    "change_a_file_of_a_ps2_disc.md": lambda: {"game.iso": ps2_dvd(), "cd.iso": ps2_cd()},
    "archive_and_verify_a_collection.md": lambda: {"quest.iso": psp_game(), "racer.iso": ps2_dvd(),
                                                   "discs.dat": catalogue(quest=psp_game())},
}


def steps(block):
    """The commands of a block, each with the output that the guide shows."""
    for part in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
        command, _, shown = part.partition("\n")
        while command.endswith("\\"):
            more, _, shown = shown.partition("\n")
            command += "\n" + more
        yield command, shown


def matches(shown, printed):
    """Whether the output is the shown one, where "..." stands for the rest of a line."""
    pattern = re.escape(shown).replace(re.escape("..."), ".*")
    return re.fullmatch(pattern, printed) is not None


class Runner:
    """Runs the commands of guides in a folder, with the program in the path."""

    def __init__(self, folder):
        self.folder = folder
        self.path = os.path.join(folder, ".bin")
        os.mkdir(self.path)
        with open(os.path.join(self.path, "vantrel"), "w", encoding="utf-8") as file:
            file.write('#!/bin/sh\nexec "%s" "$@"\n' % COMMAND[0])
        os.chmod(file.name, 0o755)

    def run(self, command):
        done = subprocess.run(["sh", "-c", command], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=60, text=True,
                              env={**os.environ, "PATH": self.path + ":" + os.environ["PATH"], "LC_ALL": "C", "COLUMNS": "100"})
        return done.stdout

    def start(self, name):
        for file_name, content in STARTS[name]().items():
            with open(os.path.join(self.folder, file_name), "wb") as file:
                file.write(content)


def text_of(name):
    with open(os.path.join(GUIDES, name), encoding="utf-8") as file:
        return file.read()


class Guides(ConsoleTest):
    def test_every_guide_is_run(self):
        self.assertEqual(sorted(os.listdir(GUIDES)), sorted(STARTS))

    def check(self, name):
        runner = Runner(self.folder)
        runner.start(name)
        count = 0
        for block in BLOCK.findall(text_of(name)):
            for command, shown in steps(block):
                printed = runner.run(command)
                self.assertTrue(matches(shown, printed), "%s\n--- shown\n%s--- printed\n%s" % (command, shown, printed))
                count += 1
        self.assertGreater(count, 7)

    def test_translate_a_psp_game(self):
        self.check("translate_a_psp_game.md")

    def test_change_a_file_of_a_ps2_disc(self):
        self.check("change_a_file_of_a_ps2_disc.md")

    def test_archive_and_verify_a_collection(self):
        self.check("archive_and_verify_a_collection.md")

    def test_no_other_blocks_show_the_program(self):
        for name in STARTS:
            rest = BLOCK.sub("", text_of(name))
            self.assertNotRegex(rest, r"(?m)^ *(\$ )?vantrel ", name)


def update():
    """Writes the present output of all commands into the guides, except where "..." matches it."""
    for name in STARTS:
        folder = os.path.join(os.environ.get("TMPDIR", "/tmp"), "vantrel-guides")
        shutil.rmtree(folder, ignore_errors=True)
        os.mkdir(folder)
        runner = Runner(folder)
        runner.start(name)

        def printed(match):
            text = ""
            for command, shown in steps(match[1]):
                output = runner.run(command)
                text += "$ " + command + "\n" + (shown if matches(shown, output) else output)
            return "```console\n" + text + "```"
        updated = BLOCK.sub(printed, text_of(name))
        with open(os.path.join(GUIDES, name), "w", encoding="utf-8") as file:
            file.write(updated)
        shutil.rmtree(folder)


if __name__ == "__main__":
    if sys.argv[1:] == ["--update"]:
        update()
    else:
        unittest.main()
