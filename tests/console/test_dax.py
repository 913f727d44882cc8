"""iso2dax and dax2iso of the built program."""
import unittest

from support import ConsoleTest, psp_image


class DaxCommands(ConsoleTest):
    def test_round_trip(self):
        image = psp_image(41)
        self.write("Game.iso", image)
        result = self.run_here("iso2dax", "Game.iso")
        self.assert_done(result)
        size = len(self.read("Game.dax"))
        self.assertEqual(result.out, "Game.iso -> Game.dax: Compression iso2dax Done ! (%d bytes)\n" % size)
        self.write("Game.iso", b"older")
        result = self.run_here("dax2iso", "-f", "Game.dax")
        self.assert_done(result)
        self.assertEqual(result.out,
                         "Game.dax -> Game.iso: Decompression dax2iso Done ! (%d bytes)\n" % len(image))
        self.assertEqual(self.read("Game.iso"), image)

    def test_levels(self):
        self.write("game.iso", psp_image())
        sizes = []
        for level in "1", "9":
            self.assert_done(self.run_here("iso2dax", "-f", "-l", level, "game.iso"))
            sizes.append(len(self.read("game.dax")))
        self.assertGreater(sizes[0], sizes[1])
        self.assert_done(self.run_here("iso2dax", "-q", "-o", "other", "game.iso"))
        self.assertEqual(self.read("other"), self.read("game.dax"), "9 is the default")

    def test_the_output_is_the_same_for_any_number_of_threads(self):
        image = psp_image(703)
        self.write("game.iso", image)
        self.assert_done(self.run_here("iso2dax", "game.iso"))
        default = self.read("game.dax")
        for jobs in 1, 2, 3, 256:
            self.assert_done(self.run_here("iso2dax", "-f", "-j", jobs, "game.iso"))
            self.assertEqual(self.read("game.dax"), default, jobs)
            self.assert_done(self.run_here("dax2iso", "-f", "-j", jobs, "game.dax"))
            self.assertEqual(self.read("game.iso"), image, jobs)
        self.assertEqual(self.run_here("dax2iso", "-j", "0", "game.dax").status, 2)

    def test_a_damaged_frame_is_the_same_failure_for_any_number_of_threads(self):
        self.write("game.iso", psp_image(1000))
        self.assert_done(self.run_here("iso2dax", "game.iso"))
        dax = bytearray(self.read("game.dax"))
        frames = 250
        damaged = dax[:]
        damaged[int.from_bytes(dax[32 + 4 * 150:36 + 4 * 150], "little")] ^= 0xFF
        damaged[32 + 4 * frames + 2 * 160 + 1] = 0xFF  # a later frame claims an impossible length
        missing = dax[:]
        missing[32 + 4 * 140 + 3] = 0xFF  # an earlier frame starts behind the end
        missing[int.from_bytes(dax[32 + 4 * 150:36 + 4 * 150], "little")] ^= 0xFF
        for content, text in ((damaged, "Error while decompressing (corrupt input?)"),
                              (missing, "Input seems to be corrupted.")):
            self.write("game.dax", content)
            before = self.state()
            for jobs in 1, 2, 5:
                result = self.run_here("dax2iso", "-f", "-j", jobs, "game.dax")
                self.assertEqual((result.status, result.out, result.err), (1, "", "vantrel dax2iso: game.dax: %s\n" % text))
            self.assertEqual(self.state(), before)

    def test_a_damaged_file_keeps_the_older_output(self):
        self.write("game.iso", psp_image())
        self.assert_done(self.run_here("iso2dax", "game.iso"))
        dax = bytearray(self.read("game.dax"))
        dax[-1] ^= 1
        self.write("game.dax", dax)
        self.write("game.iso", b"older")
        before = self.state()
        result = self.run_here("dax2iso", "-f", "game.dax")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err, "vantrel dax2iso: game.dax: Error while decompressing (corrupt input?)\n")
        self.assertEqual(self.state(), before)
        self.write("game.dax", dax[:len(dax) // 2])
        before = self.state()
        result = self.run_here("dax2iso", "-f", "game.dax")
        self.assertEqual((result.status, result.err), (1, "vantrel dax2iso: game.dax: Input seems to be corrupted.\n"))
        self.assertEqual(self.state(), before)

    def test_messages_of_the_conversion(self):
        self.write("other.iso", bytes(40000))
        result = self.run_here("iso2dax", "other.iso")
        self.assertEqual((result.status, result.err), (
            1, "vantrel iso2dax: other.iso: Code 50 PSP - invalid PSP iso  file header  other.iso\n"))
        result = self.run_here("iso2dax", "missing.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 9101e - Error Opening missing.iso", result.err)
        result = self.run_here("dax2iso", "missing.dax")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 1003- Cannot open input file missing.iso", result.err)
        self.assertEqual(self.names(), ["other.iso"])


if __name__ == "__main__":
    unittest.main()
