"""convert, and files of every form that other programs write: hand-made by a second implementation."""
import itertools
import os
import random
import struct
import unittest

from support import IS_WINDOWS, ConsoleTest, psp_image
from test_matrix import disc

import cso_reference
import dax_reference

FORMS = "iso", "bin", "cso", "zso", "dax"
SECTOR = 2048


def with_identifier(image):
    """Every form recognises the image."""
    image = bytearray(image.ljust(17 * SECTOR, b"\0"))
    image[32768:32774] = b"\1CD001"
    return bytes(image)


def dvd():
    image = bytearray(disc(True))
    image[16 * SECTOR + 1024:16 * SECTOR + 1032] = bytes(8)
    image += bytes(9 * SECTOR) + random.Random(5).randbytes(2 * SECTOR)
    image[65924:65932] = b"\1DVD\0\0\0\0"
    return bytes(image)


IMAGES = {"cd": disc(True), "umd": disc(False), "dvd": dvd()}


class Convert(ConsoleTest):
    def convert(self, source, target, *words):
        self.assert_done(self.run_here("convert", "-q", "-f", *words, "-o", target, source))
        return self.read(target)

    def refusal(self, *words):
        result = self.run_here(*words)
        self.assertEqual((result.status, result.out), (1, ""), result)
        return result.err

    def test_every_pair_of_forms_keeps_the_image(self):
        """Images of all kinds, whole and odd lengths: what comes back is the image, or the status says why not."""
        for kind, rest in itertools.product(IMAGES, (0, 1, 700)):
            image = IMAGES[kind] + random.Random(rest).randbytes(rest)
            self.write("a.iso", image)
            for form in FORMS:
                self.check_form("a.iso", "a." + form if form != "iso" else "copy.iso", image)
            for source, target in itertools.product(FORMS, FORMS):
                source = "a." + source if source != "iso" else "a.iso"
                if os.path.exists(self.path(source)):
                    with self.subTest(kind=kind, rest=rest, source=source, target=target):
                        self.check_form(source, "b." + target, image)
            for name in self.names():
                os.remove(self.path(name))

    def check_form(self, source, target, image):
        if target.endswith(".bin") and len(image) % SECTOR:
            self.assertIn("is not whole sectors of 2048 bytes", self.refusal("convert", "-o", target, source))
            return
        self.convert(source, target, "--verify")
        self.assertEqual(self.convert(target, "back.iso"), image)
        self.assert_done(self.run_here("verify", target, "--against", "back.iso"))
        if target.endswith(".zso"):
            self.assertEqual(cso_reference.expand_zso(self.read(target)), image)
        if target.endswith(".cso"):
            self.assertEqual(cso_reference.expand(self.read(target)), image)
        if target.endswith(".dax"):
            self.assertEqual(dax_reference.expand(self.read(target)), image)

    def test_the_output_does_not_depend_on_the_number_of_threads(self):
        image = with_identifier(psp_image(700))
        self.write("a.iso", image)
        for form in FORMS:
            first = self.convert("a.iso", "a1." + form, "-j", "1")
            for jobs in "2", "5":
                self.assertEqual(self.convert("a.iso", "a2." + form, "-j", jobs), first)
            for target in FORMS:
                expected = self.convert("a1." + form, "b." + target, "-j", "1")
                self.assertEqual(self.convert("a1." + form, "b." + target, "-j", "5"), expected)

    def test_the_same_bytes_as_the_other_commands(self):
        self.write("a.iso", IMAGES["umd"])
        for command, target in ("iso2cso", "b.cso"), ("iso2dax", "b.dax"):
            for level in "1", "9":
                self.assert_done(self.run_here(command, "-f", "-l", level, "-o", target, "a.iso"))
                expected = self.read(target)
                self.assertEqual(self.convert("a.iso", target, "-l", level), expected)
                self.convert("a.iso", "b.zso")
                self.assert_done(self.run_here(command, "-f", "-l", level, "-o", target, "b.zso"))
                self.assertEqual(self.read(target), expected)
        self.write("cd.iso", IMAGES["cd"])
        self.assert_done(self.run_here("iso2bin", "cd.iso"))
        self.convert("cd.iso", "cd.zso")
        self.assert_done(self.run_here("iso2bin", "-o", "other.bin", "cd.zso"))
        self.assertEqual(self.read("other.bin"), self.read("cd.bin"))
        self.assertEqual(self.convert("cd.iso", "third.bin"), self.read("cd.bin"))

    def test_a_layout_of_any_form(self):
        for form in "cso", "zso", "dax":
            self.write("a.iso", IMAGES["umd"])
            self.convert("a.iso", "a." + form)
            self.assert_done(self.run_here("iso2iml", "-f", "-o", "a.iml", "--extract=files", "a." + form))
            self.assert_done(self.run_here("iml2iso", "-f", "--exact", "--files", "files", "-o", "back.iso", "a.iml"))
            self.assertEqual(self.read("back.iso"), IMAGES["umd"])

    def test_only_psp_images_are_compressed_by_the_commands_of_the_window(self):
        self.write("cd.iso", IMAGES["cd"])
        self.convert("cd.iso", "cd.zso")
        for command in "iso2cso", "iso2dax":
            self.assertIn("Code 50 PSP", self.refusal(command, "cd.zso"))
        self.write("umd.iso", IMAGES["umd"])
        self.convert("umd.iso", "umd.dax")
        self.assertIn("Code 76 PS2", self.refusal("iso2bin", "umd.dax"))

    def test_hand_made_files_of_other_programs(self):
        """Block sizes and shifts of every kind, tails that are no whole blocks."""
        for size in (SECTOR << power for power in range(10)):
            for length in 17 * SECTOR, size // SECTOR * 2 * SECTOR + 20 * SECTOR + 7:
                image = with_identifier(psp_image(length // SECTOR + 1)[:length])
                aligns = range(14) if size in (2048, 16384) else (0, 1, 13)
                kinds = (b"CISO", "rest"), (b"CISO", "padded"), (b"ZISO", "padded")
                with self.subTest(size=size, length=length):
                    self.check_hand_made(image, {
                        "%d-%s-%s" % (align, magic.decode(), tail):
                            cso_reference.compress_strict(image, magic, size, align, tail)
                        for align in aligns for magic, tail in kinds})

    def check_hand_made(self, image, files):
        self.write("a.iso", image)
        names = [self.write(name + ".cso", content) for name, content in files.items()]
        self.assert_done(self.run_here("verify", "--against", "a.iso", *names))
        result = self.run_here("convert", "-q", "-f", "--to", "iso", "--output-dir", "out", *names)
        self.assert_done(result)
        for name in files:
            self.assertEqual(self.read("out/%s.iso" % name), image, name)
            os.remove(self.path(name + ".cso"))

    def test_a_damaged_block_where_the_psp_mark_is(self):
        for magic in b"CISO", b"ZISO":
            content = bytearray(cso_reference.compress_strict(with_identifier(psp_image(40)), magic))
            mark = struct.unpack_from("<I", content, 24 + 4 * 16)[0] & 0x7FFFFFFF
            content[mark:mark + 2] = b"\xFF\xFF"
            self.write("damaged.cso", bytes(content))
            with self.subTest(magic=magic):
                self.assertIn("damaged block 16: its stream is damaged", self.refusal("convert", "--to", "dax", "damaged.cso"))

    def test_cso_2_is_expanded_by_cso2iso(self):
        self.write("a.cso", cso_reference.compress_strict(psp_image(33), b"CISO"))
        self.assert_done(self.run_here("cso2iso", "a.cso"))
        self.assertEqual(self.read("a.iso"), psp_image(33))

    def test_partial_tails_that_are_stored_plain(self):
        image = with_identifier(psp_image(24)) + os.urandom(900)
        plain = cso_reference.compress_strict(image, b"ZISO", 16384, 0, "rest")
        self.assertTrue(plain[24 + 4 * (len(image) // 16384) + 3] & 0x80)
        self.check_hand_made(image, {"plain": plain})

    def test_fields_that_are_refused(self):
        image = with_identifier(psp_image(20))
        for magic, name, version in (b"ZISO", "ZSO", 1), (b"CISO", "CSO", 2):
            good = cso_reference.compress_strict(image, magic)
            size = " is not supported: it is not a power of two from 2048 to 1048576"
            fields = [(4, "<I", 0, "%s header size 0 is not supported in version %d: it is not 24" % (name, version)),
                      (16, "<I", 3000, name + " block size 3000" + size), (16, "<I", 1024, name + " block size 1024" + size),
                      (16, "<I", 1 << 21, name + " block size 2097152" + size), (16, "<I", 0, name + " block size 0" + size),
                      (20, "<B", 3, name + " version 3 is not supported"),
                      (21, "<B", 32, name + " index shift 32 is not supported: it is above 31"),
                      (22, "<H", 0x0001, "%s unused header bytes 01 00 are not supported in version %d: they are not zero"
                       % (name, version)),
                      (22, "<H", 0x0100, "%s unused header bytes 00 01 are not supported in version %d: they are not zero"
                       % (name, version)),
                      (8, "<Q", 0, name + " image size 0 is not supported"),
                      (8, "<Q", 1 << 40, name + " image size 1099511627776 is not supported: the index of its blocks does "
                       "not fit the file")]
            if version == 2:
                fields.append((24 + 4 * 20, "<I", 0x80000000 | len(good), "CSO index entry %08X is not supported at the end "
                               "of version 2: its high bit is set" % (0x80000000 | len(good))))
            for at, pattern, value, text in fields:
                with self.subTest(text=text):
                    content = bytearray(good)
                    struct.pack_into(pattern, content, at, value)
                    self.write("a.zso", content)
                    self.assertEqual(self.refusal("convert", "-o", "b.iso", "a.zso"),
                                     "vantrel convert: a.zso: %s\n" % text)
        self.assertEqual(self.names(), ["a.zso"])

    def test_damaged_blocks_are_refused(self):
        image = with_identifier(psp_image(40))
        for magic in b"ZISO", b"CISO":
            good = cso_reference.compress_strict(image, magic)
            index = struct.unpack_from("<41I", good, 24)
            beyond = {39: index[39] & 0x80000000 | len(good) + 100, 40: len(good) + 5000}
            for entries, block in ({9: index[11]}, 9), ({5: index[3]}, 4), (beyond, 38 if magic == b"ZISO" else 39):
                content = bytearray(good)
                for entry, value in entries.items():
                    struct.pack_into("<I", content, 24 + 4 * entry, value)
                self.write("a.zso", content)
                self.assertIn("a.zso: damaged block %d: its stored bytes lie outside the file, are too many or end before "
                              "they begin" % block, self.refusal("convert", "-o", "b.iso", "a.zso"))
                self.assertIn("a.zso: damaged block ", self.refusal("convert", "-o", "b.dax", "a.zso"))
                self.assertIn("a.zso: damaged block ", self.refusal("convert", "-o", "b.bin", "a.zso"))
                self.assertEqual(self.run_here("verify", "a.zso").status, 1)
        self.assertEqual(self.names(), ["a.zso"])

    def test_forms_that_are_only_named(self):
        for name, content in (("a CHD", b"MComprHD" + bytes(200)), ("a GZ", b"\x1F\x8B\x08" + bytes(50)),
                              ("a 7Z", b"7z\xBC\xAF\x27\x1C" + bytes(50)), ("an MDF", b"MEDIA DESCRIPTOR" + bytes(50)),
                              ("an ECM", b"ECM\0" + bytes(50)), ("a PBP", b"\0PBP" + bytes(50)),
                              ("an NRG", with_identifier(b"") + b"NER5" + bytes(8))):
            self.write("a.iso", content)
            for command in "info", "verify", "list", "extract", "iso2cso", "iso2dax", "iso2bin", "iso2iml":
                self.assertEqual(self.refusal(command, "a.iso"),
                                 "vantrel %s: a.iso: this is %s file, a form that is not read\n" % (command, name))
            self.assertIn("a form that is not read", self.refusal("convert", "--to", "cso", "a.iso"))
        self.assertEqual(self.names(), ["a.iso"])

    def test_block_sizes_that_are_chosen(self):
        image = with_identifier(psp_image(100))
        self.write("a.iso", image)
        for form, block in itertools.product(("cso", "zso"), (2048, 16384, 1 << 20)):
            content = self.convert("a.iso", "a." + form, "--block", block, "--verify")
            self.assertEqual(struct.unpack_from("<I", content, 16)[0], block)
            self.assertEqual(self.convert("a." + form, "b.iso"), image)

    def test_wrong_usage(self):
        self.write("a.iso", IMAGES["umd"])
        for words, text in ((["a.iso"], "give --to FORM"), (["-o", "b.xyz", "a.iso"], "give --to FORM"),
                            (["--to", "chd", "a.iso"], "--to: chd is none of iso, bin, cso, zso and dax"),
                            (["--to", "cso", "--block", "3000", "a.iso"], "--block: 3000 is not a power of two"),
                            (["--to", "dax", "--block", "4096", "a.iso"], "--block: only CSO and ZSO files"),
                            (["--to", "cso", "--block", "1024", "a.iso"], "1024")):
            result = self.run_here("convert", *words)
            self.assertEqual((result.status, result.out), (2, ""), result)
            self.assertIn(text, result.err)
        self.assertIn("the output would be the input itself", self.refusal("convert", "--to", "iso", "a.iso"))
        self.write("b.iso", b"some text\n" * 100)
        self.assertIn("not a known kind of disc image", self.refusal("convert", "--to", "cso", "b.iso"))

    def test_a_sheet_and_its_files(self):
        self.write("a.iso", IMAGES["cd"])
        self.convert("a.iso", "disc.bin")
        self.write("other.cue", self.read("disc.cue"))
        self.assertIn("would be a file of the input", self.refusal("convert", "-f", "-o", "disc.bin", "other.cue"))
        self.convert("disc.cue", "b.iso")
        self.assertEqual(self.read("b.iso"), IMAGES["cd"])
        self.write("two.bin", self.read("disc.bin") + bytes(2352 * 300))
        self.write("two.cue", b"FILE two.bin BINARY\nTRACK 1 MODE2/2352\nINDEX 1 00:00:00\nTRACK 2 AUDIO\nINDEX 1 00:00:24\n")
        result = self.run_here("convert", "-o", "c.cso", "two.cue")
        self.assertEqual((result.status, result.err), (1, "vantrel convert: two.cue: track 2 (AUDIO) is not in the image\n"))
        self.assertEqual(self.convert("c.cso", "c.iso"), IMAGES["cd"])
        self.write("rest.bin", self.read("disc.bin") + b"more")
        self.assertIn("4 bytes are left over", self.refusal("convert", "-o", "d.iso", "rest.bin"))

    @unittest.skipIf(IS_WINDOWS, "holes are made on Linux only")
    def test_a_sparse_image_of_five_gibibytes_there_and_back(self):
        mark = os.urandom(SECTOR)
        with open(self.path("a.iso"), "wb") as image:
            image.write(with_identifier(b""))
            for place in 3 << 30, (5 << 30) - SECTOR:
                image.seek(place)
                image.write(mark)
        for form in "cso", "zso":
            self.assert_done(self.run_here("convert", "-q", "--block", "16384", "-o", "a." + form, "a.iso"))
            self.assert_done(self.run_here("convert", "-q", "-o", "b.iso", "a." + form))
            self.assertLess(os.stat(self.path("b.iso")).st_blocks * 512, 64 << 20)
            self.assertEqual(os.path.getsize(self.path("b.iso")), 5 << 30)
            with open(self.path("b.iso"), "rb") as image:
                self.assertEqual(image.read(17 * SECTOR), with_identifier(b""))
                for place in 3 << 30, (5 << 30) - SECTOR:
                    image.seek(place)
                    self.assertEqual(image.read(SECTOR), mark)
            os.remove(self.path("b.iso"))


if __name__ == "__main__":
    unittest.main()
