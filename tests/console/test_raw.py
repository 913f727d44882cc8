"""iso2bin and bin2iso of the built program: raw image and sheet appear together or not at all."""
import os
import random
import resource
import signal
import subprocess
import sys
import unittest

from support import IS_WINDOWS, ConsoleTest, interrupted


def cd_image(sectors=40, volume=None, seed=1):
    """An image with the marks of a PlayStation 2 CD."""
    image = bytearray(random.Random(seed).randbytes(sectors * 2048))
    image[33342:33345] = b"PLA"
    image[33792:33795] = b"CD-"
    image[32848:32852] = (sectors if volume is None else volume).to_bytes(4, "little")
    return bytes(image)


REFERENCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../oracle/raw_reference.py")
SHEET = b'FILE "%s" BINARY\r\n  TRACK 01 MODE2/2352\r\n    INDEX 01 00:00:00\r\n'


class RawCommands(ConsoleTest):
    def test_round_trip(self):
        self.write("my.Game.iso", cd_image())
        result = self.run_here("iso2bin", "my.Game.iso")
        self.assert_done(result)
        self.assertEqual(result.out, "my.Game.iso -> my.Game.bin: Conversion iso2bin Done ! (%d bytes)\n" % (40 * 2352))
        self.assertEqual(self.names(), ["my.Game.bin", "my.Game.cue", "my.Game.iso"])
        self.assertEqual(self.read("my.Game.cue"), SHEET % b"my.Game.bin")
        self.write("my.Game.iso", b"older")
        result = self.run_here("bin2iso", "-f", "my.Game.bin")
        self.assert_done(result)
        self.assertEqual(result.out, "my.Game.bin -> my.Game.iso: Conversion bin2iso Done ! (%d bytes)\n" % (40 * 2048))
        self.assertEqual(self.read("my.Game.iso"), cd_image())

    def test_only_a_missing_postgap_is_appended(self):
        for volume, added, notice in (
                (190, 150, ""), (40, 0, ""), (39, 0, ""),
                (41, 0, "game.iso is truncated: it has 40 sectors, its volume descriptor says 41\n"),
                (189, 0, "game.iso is truncated: it has 40 sectors, its volume descriptor says 189\n")):
            image = bytearray(cd_image(40, volume))
            image[32769:32774] = b"CD001"
            self.write("game.iso", image)
            result = self.run_here("iso2bin", "-f", "game.iso")
            self.assert_done(result)
            self.assertEqual(result.out.split("game.iso -> ")[0], notice)
            self.assertEqual(len(self.read("game.bin")), (40 + added) * 2352)
            self.assert_done(self.run_here("bin2iso", "-f", "game.bin"))
            self.assertEqual(self.read("game.iso"), image + bytes(added * 2048))

    def test_the_sheet_is_written_beside_the_raw_image(self):
        self.write("game.iso", cd_image())
        os.mkdir(self.path("folder"))
        self.assert_done(self.run_here("iso2bin", "--output-dir", "folder", "game.iso"))
        self.assertEqual(sorted(os.listdir(self.path("folder"))), ["game.bin", "game.cue"])
        self.assert_done(self.run_here("iso2bin", "-o", "other.img", "game.iso"))
        self.assertEqual(self.read("other.cue"), SHEET % b"other.img")
        self.assert_done(self.run_here("iso2bin", "-o", "odd.cue", "game.iso"))
        self.assertEqual(self.read("odd.cue.cue"), SHEET % b"odd.cue")

    def test_an_older_sheet_is_an_output_too(self):
        self.write("game.iso", cd_image())
        self.write("game.cue", b"older")
        result = self.run_here("iso2bin", "game.iso")
        self.assertEqual((result.status, result.err),
                         (1, "vantrel iso2bin: game.iso: game.cue exists already; -f replaces it\n"))
        self.assertEqual(self.names(), ["game.cue", "game.iso"])
        self.assert_done(self.run_here("iso2bin", "-f", "game.iso"))
        self.assertEqual(self.read("game.cue"), SHEET % b"game.bin")

    def test_refusals(self):
        self.write("game.bin", b"older")
        self.write("game.cue", b"older too")
        spoilt = bytearray(cd_image())
        spoilt[33342] = 0
        for content, text in ((b"", "game.iso: Code 76 PS2 - invalid PS2 CD iso  file header  game.iso"),
                              (spoilt, "game.iso: Code 76 PS2 - invalid PS2 CD iso  file header  game.iso"),
                              (cd_image() + b"x",
                               "game.iso is not whole sectors of 2048 bytes: 1 bytes are left over")):
            self.write("game.iso", content)
            before = self.state()
            result = self.run_here("iso2bin", "-f", "game.iso")
            self.assertEqual((result.status, result.err), (1, "vantrel iso2bin: %s\n" % text))
            self.assertEqual(self.state(), before)
        result = self.run_here("iso2bin", "missing.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 103- Error Opening missing.iso", result.err)
        result = self.run_here("bin2iso", "-f", "game.bin")
        self.assertEqual((result.status, result.err),
                         (1, "vantrel bin2iso: game.bin: there is no whole sector of 2352 bytes\n"))
        result = self.run_here("bin2iso", "missing.bin")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 2011 - Error Opening missing.bin", result.err)
        self.assertEqual(self.state(), before)

    def raw_image(self, sectors=40):
        """The content of a correct raw image; the plain one is "game.iso"."""
        self.write("game.iso", cd_image(sectors))
        self.assert_done(self.run_here("iso2bin", "-o", "good.bin", "game.iso"))
        os.remove(self.path("good.cue"))
        return bytearray(self.read("good.bin"))

    def convert(self, raw, *words):
        """Converts a raw image to "out.iso", which must not exist before."""
        self.write("game.bin", raw)
        return self.run_here("bin2iso", "-o", "out.iso", *words, "game.bin")

    def assert_refused_unless_ignored(self, raw, lines):
        """The damage is refused without a trace; --ignore-errors writes the image and tells the same."""
        text = "vantrel bin2iso: " + "\n".join("game.bin: " + line for line in lines) + "\n"
        before = self.names()
        result = self.convert(raw)
        self.assertEqual((result.status, result.out, result.err), (1, "", text))
        self.assertEqual(self.names(), sorted(set(before + ["game.bin"])))
        result = self.convert(raw, "--ignore-errors")
        self.assertEqual((result.status, result.err), (1, text))
        self.assertIn("game.bin -> out.iso: Conversion bin2iso Done !", result.out)
        result = self.run_here("bin2iso", "--ignore-errors", "-f", "-q", "-o", "out.iso", "game.bin")
        self.assertEqual((result.status, result.out, result.err), (1, "", text))
        image = self.read("out.iso")
        os.remove(self.path("out.iso"))
        return image

    def test_bytes_behind_the_last_whole_sector_are_refused(self):
        raw = self.raw_image()
        image = self.assert_refused_unless_ignored(
            raw + bytes(100), ["not whole sectors of 2352 bytes: 100 bytes are left over"])
        self.assertEqual(image, cd_image())

    def test_damaged_sectors_are_refused(self):
        raw = self.raw_image(600)
        for sector, offset in (5, 24), (6, 100), (7, 2071), (9, 2072), (255, 500), (256, 500), (300, 16), (400, 3):
            raw[sector * 2352 + offset] ^= 1
        raw[500 * 2352 + 2076] ^= 1  # parity, which no user data depends on
        raw[501 * 2352 + 13] ^= 1    # and the address
        expected = bytearray(cd_image(600))
        expected[5 * 2048] ^= 1
        expected[6 * 2048 + 76] ^= 1
        expected[7 * 2048 + 2047] ^= 1
        for sector in 255, 256:
            expected[sector * 2048 + 476] ^= 1
        image = self.assert_refused_unless_ignored(raw, [
            "sectors 5 to 7: wrong EDC", "sector 9: wrong EDC", "sectors 255 to 256: wrong EDC",
            "sector 300: wrong mode or form", "sector 400: wrong sync field"])
        self.assertEqual(image, expected)

    def test_many_ranges_are_counted(self):
        raw = self.raw_image(100)
        for sector in range(0, 100, 2):
            raw[sector * 2352 + 100] ^= 1
        self.assert_refused_unless_ignored(raw, ["sector %d: wrong EDC" % sector for sector in range(0, 40, 2)] +
                                           ["30 more ranges of damaged sectors"])

    def test_audio_is_refused(self):
        raw = self.raw_image()
        self.assert_refused_unless_ignored(raw + bytes(2352) + random.Random(1).randbytes(2352),
                                           ["sectors 40 to 41: no data sector, perhaps audio"])
        result = self.convert(random.Random(1).randbytes(2352 * 40), "--ignore-errors")
        self.assertEqual((result.status, result.err),
                         (1, "vantrel bin2iso: game.bin: does not begin with a data sector of 2352 bytes\n"))
        self.assertFalse(os.path.exists(self.path("out.iso")))

    def test_sectors_with_subchannels_are_named(self):
        raw = self.raw_image()
        longer = b"".join(raw[at:at + 2352] + bytes(96) for at in range(0, len(raw), 2352))
        self.write("game.bin", longer)
        for words in (["bin2iso", "-o", "out.iso"], ["bin2iso", "--ignore-errors", "-o", "out.iso"], ["info"], ["verify"],
                      ["list"], ["extract", "-C", "out"]):
            result = self.run_here(*words, "game.bin")
            self.assertEqual((result.status, result.out, result.err),
                             (1, "", "vantrel %s: game.bin: its sectors are stored with their subchannels, 2448 bytes "
                                     "each; only sectors of 2352 bytes can be read\n" % words[0]))
        self.assertEqual(self.names(), ["game.bin", "game.iso", "good.bin"])

    def test_form_2_is_refused_if_an_image_cannot_hold_its_data(self):
        raw = self.raw_image()
        for sector, data in (10, b""), (20, bytes(2047) + b"1"), (30, bytes(2048) + b"1"):
            raw[sector * 2352 + 16:(sector + 1) * 2352] = (b"\0\0\x20\0" * 2 + data).ljust(2336, b"\0")
        self.assert_refused_unless_ignored(raw, ["sector 30: 2324 bytes of Form 2 data"])

    def test_mode_1(self):
        self.write("game.iso", cd_image())
        subprocess.run([sys.executable, REFERENCE, "expand", "1", "0", self.path("game.iso"), self.path("one.bin")],
                       check=True)
        self.assert_done(self.run_here("bin2iso", "-o", "out.iso", "one.bin"))
        self.assertEqual(self.read("out.iso"), cd_image())
        raw = bytearray(self.read("one.bin"))
        os.remove(self.path("out.iso"))
        raw[3 * 2352 + 16] ^= 1
        self.assert_refused_unless_ignored(raw, ["sector 3: wrong EDC"])

    def test_a_warning_counts_as_a_failure_among_several_files(self):
        raw = self.raw_image()
        self.write("a.bin", raw + bytes(1))
        self.write("b.bin", raw)
        result = self.run_here("bin2iso", "--ignore-errors", "--keep-going", "a.bin", "b.bin")
        self.assertEqual(result.status, 1)
        self.assertIn("1 converted, 1 failed, 0 skipped", result.err)

    @unittest.skipIf(IS_WINDOWS, "signals and limits of POSIX")
    def test_no_partial_output_is_kept(self):
        self.write("game.iso", cd_image(100_000))
        self.write("game.bin", b"older")
        self.write("game.cue", b"older too")
        before = self.state()
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))
        result = self.run_here("iso2bin", "-f", "game.iso", preexec_fn=limit)
        self.assertEqual(result.status, 1, result)
        self.assertIn("Cannot write game.bin: ", result.err)
        self.assertEqual(self.state(), before)
        stopped = 0
        for round_number in range(15):
            seconds = random.Random(round_number).uniform(0.005, 0.2)
            result = interrupted(["iso2bin", "-f", "game.iso"], self.folder, seconds, signal.SIGINT)
            if result.status == 0:
                self.write("game.bin", b"older")
                self.write("game.cue", b"older too")
            else:
                self.assertIn(result.status, (130, -signal.SIGINT), result)
                stopped += 1
            self.assertEqual(self.state(), before)
        self.assertGreater(stopped, 3)

    @unittest.skipIf(IS_WINDOWS, "a name that Windows does not allow")
    def test_a_name_that_a_sheet_cannot_express(self):
        self.write('a"b.iso', cd_image())
        result = self.run_here("iso2bin", 'a"b.iso')
        self.assertEqual((result.status, result.err),
                         (1, 'vantrel iso2bin: a"b.iso: A CUE sheet cannot name the file a"b.bin\n'))
        self.assertEqual(self.names(), ['a"b.iso'])

    def test_wrong_usage(self):
        for words in (["iso2bin"], ["bin2iso"], ["iso2bin", "--nonsense", "x"], ["bin2iso", "-o", "a", "b", "c"]):
            result = self.run_here(*words)
            self.assertEqual((result.status, result.out), (2, ""), (words, result))


if __name__ == "__main__":
    unittest.main()
