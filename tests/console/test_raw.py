"""iso2bin and bin2iso of the built program: raw image and sheet appear together or not at all."""
import os
import random
import resource
import signal
import unittest

from support import IS_WINDOWS, ConsoleTest, interrupted


def cd_image(sectors=40, volume=None, seed=1):
    """An image with the marks of a PlayStation 2 CD."""
    image = bytearray(random.Random(seed).randbytes(sectors * 2048))
    image[33342:33345] = b"PLA"
    image[33792:33795] = b"CD-"
    image[32848:32852] = (sectors if volume is None else volume).to_bytes(4, "little")
    return bytes(image)


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

    def test_a_postgap_where_the_volume_has_another_length(self):
        for volume in 39, 41:
            self.write("game.iso", cd_image(40, volume))
            self.assert_done(self.run_here("iso2bin", "-f", "game.iso"))
            self.assertEqual(len(self.read("game.bin")), 190 * 2352)
            self.assert_done(self.run_here("bin2iso", "-f", "game.bin"))
            self.assertEqual(self.read("game.iso"), cd_image(40, volume) + bytes(150 * 2048))

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
        self.assertEqual((result.status, result.err), (1, "vantrel bin2iso: game.bin: Error bin image => MODE 2 only !\n"))
        result = self.run_here("bin2iso", "missing.bin")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 2011 - Error Opening missing.bin", result.err)
        self.assertEqual(self.state(), before)

    def test_bytes_behind_the_last_whole_sector_are_reported(self):
        self.write("game.iso", cd_image())
        self.assert_done(self.run_here("iso2bin", "game.iso"))
        self.write("game.bin", self.read("game.bin") + bytes(100))
        result = self.run_here("bin2iso", "-f", "game.bin")
        self.assert_done(result)
        self.assertIn("game.bin: the last 100 bytes are no whole sector and were left out\n", result.out)
        self.assertEqual(self.read("game.iso"), cd_image())

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
