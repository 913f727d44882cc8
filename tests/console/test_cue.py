"""CUE sheets as inputs of bin2iso, info, verify, list and extract."""
import hashlib
import json
import os
import random
import subprocess
import sys
import unittest
import zlib

from support import IS_WINDOWS, ConsoleTest

REFERENCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../oracle/raw_reference.py")
AUDIO = random.Random(7).randbytes(2352 * 20)


def position(frames):
    return "%02d:%02d:%02d" % (frames // 75 // 60, frames // 75 % 60, frames % 75)


def sums(content):
    return {"bytes": len(content), "crc32": "%08x" % zlib.crc32(content), "md5": hashlib.md5(content).hexdigest(),
            "sha1": hashlib.sha1(content).hexdigest()}


class CueSheets(ConsoleTest):
    def setUp(self):
        super().setUp()
        os.makedirs(self.path("src/DIR"))
        self.files = {"A.TXT": b"hello\n", "DIR/B.BIN": random.Random(1).randbytes(50_000)}
        for name, content in self.files.items():
            self.write("src/" + name, content)
        self.master()

    def master(self):
        subprocess.run(["genisoimage", "-quiet", "-V", "GAME", "-o", self.path("plain.iso"), self.path("src")],
                       check=True, stderr=subprocess.DEVNULL)
        self.image = self.read("plain.iso")
        self.sectors = len(self.image) // 2048

    def raw(self, mode, first=0):
        """The image as raw sectors; `first` is the number of the first one on the disc."""
        self.write("padded", bytes(2048 * first) + self.image)
        subprocess.run([sys.executable, REFERENCE, "expand", str(mode), "0", self.path("padded"), self.path("raw")],
                       check=True)
        raw = self.read("raw")[2352 * first:]
        os.remove(self.path("padded"))
        os.remove(self.path("raw"))
        return raw

    def sheet(self, *lines, end="\r\n"):
        self.write("game.cue", "".join(line + end for line in lines).encode())

    def report(self, *words):
        result = self.run_here(*words, "--json")
        return result.status, json.loads(result.out)

    def assert_is_the_image(self, audio=()):
        """Every command finds the image; bin2iso tells which tracks are left out."""
        result = self.run_here("bin2iso", "-f", "-o", "out.iso", "game.cue")
        left_out = "\n".join("game.cue: track %d (AUDIO) is not in the image" % number for number in audio)
        self.assertEqual((result.status, result.err),
                         (1, "vantrel bin2iso: %s\n" % left_out) if audio else (0, ""), result)
        self.assertEqual(self.read("out.iso"), self.image)
        self.assert_done(self.run_here("info", "game.cue"))
        status, verified = self.report("verify", "game.cue")
        self.assertEqual((status, verified["form"], verified["problems"]), (0, "CUE", []))
        self.assertEqual(verified["image"], sums(self.image))
        result = self.run_here("list", "game.cue")
        self.assert_done(result)
        self.assertEqual(result.out, self.run_here("list", "plain.iso").out)
        self.assert_done(self.run_here("extract", "-f", "game.cue", "-C", "files"))
        self.assertEqual(self.read("files/DIR/B.BIN"), self.files["DIR/B.BIN"])
        return verified

    def test_every_mode(self):
        for mode, number, size in (("MODE1/2352", 1, 2352), ("MODE2/2352", 2, 2352), ("MODE1/2048", 1, 2048),
                                   ("MODE2/2048", 2, 2048), ("MODE2/2336", 2, 2336)):
            whole = self.raw(number)
            content = self.image if size == 2048 else b"".join(
                whole[at + 2352 - size:at + 2352] for at in range(0, len(whole), 2352))
            self.write("game.bin", content)
            self.sheet('FILE "game.bin" BINARY', "  TRACK 01 " + mode, "    INDEX 01 00:00:00")
            verified = self.assert_is_the_image()
            self.assertEqual(verified["bins"], [{"file": "game.bin"} | sums(content)], mode)
            self.assertEqual(verified["tracks"], [{"number": 1, "mode": mode, "sectors": self.sectors,
                                                   "file": "game.bin", "checked": True}])
            container = self.report("info", "game.cue")[1]["container"]
            self.assertEqual((container["mode_1"], container["mode_2_form_1"]),
                             (self.sectors, 0) if number == 1 else (0, self.sectors))
            self.assertEqual(container.get("first_address"), "00:02:00" if size == 2352 else None)
            if size != 2048:
                damaged = bytearray(content)
                damaged[9 * size + 30] ^= 1
                self.write("game.bin", damaged)
                self.assertEqual(self.report("verify", "game.cue")[1]["problems"], ["sector 9: wrong EDC, parity"])
                result = self.run_here("bin2iso", "-f", "-o", "out.iso", "game.cue")
                self.assertEqual((result.status, result.err), (1, "vantrel bin2iso: game.cue: game.bin: sector 9: wrong EDC\n"))

    def test_one_file_for_all_tracks(self):
        self.write("game.bin", self.raw(1) + AUDIO + AUDIO)
        self.sheet("REM a remark", "CATALOG 0000000000000", "FILE game.bin BINARY", "TRACK 01 MODE1/2352",
                   "INDEX 01 00:00:00", "TRACK 02 AUDIO", "FLAGS DCP", "INDEX 00 " + position(self.sectors),
                   "INDEX 01 " + position(self.sectors + 5), "TRACK 03 AUDIO",
                   "INDEX 01 " + position(self.sectors + 20), end="\n")
        verified = self.assert_is_the_image(audio=[2, 3])
        tracks = [{"number": 1, "mode": "MODE1/2352", "sectors": self.sectors, "file": "game.bin"},
                  {"number": 2, "mode": "AUDIO", "sectors": 15, "file": "game.bin"},
                  {"number": 3, "mode": "AUDIO", "sectors": 20, "file": "game.bin"}]
        self.assertEqual(self.report("info", "game.cue")[1]["container"]["tracks"], tracks)
        self.assertEqual(verified["tracks"], [track | {"checked": track["number"] == 1} for track in tracks])
        self.assertEqual(verified["bins"], [{"file": "game.bin"} | sums(self.read("game.bin"))])

    def test_the_same_file_without_its_sheet(self):
        """Audio tracks in a raw file are named and never taken for data."""
        self.write("game.bin", self.raw(1) + AUDIO)
        name = "sectors %d to %d: no data sector, perhaps audio" % (self.sectors, self.sectors + 19)
        status, report = self.report("verify", "game.bin")
        self.assertEqual((status, "image" in report), (1, False))
        self.assertIn(name, report["problems"])
        self.assertEqual(report["bin"], {"file": "game.bin"} | sums(self.read("game.bin")))
        self.assertEqual(self.report("info", "game.bin")[1]["container"]["audio"], 20)

    def test_one_file_for_each_track(self):
        self.write("game (Track 1).bin", self.raw(2))
        for number in 2, 3:
            self.write("game (Track %d).bin" % number, AUDIO)
        self.sheet('FILE "game (Track 1).bin" BINARY', "  TRACK 01 MODE2/2352", "    INDEX 01 00:00:00",
                   'FILE "GAME (TRACK 2).BIN" BINARY', "  TRACK 02 AUDIO", "    INDEX 00 00:00:00",
                   "    INDEX 01 00:00:15", 'FILE "game (Track 3).bin" BINARY', "  TRACK 03 AUDIO",
                   "    INDEX 00 00:00:00", "    INDEX 01 00:00:15")
        verified = self.assert_is_the_image(audio=[2, 3])
        self.assertEqual([track["sectors"] for track in verified["tracks"]], [self.sectors, 5, 5])
        self.assertEqual([entry["sha1"] for entry in verified["bins"]],
                         [hashlib.sha1(content).hexdigest() for content in (self.raw(2), AUDIO, AUDIO)])
        os.remove(self.path("game (Track 3).bin"))
        status, verified = self.report("verify", "game.cue")
        self.assertEqual(status, 1)
        self.assertTrue(verified["problems"][0].startswith("game (Track 3).bin: "), verified)
        self.assertEqual(verified["tracks"][2]["sectors"], None)
        self.assertEqual(verified["image"], sums(self.image))

    def test_a_data_track_behind_audio(self):
        """Its addresses follow its own first one; INDEX 00 to 01 is in the file, PREGAP is not."""
        self.write("game.bin", AUDIO + bytes(2352 * 10) + self.raw(1, 180))
        self.sheet('FILE "game.bin" BINARY', "TRACK 01 AUDIO", "INDEX 01 00:00:00", "TRACK 02 MODE1/2352",
                   "PREGAP 00:02:00", "INDEX 00 " + position(20), "INDEX 01 " + position(30))
        verified = self.assert_is_the_image(audio=[1])
        self.assertEqual([track["checked"] for track in verified["tracks"]], [False, True])
        self.assertEqual(self.report("info", "game.cue")[1]["container"]["first_address"], "00:04:30")
        raw = bytearray(self.read("game.bin"))
        raw[2352 * 40 + 14] ^= 1
        self.write("game.bin", raw)
        self.assertEqual(self.report("verify", "game.cue")[1]["problems"], ["sector 10: wrong address, EDC, parity"])

    def test_further_data_tracks_are_named_and_checked(self):
        """A disc of two sessions, as dumps describe it: the second one's track has addresses of its own."""
        second = self.raw(1, 600)
        self.write("game (Track 1).bin", self.raw(2))
        self.write("game (Track 2).bin", second)
        self.sheet("REM SESSION 01", 'FILE "game (Track 1).bin" BINARY', "  TRACK 01 MODE2/2352", "    INDEX 01 00:00:00",
                   "REM LEAD-OUT 00:10:00", "REM SESSION 02", "REM LEAD-IN 01:00:00", 'FILE "game (Track 2).bin" BINARY',
                   "  TRACK 02 MODE1/2352", "    INDEX 01 00:00:00")
        named = "game.cue: track 2 (MODE1/2352) is not in the image\n"
        result = self.run_here("bin2iso", "-o", "out.iso", "game.cue")
        self.assertEqual((result.status, result.err), (1, "vantrel bin2iso: " + named))
        self.assertEqual(self.read("out.iso"), self.image)
        result = self.run_here("extract", "game.cue", "-C", "files")
        self.assertEqual((result.status, result.err), (1, "vantrel extract: " + named))
        self.assertEqual(self.files_below("files"), self.files)
        status, report = self.report("verify", "game.cue")
        self.assertEqual((status, report["problems"], [track["checked"] for track in report["tracks"]]), (0, [], [True, True]))
        damaged = bytearray(second)
        damaged[2352 * 7 + 100] ^= 1
        self.write("game (Track 2).bin", damaged)
        status, report = self.report("verify", "game.cue")
        self.assertEqual((status, report["problems"]), (1, ["track 2: sector 7: wrong EDC, parity"]))
        self.assertEqual(report["image"], sums(self.image))
        os.remove(self.path("game (Track 2).bin"))
        status, report = self.report("verify", "game.cue")
        self.assertEqual((status, [track["checked"] for track in report["tracks"]]), (1, [True, False]), report)

    def test_bytes_left_over(self):
        self.write("game.bin", self.raw(1) + bytes(7))
        self.sheet('FILE "game.bin" BINARY', "TRACK 01 MODE1/2352", "INDEX 01 00:00:00")
        text = "not whole sectors of 2352 bytes: 7 bytes are left over"
        result = self.run_here("bin2iso", "-o", "out.iso", "game.cue")
        self.assertEqual((result.status, result.err), (1, "vantrel bin2iso: game.cue: game.bin: %s\n" % text))
        self.assertFalse(os.path.exists(self.path("out.iso")))
        result = self.run_here("bin2iso", "--ignore-errors", "-o", "out.iso", "game.cue")
        self.assertEqual(result.status, 1)
        self.assertEqual(self.read("out.iso"), self.image)

    def test_unusable_sheets_are_refused(self):
        self.write("game.bin", self.raw(1))
        for lines, text in (
                (["TRACK 01 AUDIO", "INDEX 01 00:00:00"], "game.cue: the sheet has audio tracks only"),
                (["TRACK 01 MODE1/2352", "INDEX 01 0:0:0"],
                 "game.cue:3: INDEX needs a number from 00 to 99 and a position mm:ss:ff"),
                (["TRACK 01 MODE1/2352", "INDEX 01 60:00:00"], "game.cue:2: track 1 does not lie within game.bin"),
                (["TRACK 01 CDG", "INDEX 01 00:00:00"], 'game.cue:2: unknown track mode "CDG"'),
                (["TRACK 01 MODE1/2352", "INDEX 01 00:00:05", "FILE missing.bin BINARY", "TRACK x"],
                 "game.cue:5: TRACK needs a number from 01 to 99 and a mode"),
                (["TRACK 01 MODE1/2352", "INDEX 02 00:00:05"], "game.cue:2: the track has no INDEX 01")):
            self.sheet('FILE "game.bin" BINARY', *lines)
            before = self.names()
            for command in "bin2iso", "info", "verify", "list", "extract":
                result = self.run_here(command, "game.cue")
                self.assertEqual((result.status, result.out, result.err), (1, "", "vantrel %s: %s\n" % (command, text)))
            self.assertEqual(self.names(), before)
        self.sheet('FILE "missing.bin" BINARY', "TRACK 01 MODE1/2352", "INDEX 01 00:00:00")
        for command in "bin2iso", "info", "verify", "list", "extract":
            result = self.run_here(command, "game.cue")
            self.assertEqual((result.status, result.out), (1, ""))
            self.assertIn("vantrel %s: game.cue: missing.bin: " % command, result.err)

    def test_files_of_the_sheet_are_never_overwritten(self):
        self.write("game.bin", self.raw(1))
        self.write("audio.bin", AUDIO)
        self.sheet('FILE "game.bin" BINARY', "TRACK 01 MODE1/2352", "INDEX 01 00:00:00",
                   'FILE "audio.bin" BINARY', "TRACK 02 AUDIO", "INDEX 01 00:00:00")
        before = self.names()
        for name in "game.bin", "audio.bin":
            content = self.read(name)
            result = self.run_here("bin2iso", "-f", "-o", name, "game.cue")
            self.assertEqual((result.status, result.err),
                             (1, "vantrel bin2iso: game.cue: %s: the output would be a file of the input\n" % name))
            self.assertEqual(self.read(name), content)
        self.assertEqual(self.names(), before)

    def test_extracted_files_replace_no_file_of_the_sheet(self):
        self.write("src/GAME.BIN", b"a file of the image")
        self.master()
        raw = self.raw(1)
        self.write("GAME.BIN", raw)
        self.sheet('FILE "GAME.BIN" BINARY', "TRACK 01 MODE1/2352", "INDEX 01 00:00:00")
        before = self.state()
        result = self.run_here("extract", "-f", "game.cue")
        self.assertEqual((result.status, result.out, result.err), (
            1, "", 'vantrel extract: game.cue: "GAME.BIN" cannot be extracted: GAME.BIN is a file of the image\n'))
        self.assertEqual(self.state(), before)

    def test_the_summary_counts_the_data_track(self):
        self.write("game.bin", self.raw(1) + AUDIO)
        self.sheet('FILE "game.bin" BINARY', "TRACK 01 MODE1/2352", "INDEX 01 00:00:00", "TRACK 02 AUDIO",
                   "INDEX 01 " + position(self.sectors))
        self.write("other.cue", self.read("game.cue"))
        result = self.run_here("bin2iso", "-k", "game.cue", "other.cue")
        self.assertIn("; %d bytes in, %d bytes out, " % (2 * 2352 * self.sectors, 2 * len(self.image)), result.err)

    def test_sheets_of_iso2bin(self):
        image = bytearray(self.image)
        image[33342:33345] = b"PLA"
        image[33792:33795] = b"CD-"
        self.image = bytes(image)
        self.write("plain.iso", image)
        self.assert_done(self.run_here("iso2bin", "-o", "game.bin", "plain.iso"))
        self.assert_is_the_image()
        result = self.run_here("verify", "game.cue", "--against", "plain.iso")
        self.assertEqual(result.status, 0, result)


if __name__ == "__main__":
    unittest.main()
