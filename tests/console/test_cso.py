"""iso2cso and cso2iso of the built program: names, options, refusals, exit statuses."""
import os
import unittest

from support import IS_WINDOWS, ConsoleTest, psp_image
import cso_reference


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

    @unittest.skipIf(IS_WINDOWS, "handles of files are numbers from 0 on only elsewhere")
    def test_without_standard_input(self):
        self.write("game.iso", psp_image(30))
        for words in ("iso2cso", "game.iso"), ("cso2iso", "game.cso", "-o", "again.iso"):
            self.assert_done(self.run_here(*words, preexec_fn=lambda: os.close(0)))
        self.assertEqual(self.read("again.iso"), psp_image(30))

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
            self.assertEqual(self.read("game.iso"), source, words)
            self.write("game.iso", source)

    def test_a_partial_last_sector_is_kept(self):
        for more in 1, 15, 2047:
            image = psp_image(40) + os.urandom(more)
            self.write("game.iso", image)
            self.assert_done(self.run_here("iso2cso", "-f", "game.iso"))
            cso = self.read("game.cso")
            self.assertEqual(cso, cso_reference.compress(9, image, "padded"))
            self.assertEqual(cso_reference.expand(cso), image)
            self.assert_done(self.run_here("cso2iso", "-f", "-o", "new-game.iso", "game.cso"))
            self.assertEqual(self.read("new-game.iso"), image)
            self.write("other.cso", cso_reference.compress(9, image, "rest", 4096))
            self.assert_done(self.run_here("verify", "game.cso", "--against", "other.cso"))

    def test_a_file_without_its_partial_last_block_is_refused(self):
        self.write("game.cso", cso_reference.compress(9, psp_image() + b"the rest"))
        result = self.run_here("cso2iso", "game.cso")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertEqual(result.err,
                         "vantrel cso2iso: game.cso: the last 8 bytes of the image are not stored\n")
        self.assertEqual(self.names(), ["game.cso"])

    def test_blocks_of_other_sizes(self):
        for size in 2048, 16384, 1 << 20:
            for sectors, more in (17, 0), (8, 0), (40, 7), (0, 1), (1030, 0), (0, 2000):
                image = (psp_image(sectors) if sectors else b"") + bytes(range(1, 251)) * 8
                image = image[:sectors * 2048 + more]
                for tail in "rest", "padded":
                    for align in 0, 3, 13:
                        with self.subTest(size=size, length=len(image), tail=tail, align=align):
                            self.write("game.cso", cso_reference.compress(6, image, tail, size, align))
                            self.write("game.iso", image)
                            self.assert_done(self.run_here("cso2iso", "-f", "-o", "new-game.iso", "game.cso"))
                            self.assertEqual(self.read("new-game.iso"), image)
                if sectors >= 17:
                    self.write("other.cso", cso_reference.compress(9, image, "rest"))
                    self.assert_done(self.run_here("verify", "game.cso", "--against", "other.cso"))

    def test_a_plain_last_block(self):
        image = psp_image(16) + os.urandom(2048)
        self.write("game.cso", cso_reference.compress(6, image, "rest", 16384))
        self.assertTrue(self.read("game.cso")[24 + 8 + 3] & 0x80)
        self.assert_done(self.run_here("cso2iso", "-o", "new-game.iso", "game.cso"))
        self.assertEqual(self.read("new-game.iso"), image)

    def test_data_beyond_two_gibibytes(self):
        image = psp_image(20)
        cso = bytearray(cso_reference.compress(9, image, align=8))
        start, gap = 256, 5 << 30
        for entry in range(24, 24 + 4 * 21, 4):
            value = int.from_bytes(cso[entry:entry + 4], "little")
            cso[entry:entry + 4] = (value + (gap >> 8)).to_bytes(4, "little")
        with open(self.path("game.cso"), "wb") as file:
            file.write(cso[:start])
            file.seek(start + gap)
            file.write(cso[start:])
        self.assert_done(self.run_here("cso2iso", "-o", "new-game.iso", "game.cso"))
        self.assertEqual(self.read("new-game.iso"), image)

    def test_other_headers_are_refused_by_name(self):
        image = psp_image(17)
        size = ": it is not a power of two from 2048 to 1048576"
        for fields, text in (({"version": 3}, "CSO version 3 is not supported"),
                             ({"version": 255}, "CSO version 255 is not supported"),
                             ({"block_size": 1024}, "CSO block size 1024 is not supported" + size),
                             ({"block_size": 6144}, "CSO block size 6144 is not supported" + size),
                             ({"block_size": 1 << 21}, "CSO block size 2097152 is not supported" + size)):
            self.write("game.cso", cso_reference.compress(9, image, "rest", **fields))
            self.refused_by_all("game.cso", text)
        cso = bytearray(cso_reference.compress(9, image))
        cso[21] = 32
        self.write("game.cso", cso)
        self.refused_by_all("game.cso", "CSO index shift 32 is not supported: it is above 31")
        self.assertEqual(self.names(), ["game.cso"])

    def refused_by_all(self, name, text):
        for command in "cso2iso", "info", "verify", "list", "extract":
            result = self.run_here(command, name)
            self.assertEqual((result.status, result.out, result.err),
                             (1, "", "vantrel %s: %s: %s\n" % (command, name, text)))

    def test_other_forms_are_refused_by_name(self):
        zso = b"ZISO" + cso_reference.compress(9, psp_image())[4:]
        iso = bytearray(psp_image())
        iso[32769:32774] = b"CD001"
        for name, content, form in (("a.cso", zso, "a ZSO file"), ("b.cso", iso, "an ISO file"),
                                    ("c.cso", b"DAX\0" + bytes(60), "a DAX file")):
            self.write(name, content)
            result = self.run_here("cso2iso", name)
            self.assertEqual((result.status, result.out, result.err), (
                1, "", "vantrel cso2iso: %s is not a CSO file: it is %s\n" % (name, form)))
        self.write("d.iso", cso_reference.compress(9, psp_image()))
        self.write("layout.iso", b"[SYS]\r\n")
        self.assertEqual(self.run_here("iso2cso", "layout.iso").err,
                         "vantrel iso2cso: layout.iso: this is an IML file, which does not contain an image\n")
        self.assertEqual(self.run_here("dax2iso", "a.cso").err,
                         "vantrel dax2iso: a.cso is not a DAX file: it is a ZSO file\n")
        for command in "info", "verify", "list", "extract":
            result = self.run_here(command, "a.cso")
            self.assertEqual((result.status, result.out, result.err),
                             (1, "", "vantrel %s: a.cso: ZSO header size 0 is not supported in version 1: "
                                     "it is not 24\n" % command))
        self.write("e.cso", b"no form at all, but long enough for a header")
        self.assertEqual(self.run_here("cso2iso", "e.cso").err,
                         "vantrel cso2iso: e.cso: Code 11011 - ciso file format error e.iso\n")
        self.assertEqual(self.names(), ["a.cso", "b.cso", "c.cso", "d.iso", "e.cso", "layout.iso"])

    def test_version_0_is_read(self):
        self.write("game.cso", cso_reference.compress(9, psp_image(), version=0))
        self.assert_done(self.run_here("cso2iso", "-o", "new-game.iso", "game.cso"))
        self.assertEqual(self.read("new-game.iso"), psp_image())

    def test_a_last_block_of_another_length_is_refused(self):
        image = psp_image(17)
        for length in 1, 2047, 2049, 16383:
            rest = image[16 * 2048:].ljust(length, b"x")[:length]
            blocks = [image[:16384], image[16384:32768], rest]
            data, index = b"", []
            for block in blocks:
                index.append(24 + 16 + len(data))
                data += cso_reference.deflate(9, block)
            index.append(24 + 16 + len(data))
            header = cso_reference.compress(9, image, "rest", 16384)[:24]
            self.write("game.cso", header + b"".join(entry.to_bytes(4, "little") for entry in index) + data)
            result = self.run_here("cso2iso", "game.cso")
            self.assertEqual((result.status, result.err), (
                1, "vantrel cso2iso: game.cso: Code 1109-block 2 : block size error %d != 2048\n" % length))
            self.assertIn("block 2: its stream expands to", self.run_here("verify", "game.cso").out)

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
        self.assertEqual(result.err, "vantrel cso2iso: game.cso: CSO block size 0 is not supported: it is not a power of two "
                                     "from 2048 to 1048576\n")
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

    def test_the_output_is_no_other_input(self):
        for name, seed in ("game.iso", 1), ("game.cso", 2):
            self.write(name, psp_image(seed=seed))
        before = self.state()
        result = self.run_here("iso2cso", "-f", "game.iso", "game.cso")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertIn("game.iso: the output would be game.cso, another input\n", result.err)
        self.assertEqual(self.state(), before)

    def test_a_truncated_image_is_converted_with_a_notice(self):
        self.check_truncated_images("iso2cso", "cso2iso", "game.cso")

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
