"""iso2cso and cso2iso of the built program: names, options, refusals, exit statuses."""
import os
import unittest

from support import IS_WINDOWS, ConsoleTest, psp_image


class CsoCommands(ConsoleTest):
    def test_round_trip(self):
        image = psp_image()
        self.write("Game.iso", image)
        result = self.run_here("iso2cso", "Game.iso")
        self.assert_done(result)
        size = len(self.read("Game.cso"))
        self.assertEqual(result.out, "Game.iso -> Game.cso: Compression iso2cso Done ! (%d bytes)\n" % size)
        os.remove(self.path("Game.iso"))
        result = self.run_here("cso2iso", "Game.cso")
        self.assert_done(result)
        self.assertEqual(result.out,
                         "Game.cso -> Game.iso: ciso decompress cso2iso Done ! (%d bytes)\n" % len(image))
        self.assertEqual(self.read("Game.iso"), image)
        self.assertEqual(self.names(), ["Game.cso", "Game.iso"])

    def test_only_the_last_extension_is_replaced(self):
        for name, output in (("Game v1.02 (Disc 1).iso", "Game v1.02 (Disc 1).cso"), ("a.b.c.ISO", "a.b.c.cso"),
                             ("none", "none.cso"), ("x" * 60 + ".iso", "x" * 60 + ".cso")):
            self.write(name, psp_image())
            self.assert_done(self.run_here("iso2cso", name))
            self.assertEqual(self.names(), sorted([name, output]))
            os.remove(self.path(name))
            self.assert_done(self.run_here("cso2iso", output))
            self.assertEqual(self.names(), sorted([output, output[:-3] + "iso"]))
            os.remove(self.path(output))
            os.remove(self.path(output[:-3] + "iso"))

    def test_output_options(self):
        self.write("game.iso", psp_image())
        os.mkdir(self.path("folder"))
        self.assert_done(self.run_here("iso2cso", "-o", "other.bin", "game.iso"))
        self.assert_done(self.run_here("iso2cso", "--output-dir", "folder", "game.iso"))
        self.assertEqual(self.read("other.bin"), self.read("folder/game.cso"))

    def test_levels(self):
        self.write("game.iso", psp_image())
        sizes = []
        for level in "1", "9":
            self.assert_done(self.run_here("iso2cso", "-f", "-l", level, "game.iso"))
            sizes.append(len(self.read("game.cso")))
        self.assert_done(self.run_here("iso2cso", "-f", "game.iso"))
        self.assertEqual(len(self.read("game.cso")), sizes[1], "9 is the default")
        self.assertGreater(sizes[0], sizes[1])

    def test_the_output_is_the_same_for_any_number_of_threads(self):
        image = psp_image(700)
        source = image + b"a partial block"
        self.write("game.iso", source)
        self.assert_done(self.run_here("iso2cso", "game.iso"))
        default = self.read("game.cso")
        for words in ["-j", "1"], ["--jobs", "2"], ["--jobs=3"], ["-j", "256"]:
            self.assert_done(self.run_here("iso2cso", "-f", *words, "game.iso"))
            self.assertEqual(self.read("game.cso"), default, words)
            self.assert_done(self.run_here("cso2iso", "-f", *words, "game.cso"))
            self.assertEqual(self.read("game.iso"), image, words)
            self.write("game.iso", source)

    def test_the_number_of_threads_is_checked(self):
        self.write("game.iso", psp_image())
        for jobs in "0", "-1", "257", "many", "":
            result = self.run_here("iso2cso", "-j", jobs, "game.iso")
            self.assertEqual((result.status, result.out), (2, ""), (jobs, result))
        self.assertEqual(self.names(), ["game.iso"])

    def test_a_damaged_block_is_the_same_failure_for_any_number_of_threads(self):
        self.write("game.iso", psp_image(1000))
        self.assert_done(self.run_here("iso2cso", "game.iso"))
        cso = bytearray(self.read("game.cso"))
        for block in 600, 602, 640:  # text; every other block is random data and stored plain
            position = int.from_bytes(cso[24 + 4 * block:28 + 4 * block], "little")
            cso[position] = 0xFF
        self.write("game.cso", cso)
        before = self.state()
        for jobs in 1, 2, 5:
            result = self.run_here("cso2iso", "-f", "-j", jobs, "game.cso")
            self.assertEqual((result.status, result.out), (1, ""))
            self.assertEqual(result.err, "vantrel cso2iso: game.cso: Code 1108-inflate : invalid block type\n")
        cso[24 + 4 * 500:28 + 4 * 500] = (0x7FFFFFF0).to_bytes(4, "little")
        self.write("game.cso", cso[:-5000])
        before = self.state()
        for jobs in 1, 2, 5:
            result = self.run_here("cso2iso", "-f", "-j", jobs, "game.cso")
            self.assertEqual((result.status, result.err), (1, "vantrel cso2iso: game.cso: Code 1107-block 500 : read error\n"))
        self.assertEqual(self.state(), before)

    def test_standard_output_is_no_output(self):
        self.write("game.iso", psp_image())
        result = self.run_here("iso2cso", "-o", "-", "game.iso")
        self.assertEqual((result.status, result.out), (2, ""))
        self.assertIn("--output: results cannot go to standard output", result.err)
        self.assertEqual(self.names(), ["game.iso"])

    def test_an_existing_output_is_refused_without_force(self):
        self.write("game.iso", psp_image())
        self.write("game.cso", b"older")
        result = self.run_here("iso2cso", "game.iso")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertEqual(result.err, "vantrel iso2cso: game.iso: game.cso exists already; -f replaces it\n")
        self.assertEqual(self.read("game.cso"), b"older")
        self.assert_done(self.run_here("iso2cso", "--force", "game.iso"))
        self.assertEqual(self.read("game.cso")[:4], b"CISO")

    def test_a_failure_keeps_the_older_output(self):
        self.write("game.cso", b"CISO" + bytes(100))
        self.write("game.iso", b"older")
        before = self.state()
        result = self.run_here("cso2iso", "-f", "game.cso")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err, "vantrel cso2iso: game.cso: Code 11011 - ciso file format error game.iso\n")
        self.assertEqual(self.state(), before)

    def test_the_input_is_never_the_output(self):
        image = psp_image()
        self.write("game.iso", image)
        result = self.run_here("iso2cso", "-f", "-o", os.path.join(".", "game.iso"), "game.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("game.iso: the output would be the input itself", result.err)
        if not IS_WINDOWS:
            os.symlink("game.iso", self.path("link.cso"))
            os.link(self.path("game.iso"), self.path("hard.cso"))
            for link in "link.cso", "hard.cso":
                result = self.run_here("iso2cso", "-f", "-o", link, "game.iso")
                self.assertEqual(result.status, 1)
                self.assertIn("the output would be the input itself", result.err)
        self.assertEqual(self.read("game.iso"), image)

    def test_messages_of_the_conversion(self):
        self.write("other.iso", bytes(40000))
        result = self.run_here("iso2cso", "other.iso")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err,
                         "vantrel iso2cso: other.iso: Code 50 PSP - invalid PSP iso  file header  other.iso\n")
        result = self.run_here("iso2cso", "missing.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 1001e - Error Opening missing.iso (missing.iso: ", result.err)
        result = self.run_here("iso2cso", ".")
        self.assertEqual(result.status, 1)
        self.assertIn(". is a folder", result.err)
        self.assertEqual(self.names(), ["other.iso"])

    def test_a_missing_folder_of_the_output_is_reported(self):
        self.write("game.iso", psp_image())
        result = self.run_here("iso2cso", "-o", os.path.join("nowhere", "game.cso"), "game.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("game.iso: Code 10010g - Error create nowhere", result.err)
        self.assertIn("there is no folder nowhere", result.err)

    def test_a_missing_output_folder_is_made(self):
        self.write("game.iso", psp_image())
        self.assert_done(self.run_here("iso2cso", "--output-dir", os.path.join("new", "folder"), "game.iso"))
        self.assertEqual(os.listdir(self.path("new/folder")), ["game.cso"])

    def test_an_output_folder_in_which_nothing_is_left_is_removed(self):
        self.write("game.iso", b"no image")
        os.mkdir(self.path("older"))
        for folder in os.path.join("new", "folder"), "older":
            self.assertEqual(self.run_here("iso2cso", "--output-dir", folder, "game.iso").status, 1)
        self.assertEqual(self.names(), ["game.iso", "older"])
        result = self.run_here("iso2cso", "--output-dir", os.path.join("game.iso", "sub"), "game.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("Cannot create the folder game.iso", result.err)

    def test_quiet(self):
        self.write("game.iso", psp_image())
        result = self.run_here("iso2cso", "-q", "game.iso")
        self.assertEqual((result.status, result.out, result.err), (0, "", ""))

    def test_many_files(self):
        self.write("one.iso", psp_image(seed=1))
        self.write("bad.iso", b"")
        self.write("two.iso", psp_image(seed=2))
        result = self.run_here("iso2cso", "one.iso", "bad.iso", "two.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("1 converted, 1 failed, 1 skipped; 81920 bytes in, ", result.err)
        self.assertEqual(self.names(), ["bad.iso", "one.cso", "one.iso", "two.iso"])
        result = self.run_here("iso2cso", "-f", "--keep-going", "one.iso", "bad.iso", "two.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("2 converted, 1 failed, 0 skipped; ", result.err)

    def test_two_inputs_never_share_an_output(self):
        self.write("a.iso", psp_image(seed=1))
        self.write("a.img", psp_image(seed=2))
        result = self.run_here("iso2cso", "-f", "a.iso", "a.img")
        self.assertEqual(result.status, 1)
        self.assertIn("a.img: a.cso was just written for another file", result.err)
        self.assert_done(self.run_here("cso2iso", "-f", "a.cso"))
        self.assertEqual(self.read("a.iso"), psp_image(seed=1))

    @unittest.skipUnless(IS_WINDOWS, "shells of other systems expand patterns")
    def test_patterns(self):
        self.write("one.iso", psp_image(seed=1))
        self.write("two.iso", psp_image(seed=2))
        result = self.run_here("iso2cso", "-q", "*.iso")
        self.assertEqual((result.status, result.err), (0, ""))
        self.assertEqual(self.names(), ["one.cso", "one.iso", "two.cso", "two.iso"])
        result = self.run_here("iso2cso", "no*.iso")
        self.assertIn("no*.iso", result.err)

    def test_names_in_any_script(self):
        name = "\u30b2\u30fc\u30e0 \u0418\u0433\u0440\u0430 caf\u00e9"
        self.write(name + ".iso", psp_image())
        self.assert_done(self.run_here("iso2cso", name + ".iso"))
        self.assertEqual(self.names(), sorted([name + ".cso", name + ".iso"]))

    def test_wrong_usage(self):
        for words in ([], ["nonsense"], ["iso2cso"], ["iso2cso", "-l", "0", "x"], ["iso2cso", "-l", "10", "x"],
                      ["iso2cso", "--nonsense", "x"], ["iso2cso", "-o", "a", "b", "c"],
                      ["iso2cso", "-o", "a", "--output-dir", "b", "c"]):
            result = self.run_here(*words)
            self.assertEqual((result.status, result.out), (2, ""), (words, result))
            self.assertNotEqual(result.err, "", words)

    def test_misspelt_words_get_a_suggestion(self):
        for words, text in ((["ios2cso", "x"], "vantrel: unknown command ios2cso; did you mean iso2cso?"),
                            (["iso2cso", "--forse", "x"],
                             "vantrel iso2cso: unknown option --forse; did you mean --force?"),
                            (["game.iso"], "vantrel: unknown command game.iso\n")):
            result = self.run_here(*words)
            self.assertEqual((result.status, result.out), (2, ""), (words, result))
            self.assertIn(text, result.err)

    def test_without_words_the_help_is_shown(self):
        result = self.run_here()
        self.assertEqual((result.status, result.out), (2, ""))
        self.assertEqual(result.err, self.run_here("--help").out)

    def test_help_and_version(self):
        result = self.run_here("--version")
        self.assertEqual((result.status, result.out), (0, "vantrel 5.0.0\n"))
        self.assertEqual(self.run_here("-V").out, result.out)
        self.assertEqual(self.run_here("help", "iso2cso").out, self.run_here("iso2cso", "--help").out)
        for words in (["--help"], ["iso2cso", "--help"], ["cso2iso", "-h"]):
            result = self.run_here(*words)
            self.assertEqual((result.status, result.err), (0, ""))
            self.assertIn("vantrel", result.out)


if __name__ == "__main__":
    unittest.main()
