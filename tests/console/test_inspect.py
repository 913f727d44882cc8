"""info, verify, list and extract on every form of the same image."""
import hashlib
import json
import os
import shutil
import struct
import subprocess
import unittest
import zlib

from support import COMMAND, ConsoleTest, IS_WINDOWS
import cso_reference
import dax_reference

SECTOR = 2048
RAW = 2352


class Inspect(ConsoleTest):
    def setUp(self):
        super().setUp()
        os.makedirs(self.path("src/DIR/SUB"))
        self.files = {"A.TXT": b"hello\n", "DIR/B.BIN": os.urandom(5000), "DIR/SUB/EMPTY.DAT": b"",
                      "DIR/SUB/C.BIN": os.urandom(2048)}
        for name, content in self.files.items():
            self.write("src/" + name, content)
        self.master("game.iso", b"PLAYSTATION", b"PLAYSTATION")

    def master(self, name, system, application, *options):
        """An image of a common mastering tool, with the marks of a PlayStation 2 CD."""
        subprocess.run(["genisoimage", "-quiet", "-V", "GAME", *options, "-o", self.path(name), self.path("src")],
                       check=True, stderr=subprocess.DEVNULL)
        image = bytearray(self.read(name))
        image[32776:32776 + 32] = system.ljust(32)
        image[33342:33342 + 128] = application.ljust(128)
        image[33792:33800] = b"CD-XA001"
        self.write(name, image)
        self.image = bytes(image)

    def make_forms(self):
        """The same image as CSO, DAX and BIN, and their names."""
        psp = bytearray(self.image)
        psp[33342:33345] = b"PSP"
        self.write("psp.iso", psp)
        for command in "iso2cso", "iso2dax":
            self.assert_done(self.run_here(command, "psp.iso"))
        self.assert_done(self.run_here("iso2bin", "game.iso"))
        self.psp = bytes(psp)

    def report(self, *words):
        result = self.run_here(*words, "--json")
        return result.status, json.loads(result.out)

    def test_info_identifies_every_form(self):
        self.make_forms()
        for name, form, application in (("game.iso", "ISO", "PLAYSTATION"), ("psp.cso", "CSO", "PSPYSTATION"),
                                        ("psp.dax", "DAX", "PSPYSTATION"), ("game.bin", "BIN", "PLAYSTATION")):
            shutil.copy(self.path(name), self.path("renamed.xyz"))
            status, report = self.report("info", "renamed.xyz")
            self.assertEqual((status, report["form"]), (0, form))
            self.assertEqual(report["file_bytes"], os.path.getsize(self.path(name)))
            image = report["image"]
            self.assertEqual((image["volume_identifier"], image["application_identifier"]), ("GAME", application))
            self.assertEqual((image["files"], image["folders"]), (4, 3))
            self.assertEqual(image["bytes"], len(self.image))
            self.assertEqual(image["sectors"], len(self.image) // SECTOR)
            self.assertEqual(image["volume_sectors"], len(self.image) // SECTOR)
        self.assertEqual(image["kind"], "PlayStation 2 CD")
        self.assertEqual(image["postgap"], "complete")

    def test_info_reports_header_fields(self):
        self.make_forms()
        cso = self.report("info", "psp.cso")[1]["container"]
        self.assertEqual({key: cso[key] for key in ("header_size", "total_bytes", "block_size", "version", "align",
                                                    "blocks", "oddities")},
                         {"header_size": 0, "total_bytes": len(self.image), "block_size": 2048, "version": 1,
                          "align": 0, "blocks": len(self.image) // 2048, "oddities": []})
        index = struct.unpack_from("<%dI" % cso["blocks"], self.read("psp.cso"), 24)
        self.assertEqual(cso["plain_blocks"], sum(entry >> 31 for entry in index))
        self.assertGreaterEqual(cso["plain_blocks"], 3, "B.BIN and C.BIN are random data")
        self.assertEqual(cso["ratio_percent"], self.ratio("psp.cso"))
        dax = self.report("info", "psp.dax")[1]["container"]
        frames = -(-len(self.image) // 8192)
        self.assertEqual((dax["image_size"], dax["version"], dax["frames"], dax["plain_frames"], dax["oddities"]),
                         (len(self.image), 0, frames, 0, []))
        self.assertEqual(dax["ratio_percent"], self.ratio("psp.dax"))
        self.write("plain.dax", dax_reference.compress(9, self.psp, version=1, areas=((1, 2), (5, 1))))
        dax = self.report("info", "plain.dax")[1]["container"]
        self.assertEqual((dax["version"], dax["frames"], dax["plain_frames"], dax["oddities"]), (1, frames, 3, []))
        raw = self.report("info", "game.bin")[1]["container"]
        sectors = len(self.image) // SECTOR
        self.assertEqual(raw, {"sectors": sectors, "first_address": "00:02:00", "mode_1": 0, "mode_2_form_1": sectors,
                               "mode_2_form_2": 0, "other": 0, "audio": 0})

    def ratio(self, name):
        return round(100 * os.path.getsize(self.path(name)) / len(self.image), 1)

    def test_info_reports_oddities(self):
        self.make_forms()
        cso = bytearray(self.read("psp.cso"))
        cso[4:8] = (17).to_bytes(4, "little")
        cso[22] = 1
        self.write("odd.cso", cso + b"more")
        oddities = self.report("info", "odd.cso")[1]["container"]["oddities"]
        self.assertEqual(oddities, ["the header size is neither 0 nor 24", "reserved bytes are not zero",
                                    "the index does not end at the end of the file"])
        self.write("odd.cso", cso_reference.compress(9, self.psp, "padded", 16384, 3))
        self.assertEqual(self.oddities("odd.cso"), ["blocks are not 2048 bytes", "positions are shifted"])
        cso = bytearray(cso_reference.compress(9, self.psp, version=2))
        for at in range(27, 24 + 4 * (len(self.psp) // 2048), 4):
            cso[at] &= 0x7F  # in version 2, this bit marks LZ4 blocks
        cso[4] = 24
        self.write("odd.cso", cso)
        self.assertEqual(self.oddities("odd.cso"), ["version 2 with LZ4 blocks"])

    def oddities(self, name):
        return self.report("info", name)[1]["container"]["oddities"]

    def test_info_reports_oddities_of_dax_files(self):
        self.make_forms()
        dax = self.read("psp.dax")
        self.write("more.dax", dax + b"more")
        self.assertEqual(self.oddities("more.dax"), ["the last frame does not end at the end of the file"])
        last = 32 + 4 * (-(-len(self.image) // 8192) - 1)  # the entry of the last frame
        start = struct.unpack_from("<I", dax, last)[0]
        gap = bytearray(dax[:start] + b"gap" + dax[start:])
        struct.pack_into("<I", gap, last, start + 3)
        self.write("gap.dax", gap)
        self.assertEqual(self.oddities("gap.dax"), ["frames do not follow one another without gaps"])
        self.write("odd.iso", self.psp_with_remainder())
        self.assert_done(self.run_here("iso2dax", "odd.iso"))
        self.assertEqual(self.oddities("odd.dax"), ["the image is not a whole number of sectors"])

    def test_postgap_states(self):
        for sectors, state in ((-150, "missing"), (1, "the length fits no postgap")):
            length = len(self.image) + sectors * SECTOR
            self.write("game.iso", self.image[:length].ljust(length, b"\0"))
            self.assertEqual(self.report("info", "game.iso")[1]["image"]["postgap"], state)

    def test_info_as_text(self):
        result = self.run_here("info", "game.iso")
        self.assert_done(result)
        self.assertIn("form: ISO\n", result.out)
        self.assertIn("  kind: PlayStation 2 CD\n", result.out)
        self.assertIn("  volume identifier: GAME\n", result.out)

    def test_files_without_an_image_are_refused(self):
        self.write("text.iso", b"hello")
        self.write("empty.iso", b"")
        os.mkdir(self.path("folder"))
        for command in "info", "verify", "list", "extract":
            for name, cause in (("text.iso", "not a known kind of disc image"),
                                ("empty.iso", "not a known kind of disc image"), ("missing.iso", ""),
                                ("folder", "")):
                result = self.run_here(command, name)
                self.assertEqual((result.status, result.out), (1, ""), (command, name))
                self.assertIn("vantrel %s: %s: %s" % (command, name, cause), result.err)

    def test_verify_prints_the_checksums_of_the_image(self):
        self.make_forms()
        for name, image in (("game.iso", self.image), ("psp.cso", self.psp), ("psp.dax", self.psp),
                            ("game.bin", self.image)):
            status, report = self.report("verify", name)
            self.assertEqual((status, report["ok"], report["problems"]), (0, True, []), name)
            self.assertEqual(report["image"], {
                "bytes": len(image), "crc32": "%08x" % zlib.crc32(image),
                "md5": hashlib.md5(image).hexdigest(), "sha1": hashlib.sha1(image).hexdigest()})

    @unittest.skipIf(IS_WINDOWS, "Windows programs bring the library along, which allows MD5")
    def test_verify_needs_md5(self):
        """Systems that are restricted to approved algorithms refuse MD5."""
        result = self.run_here("verify", "game.iso", env={**os.environ, "LIBGCRYPT_FORCE_FIPS_MODE": "1"})
        self.assertEqual((result.status, result.out), (1, ""), result)
        self.assertIn("MD5 and SHA-1 are not available on this system", result.err)

    def test_verify_finds_damaged_blocks(self):
        self.make_forms()
        for name, noun in (("psp.cso", "block"), ("psp.dax", "frame")):
            content = bytearray(self.read(name))
            table = 24 if noun == "block" else 32
            position = int.from_bytes(content[table + 20:table + 24], "little")
            content[position:position + 4] = b"\xFF\xFF\xFF\xFF"
            self.write(name, content)
            status, report = self.report("verify", name)
            self.assertEqual(status, 1)
            self.assertEqual(report["problems"], ["%s 5: its stream is damaged" % noun])
            self.assertNotIn("image", report)

    def test_verify_finds_every_kind_of_sector_fault(self):
        self.make_forms()
        raw = bytearray(self.read("game.bin"))
        for sector, offset in ((20, 3), (30, 13), (31, 100), (32, 100), (40, 2100), (50, 2072), (60, 15), (70, 20)):
            raw[sector * RAW + offset] ^= 0x41
        self.write("game.bin", raw)
        status, report = self.report("verify", "game.bin")
        self.assertEqual(status, 1)
        self.assertEqual(report["problems"], [
            "sector 20: wrong sync field", "sector 30: wrong address", "sectors 31 to 32: wrong EDC, parity",
            "sector 40: wrong parity", "sector 50: wrong EDC, parity", "sector 60: wrong mode or form",
            "sector 70: wrong mode or form"])

    def test_verify_across_chunk_boundaries(self):
        sectors = 8 * 512 + 3  # a chunk has 512 sectors
        image = (self.image * (sectors * SECTOR // len(self.image) + 1))[:sectors * SECTOR]
        image = image[:32848] + sectors.to_bytes(4, "little") + image[32852:]
        self.write("game.iso", image)
        self.assert_done(self.run_here("iso2bin", "game.iso"))
        for name in "game.iso", "game.bin":
            report = self.report("verify", name)[1]
            self.assertEqual(report["image"], {
                "bytes": len(image), "crc32": "%08x" % zlib.crc32(image),
                "md5": hashlib.md5(image).hexdigest(), "sha1": hashlib.sha1(image).hexdigest()}, name)
        raw = bytearray(self.read("game.bin"))
        for sector in 511, 512, 1023, 2048, sectors - 1:
            raw[sector * RAW + 2100] ^= 1
        self.write("game.bin", raw)
        self.assertEqual(self.report("verify", "game.bin")[1]["problems"][:4], [
            "sectors 511 to 512: wrong parity", "sector 1023: wrong parity", "sector 2048: wrong parity",
            "sector %d: wrong parity" % (sectors - 1)])

    def test_verify_of_mode_1_prints_the_checksums_of_its_user_data(self):
        raw = b"".join(b"\0" + b"\xFF" * 10 + b"\0" + b"\0\2" + bytes([i]) + b"\1" +
                       self.image[i * SECTOR:(i + 1) * SECTOR] + bytes(288) for i in range(10))
        self.write("one.bin", raw)
        status, report = self.report("verify", "one.bin")
        self.assertEqual((status, report["problems"][0]), (1, "sectors 0 to 9: wrong EDC, parity"))
        self.assertEqual(report["image"]["sha1"], hashlib.sha1(self.image[:10 * SECTOR]).hexdigest())

    def test_verify_finds_wrong_lengths(self):
        self.write("long.iso", self.image + bytes(100))
        sectors = len(self.image) // SECTOR
        self.assertEqual(self.report("verify", "long.iso")[1]["problems"],
                         ["the image is not a whole number of sectors: 100 bytes are left over"])
        self.write("short.iso", self.image[:-155 * SECTOR])
        status, report = self.report("verify", "short.iso")
        self.assertEqual(status, 1)
        self.assertIn("the image has %d sectors, its volume descriptor says %d" % (sectors - 155, sectors),
                      report["problems"])
        self.assertTrue(any("DIR/B.BIN" in text and "lies outside the image" in text for text in report["problems"]),
                        report)
        self.write("odd.iso", self.psp_with_remainder())
        self.assert_done(self.run_here("iso2cso", "odd.iso"))
        self.assertEqual(self.report("verify", "odd.cso")[1]["problems"],
                         ["the image is not a whole number of sectors: 7 bytes are left over"])
        self.assertEqual(self.report("verify", "odd.cso", "--against", "odd.iso")[0], 0)
        self.write("cut.cso", cso_reference.compress(9, self.psp_with_remainder()))
        self.assertEqual(self.report("verify", "cut.cso")[1]["problems"],
                         ["the last 7 bytes of the image, a partial block, are not stored"])
        self.assertEqual(self.report("info", "cut.cso")[1]["container"]["oddities"],
                         ["the image is not a whole number of sectors", "the image's partial last block is not stored"])

    def test_verify_finds_what_a_raw_file_lacks_or_has_too_much(self):
        self.assert_done(self.run_here("iso2bin", "game.iso"))
        raw = self.read("game.bin")
        self.write("long.bin", raw + bytes(9))
        status, report = self.report("verify", "long.bin")
        self.assertEqual((status, report["problems"]),
                         (1, ["the file is not a whole number of sectors: 9 bytes are left over"]))
        self.write("behead.bin", raw[RAW:])
        status, report = self.report("verify", "behead.bin")
        self.assertEqual(status, 1)
        self.assertIn("the first sector's address is not 00:02:00", report["problems"])

    def test_every_file_counts_for_the_exit_status(self):
        self.assert_done(self.run_here("iso2bin", "game.iso"))
        damaged = bytearray(self.read("game.bin"))
        damaged[9 * RAW + 100] ^= 1
        self.write("damaged.bin", damaged)
        for command, bad in ("verify", "damaged.bin"), ("verify", "missing.bin"), ("info", "missing.bin"):
            for words in [bad, "game.bin"], ["game.bin", bad], ["game.bin", bad, "game.bin"]:
                self.assertEqual(self.run_here(command, *words).status, 1, words)
        self.assert_done(self.run_here("verify", "game.bin", "game.iso"))

    def psp_with_remainder(self):
        image = bytearray(self.image + bytes(7))
        image[33342:33345] = b"PSP"
        return image

    def test_verify_against_an_image_of_another_form(self):
        self.make_forms()
        status, report = self.report("verify", "psp.cso", "--against", "psp.dax")
        self.assertEqual((status, report["ok"], report["difference"]), (0, True, None))
        status, report = self.report("verify", "psp.cso", "--against", "game.bin")
        self.assertEqual((status, report["ok"], report["difference"]["byte"]), (1, False, 33343))
        self.write("long.iso", self.psp + bytes(5))
        status, report = self.report("verify", "psp.dax", "--against", "long.iso")
        self.assertEqual((status, report["difference"]),
                         (1, {"byte": len(self.psp), "bytes": len(self.psp), "bytes_against": len(self.psp) + 5}))

    def test_verify_against_compares_large_images_to_their_end(self):
        image = self.image.ljust(3 << 20, b"\0")
        self.write("large.iso", image)
        self.assertEqual(self.report("verify", "large.iso", "--against", "large.iso")[0], 0)
        for position in 0, (1 << 20) - 1, 1 << 20, (2 << 20) + 5, len(image) - 1:
            other = bytearray(image)
            other[position] ^= 1
            self.write("other.iso", other)
            status, report = self.report("verify", "large.iso", "--against", "other.iso")
            self.assertEqual((status, report["difference"]),
                             (1, {"byte": position, "bytes": len(image), "bytes_against": len(image)}))

    def test_list_is_the_same_for_every_form(self):
        self.make_forms()
        lists = [self.run_here("list", name) for name in ("game.iso", "psp.cso", "psp.dax", "game.bin")]
        for result in lists:
            self.assert_done(result)
            self.assertEqual(result.out, lists[0].out)
        for row in lists[0].out.splitlines():
            sector, size, name = row.split()
            content = self.image[int(sector) * SECTOR:int(sector) * SECTOR + int(size)]
            self.assertEqual(content, self.files.pop(name))
        self.assertEqual(self.files, {})
        report = self.report("list", "psp.cso")[1]
        rows = [row.split() for row in lists[0].out.splitlines()]
        self.assertEqual(report, {"file": "psp.cso", "form": "CSO", "files": [
            {"sector": int(sector), "bytes": int(size), "path": name} for sector, size, name in rows]})

    def test_extract_everything(self):
        self.make_forms()
        for name in "game.iso", "psp.cso", "psp.dax", "game.bin":
            self.assert_done(self.run_here("extract", name, "-C", "out-" + name))
            self.assertEqual(self.files_below("out-" + name), self.files)

    def test_extract_some(self):
        self.assert_done(self.run_here("extract", "game.iso", "a.txt", "/DIR/SUB/", "-C", "out"))
        self.assertEqual(sorted(self.files_below("out")), ["A.TXT", "DIR/SUB/C.BIN", "DIR/SUB/EMPTY.DAT"])
        result = self.run_here("extract", "game.iso", "NOTHING", "-C", "out2")
        self.assertEqual((result.status, result.err), (1, "vantrel extract: game.iso: holds no NOTHING\n"))
        self.assertFalse(os.path.exists(self.path("out2")))

    def test_extract_understands_patterns_and_other_spellings(self):
        for words, expected in ((["./A.TXT"], ["A.TXT"]), (["A.TXT;1"], ["A.TXT"]), (["/DIR/./B.BIN"], ["DIR/B.BIN"]),
                                (["*.txt"], ["A.TXT"]), (["DIR/?.bin"], ["DIR/B.BIN"]), (["DIR\\SUB"], ["DIR/SUB/C.BIN", "DIR/SUB/EMPTY.DAT"]),
                                (["*/*/C*"], ["DIR/SUB/C.BIN"]), (["D*"], ["DIR/B.BIN", "DIR/SUB/C.BIN", "DIR/SUB/EMPTY.DAT"])):
            result = self.run_here("extract", "game.iso", *words, "-C", "out")
            self.assert_done(result)
            self.assertEqual(result.out, "game.iso: %d file%s extracted\n" % (len(expected), "s" * (len(expected) != 1)))
            self.assertEqual(sorted(self.files_below("out")), expected, words)
            shutil.rmtree(self.path("out"))
        for word in "*.bin", "DIR/*.txt", "A.TXT/X":
            result = self.run_here("extract", "game.iso", word, "-C", "out")
            self.assertEqual((result.status, result.err),
                             (1, "vantrel extract: game.iso: holds no %s\n" % word))

    def test_extract_to_standard_output(self):
        for name in self.files:
            done = subprocess.run(COMMAND + ["extract", "game.iso", "--stdout", name], cwd=self.folder, capture_output=True,
                                  stdin=subprocess.DEVNULL)
            self.assertEqual((done.returncode, done.stdout), (0, self.files[name]), name)
        result = self.run_here("extract", "game.iso", "--stdout", "DIR")
        self.assertEqual((result.status, result.out, result.err),
                         (1, "", "vantrel extract: game.iso: 3 files were chosen; --stdout writes one\n"))
        self.assertEqual(self.run_here("extract", "game.iso", "--stdout", "-C", "out", "A.TXT").status, 2)

    def test_extract_keeps_recorded_dates(self):
        date = 1_000_000_000
        os.utime(self.path("src/DIR/B.BIN"), (date, date))
        self.master("game.iso", b"PLAYSTATION", b"PLAYSTATION")
        self.assert_done(self.run_here("extract", "game.iso", "-C", "out"))
        self.assertEqual(os.stat(self.path("out/DIR/B.BIN")).st_mtime, date)
        self.assert_done(self.run_here("extract", "-f", "--no-dates", "game.iso", "-C", "out"))
        self.assertGreater(os.stat(self.path("out/DIR/B.BIN")).st_mtime, date)

    def test_extract_says_why_a_file_cannot_be_read(self):
        self.make_forms()
        raw = bytearray(self.read("game.bin"))
        sector = next(file["sector"] for file in self.report("list", "game.bin")[1]["files"] if file["path"] == "DIR/B.BIN")
        raw[RAW * (sector + 1) + 100] ^= 1
        self.write("game.bin", raw)
        result = self.run_here("extract", "game.bin", "-C", "out")
        self.assertEqual((result.status, result.out, result.err), (
            1, "", 'vantrel extract: game.bin: Cannot read "DIR\\B.BIN" from game.bin (damaged sector: wrong EDC)\n'))
        self.assertFalse(os.path.exists(self.path("out")))
        result = self.run_here("extract", "game.bin", "--stdout", "DIR/B.BIN")
        self.assertEqual((result.status, result.err), (1, "vantrel extract: game.bin: damaged sector: wrong EDC\n"))
        self.assert_done(self.run_here("extract", "game.bin", "A.TXT", "-C", "out"))

    def test_extract_to_standard_output_names_a_file_beyond_the_image(self):
        last = max((file for file in self.report("list", "game.iso")[1]["files"] if file["bytes"]), key=lambda file: file["sector"])
        self.write("game.iso", self.image[:last["sector"] * SECTOR])
        result = self.run_here("extract", "game.iso", "--stdout", last["path"])
        self.assertEqual((result.status, result.out), (1, ""), result)
        self.assertIn("game.iso: the image ends within " + last["path"].replace("/", "\\"), result.err)

    def test_images_without_all_of_their_directories(self):
        root = int.from_bytes(self.image[32768 + 158:32768 + 162], "little")
        folder = self.image.index(b"B.BIN;1") // SECTOR
        for length, problem in ((root, "the image has no readable root directory"),
                                (folder, "the image does not hold all of the directory at sector %d" % folder)):
            self.write("game.iso", self.image[:length * SECTOR])
            for words in ["list", "game.iso"], ["extract", "game.iso", "-C", "out"], ["extract", "game.iso", "--stdout", "A"]:
                result = self.run_here(*words)
                self.assertEqual((result.status, result.out, result.err),
                                 (1, "", "vantrel %s: game.iso: %s\n" % (words[0], problem)))
        self.assertFalse(os.path.exists(self.path("out")))

    def test_extract_replaces_files_only_with_force(self):
        os.mkdir(self.path("out"))
        self.write("out/A.TXT", b"older")
        result = self.run_here("extract", "game.iso", "-C", "out")
        self.assertEqual(result.status, 1)
        self.assertIn("A.TXT exists already; -f replaces it", result.err)
        self.assertEqual(self.files_below("out"), {"A.TXT": b"older"})
        self.assert_done(self.run_here("extract", "-f", "game.iso", "-C", "out"))
        self.assertEqual(self.files_below("out"), self.files)

    def test_extract_never_leaves_the_folder(self):
        image = self.image.replace(b"A.TXT;1", b"../UP;1")
        self.write("game.iso", image)
        result = self.run_here("extract", "game.iso", "-C", "out")
        self.assertEqual(result.status, 1)
        self.assertIn("would leave the folder", result.err)
        self.assertFalse(os.path.exists(self.path("out")))

    def test_names_that_differ_only_in_case(self):
        """Two files on a case-sensitive disk; a failure before anything is written on other disks."""
        self.write("src/DIR/b.bin", b"small letters")
        self.master("game.iso", b"PLAYSTATION", b"PLAYSTATION", "-U")
        for words in ["extract", "game.iso", "-C", "out"], ["iso2iml", "game.iso", "--extract", "out"]:
            before = self.names()
            result = self.run_here(*words)
            if IS_WINDOWS:
                self.assertEqual(result.status, 1, result)
                self.assertIn("cannot both be extracted: they would be the same file on this disk", result.err)
                self.assertEqual(self.names(), before)
            else:
                self.assert_done(result)
                found = self.files_below("out")
                self.assertEqual((found["DIR/B.BIN"], found["DIR/b.bin"]), (self.files["DIR/B.BIN"], b"small letters"))
                shutil.rmtree(self.path("out"))

    def test_layouts(self):
        self.assert_done(self.run_here("iso2iml", "game.iso", "--extract"))
        status, report = self.report("info", "game.iml")
        self.assertEqual((status, report["form"]), (0, "IML"))
        self.assertEqual(report["layout"], {
            "media": "CD", "entries": 5, "listed_files": 4, "missing": [], "leading_structures": "game.ims",
            "leading_structures_present": True})
        self.assertEqual(self.report("verify", "game.iml"),
                         (0, {"file": "game.iml", "form": "IML", "ok": True, "problems": []}))
        os.remove(self.path("A.TXT"))
        self.write("DIR/B.BIN", bytes(6145))
        os.remove(self.path("game.ims"))
        self.assertEqual(self.report("info", "game.iml")[1]["layout"]["missing"], ["A.TXT"])
        status, report = self.report("verify", "game.iml")
        self.assertEqual(status, 1)
        self.assertEqual(report["problems"][0], "game.ims with the leading structures is missing")
        self.assertIn("A.TXT is missing", report["problems"])
        self.assertTrue(any(text.startswith("DIR\\B.BIN has 6145 bytes and does not fit sectors ")
                            for text in report["problems"]), report)
        layout = self.read("game.iml")
        self.write("cut.iml", layout[:layout.index(b"DIR\\SUB")])
        line = layout[:layout.index(b"# the number")].count(b"\n") + 1
        for problem, changed in (
                ("line %d: the number of entries is 5, but there are 3" % line, layout[:layout.rindex(b"\n", 0, layout.index(b"DIR\\SUB")) + 1]),
                ("line %d: text behind the closing quote" % (line + 4), layout.replace(b'DIR\\B.BIN"', b'DIR\\B.BIN" ')),
                ("line %d: the number of entries is 4, but there are 5" % line,
                 layout.replace(b"entries: 5", b"entries: 4"))):
            self.write("changed.iml", changed)
            self.assertIn(problem, self.report("verify", "changed.iml")[1]["problems"])
            self.assertIn("changed.iml, " + problem, self.run_here("iml2iso", "changed.iml").err)
        for changed, problem in ((b"[SYS]\r\nVERSION=1.00\r\n", "line 3: the layout ends before its number of entries"),
                                 (layout.replace(b"\r\n", b"\n"), "line 1: ends with LF alone")):
            self.write("no.iml", changed)
            for command in "info", "verify", "iml2iso":
                result = self.run_here(command, "no.iml")
                self.assertEqual((result.status, result.out), (1, ""))
                self.assertIn("no.iml, " + problem, result.err)


if __name__ == "__main__":
    unittest.main()
