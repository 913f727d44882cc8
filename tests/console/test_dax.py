"""iso2dax and dax2iso through the program itself."""
import unittest

from support import ConsoleTest, psp_image


class DaxCommands(ConsoleTest):
    def test_there_and_back(self):
        image = psp_image(41)
        self.write("Game.iso", image)
        result = self.run_here("iso2dax", "Game.iso")
        self.assert_done(result)
        size = len(self.read("Game.dax"))
        self.assertEqual(result.out, "Game.iso -> Game.dax: Compression iso2dax Done ! (%d bytes)\n" % size)
        result = self.run_here("dax2iso", "Game.dax")
        self.assert_done(result)
        self.assertEqual(result.out,
                         "Game.dax -> new-Game.iso: Decompression dax2iso Done ! (%d bytes)\n" % len(image))
        self.assertEqual(self.read("new-Game.iso"), image)

    def test_levels(self):
        self.write("game.iso", psp_image())
        sizes = []
        for level in "1", "9":
            self.assert_done(self.run_here("iso2dax", "-f", "-l", level, "game.iso"))
            sizes.append(len(self.read("game.dax")))
        self.assertGreater(sizes[0], sizes[1])
        self.assert_done(self.run_here("iso2dax", "-q", "-o", "other", "game.iso"))
        self.assertEqual(self.read("other"), self.read("game.dax"), "9 is the default")

    def test_a_damaged_file_keeps_the_older_output(self):
        self.write("game.iso", psp_image())
        self.assert_done(self.run_here("iso2dax", "game.iso"))
        dax = bytearray(self.read("game.dax"))
        dax[-1] ^= 1
        self.write("game.dax", dax)
        self.write("new-game.iso", b"older")
        before = self.state()
        result = self.run_here("dax2iso", "-f", "game.dax")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err, "vantrel dax2iso: Error while decompressing (corrupt input?)\n")
        self.assertEqual(self.state(), before)
        self.write("game.dax", dax[:len(dax) // 2])
        before = self.state()
        result = self.run_here("dax2iso", "-f", "game.dax")
        self.assertEqual((result.status, result.err), (1, "vantrel dax2iso: Input seems to be corrupted.\n"))
        self.assertEqual(self.state(), before)

    def test_the_programs_own_texts(self):
        self.write("other.iso", bytes(40000))
        result = self.run_here("iso2dax", "other.iso")
        self.assertEqual((result.status, result.err), (
            1, "vantrel iso2dax: Code 50 PSP - invalid PSP iso  file header  other.iso\n"))
        result = self.run_here("iso2dax", "missing.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 9101e - Error Opening missing.iso", result.err)
        result = self.run_here("dax2iso", "missing.dax")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 1003- Cannot open input file new-missing.iso", result.err)
        self.assertEqual(self.names(), ["other.iso"])


if __name__ == "__main__":
    unittest.main()
