"""What verify finds in the structures of images: damage of every kind, and nothing in sound images of other programs."""
import json
import os
import random
import struct
import subprocess
import unittest

from support import IS_WINDOWS, ConsoleTest, limited_threads

SECTOR = 2048
FILES = {"SYSTEM.CNF": 43, "A.BIN": 5000, "DIR/B.BIN": 9000, "DIR/SUB/C.DAT": 2048, "DIR/SUB/EMPTY.DAT": 0, "Z.BIN": 3000}
MOST_MEMORY = 64 << 20


def udf_crc(data):
    """CRC-16 with the polynomial 1021h (ECMA-167 7.2.6)."""
    crc = 0
    for byte in data:
        crc ^= byte << 8
        for _ in range(8):
            crc = (crc << 1 ^ 0x1021) & 0xFFFF if crc & 0x8000 else crc << 1
    return crc


class Image:
    """The bytes of an image, and what is where in them."""

    def __init__(self, data):
        self.data = bytearray(data)

    def number(self, position):
        return struct.unpack_from("<I", self.data, position)[0]

    def set_both(self, position, value):
        struct.pack_into("<I", self.data, position, value)
        struct.pack_into(">I", self.data, position + 4, value)

    def sectors(self):
        return len(self.data) // SECTOR

    def record(self, path, volume=16, wide=False):
        """The position of the directory record of a path in the tree of the descriptor in sector `volume`."""
        position = volume * SECTOR + 156
        for name in path.split("/") if path else []:
            first, size = self.number(position + 2), self.number(position + 10)
            position = self.record_in(first * SECTOR, size, name, wide)
        return position

    def record_in(self, start, size, name, wide):
        at = start
        while at < start + size:
            length = self.data[at]
            if length == 0:
                at = (at // SECTOR + 1) * SECTOR
                continue
            recorded = bytes(self.data[at + 33:at + 33 + self.data[at + 32]])
            text = recorded.decode("utf-16-be" if wide and len(recorded) > 1 else "latin-1").split(";")[0]
            if text.upper() == name:
                return at
            at += length
        raise KeyError(name)

    def place(self, path):
        record = self.record(path)
        return self.number(record + 2), self.number(record + 10)

    def udf_entry(self, path):
        """The position of the UDF file entry whose content is at the place of a file."""
        sector, size = self.place(path)
        start = self.number(34 * SECTOR + 188)
        for at in range(start * SECTOR, len(self.data), SECTOR):
            if self.data[at:at + 2] == b"\x05\x01" and self.data[at + 27] == 5 and \
                    self.number(at + 56) == size and (size == 0 or self.number(at + 180) + start == sector):
                return at
        raise KeyError(path)

    def reseal(self, at, location=None):
        """Makes the tag of a UDF descriptor valid again."""
        if location is not None:
            struct.pack_into("<I", self.data, at + 12, location)
        length = struct.unpack_from("<H", self.data, at + 10)[0]
        struct.pack_into("<H", self.data, at + 8, udf_crc(self.data[at + 16:at + 16 + length]))
        self.data[at + 4] = 0
        self.data[at + 4] = sum(self.data[at:at + 16]) & 255


class Structures(ConsoleTest):
    def setUp(self):
        super().setUp()
        source = random.Random(1)
        for path, size in FILES.items():
            os.makedirs(os.path.dirname(self.path("src/" + path)), exist_ok=True)
            self.write("src/" + path, source.randbytes(size))

    def master(self, *options, source="src"):
        subprocess.run(["genisoimage", "-quiet", *options, "-o", self.path("game.iso"), self.path(source)], check=True,
                       stderr=subprocess.DEVNULL)
        return Image(self.read("game.iso"))

    def problems(self, image):
        self.write("game.iso", image.data if isinstance(image, Image) else image)
        result = self.run_here("verify", "--json", "game.iso")
        report = json.loads(result.out)
        self.assertEqual((result.status, report["ok"]), (1, False) if report["problems"] else (0, True), result)
        return report["problems"]

    def assert_finds(self, image, *expected):
        """Each problem is expected, and each expectation is met."""
        found = self.problems(image)
        self.assertEqual(len(found), len(expected), found)
        for problem, start in zip(found, expected):
            self.assertTrue(problem.startswith(start), (found, expected))

    # --- sound images ---

    def test_sound_images_of_genisoimage(self):
        for options in ([], ["-J"], ["-R"], ["-udf"], ["-udf", "-J", "-R"], ["-udf", "-no-pad"], ["-iso-level", "4", "-J"],
                        ["-D", "-U", "-udf"], ["-J", "-joliet-long", "-hide-joliet", "DIR"], ["-udf", "-hide", "DIR"]):
            image = self.master(*options)
            self.assertEqual(self.problems(image), [], options)

    def test_sound_images_of_xorriso(self):
        for options in ([], ["-joliet", "on"], ["-rockridge", "off"], ["-compliance", "iso_9660_1999"],
                        ["-compliance", "iso_9660_level=2", "-padding", "0"], ["-hfsplus", "on"]):
            path = self.path("xorriso.iso")
            if os.path.exists(path):
                os.remove(path)
            subprocess.run(["xorriso", *options, "-outdev", path, "-map", self.path("src"), "/", "-commit"], check=True,
                           capture_output=True)
            self.assertEqual(self.problems(self.read("xorriso.iso")), [], options)

    def test_sound_images_of_awkward_names(self):
        names = ["a.txt", "A.TXT", "a_very_long_file_name.data", "a_very_long_file_namE.data", "A_VERY_L.DAT",
                 "longfilename.txt", "LONGFILE.TXT", "LONGFILENAME.TXT", "a.b.c", "x" * 60 + ".long",
                 "\u65e5\u672c.txt", "semi;colon.txt"]
        if IS_WINDOWS:
            self.skipTest("names that differ in case only")
        source = random.Random(2)
        folder = "many"
        for depth in range(10):
            folder = os.path.join(folder, source.choice(["directory_with_a_long_name", "DIR", "d%d" % depth]))
            os.makedirs(self.path(folder))
            for name in source.sample(names, 8):
                self.write(os.path.join(folder, name), source.randbytes(source.choice([0, 1, 2048, 5000])))
        for options in (["-R"], ["-J", "-udf"], ["-D", "-udf"], ["-U", "-J", "-R", "-udf"], ["-l", "-J", "-joliet-long"]):
            self.assertEqual(self.problems(self.master(*options, source="many")), [], options)

    def test_padding_and_a_second_layer_are_sound(self):
        image = self.master("-no-pad")
        self.assertEqual(self.problems(image.data + bytes(150 * SECTOR)), [])
        self.assertEqual(self.problems(image.data + b"postgap" + bytes(150 * SECTOR - 7)), [])
        self.assertEqual(self.problems(image.data + image.data), [])
        more = image.data + bytes(149 * SECTOR) + b"x" * SECTOR
        self.assert_finds(more, "the image has %d sectors, its volume descriptor says %d" %
                          (image.sectors() + 150, image.sectors()))

    def test_files_that_share_a_place_are_sound(self):
        os.link(self.path("src/A.BIN"), self.path("src/LINK.BIN"))
        self.assertEqual(self.problems(self.master("-udf", "-J", "-cache-inodes")), [])

    # --- damage ---

    def test_records_that_point_outside(self):
        image = self.master()
        for field, value in ((2, image.sectors()), (10, len(image.data))):
            damaged = Image(image.data)
            damaged.set_both(image.record("Z.BIN") + field, value)
            found = self.problems(damaged)
            sector, size = damaged.place("Z.BIN")
            self.assertIn("Z.BIN (sector %d, %d bytes) lies outside the image" % (sector, size), found)
        damaged = Image(image.data)
        damaged.set_both(image.record("DIR") + 2, 0xFFFFFFF0)
        self.assertIn("the folder DIR (sector 4294967280) lies outside the image", self.problems(damaged))

    def test_boot_catalogues(self):
        image = self.master("-b", "A.BIN", "-no-emul-boot", "-c", "BOOT.CAT", "-no-pad")
        self.assertEqual(self.problems(image), [])
        sector, _ = image.place("BOOT.CAT")
        for first, count, is_inside in ((image.sectors() - 1, 4, True), (image.sectors() - 1, 5, False),
                                        (0xFFFFFFFF, 1, False)):
            struct.pack_into("<HI", image.data, sector * SECTOR + 38, count, first)
            self.assert_finds(image, *[] if is_inside else [
                "the boot catalogue: a boot image (sector %d, %d bytes) lies outside the image" % (first, count * 512)])
        struct.pack_into("<I", image.data, 17 * SECTOR + 71, image.sectors())
        self.assert_finds(image, "the boot record in sector 17 names sector %d, which has no boot catalogue" % image.sectors())

    def test_fields_that_differ_in_their_byte_orders(self):
        image = self.master("-J")
        record = image.record("DIR/B.BIN")
        sector, size = image.place("DIR/B.BIN")
        struct.pack_into(">I", image.data, record + 14, 7)
        struct.pack_into(">I", image.data, record + 6, 8)
        struct.pack_into(">I", image.data, 16 * SECTOR + 84, 9)
        struct.pack_into(">I", image.data, 17 * SECTOR + 136, 9)
        self.assert_finds(
            image, "the volume descriptor in sector 16: the volume size differs in its two byte orders",
            '"/DIR/B.BIN": the sector in its record is %d in one byte order and 8 in the other' % sector,
            '"/DIR/B.BIN": the length in its record is %d in one byte order and 7 in the other' % size,
            "the volume descriptor in sector 17: the path table size differs in its two byte orders")

    def test_overlaps(self):
        image = self.master()
        order = sorted((path for path in FILES if FILES[path]), key=image.place)
        first, second = order[1], order[2]
        start = image.place(first)[0]
        damaged = Image(image.data)
        damaged.set_both(image.record(first) + 10, FILES[first] + SECTOR)
        self.assertIn("%s (sectors %d to" % (first, start), self.problems(damaged)[0])
        self.assertIn("and %s (sectors %d to" % (second, image.place(second)[0]), self.problems(damaged)[0])
        for position, name in ((158, "the root directory"), (140, "a path table")):
            damaged = Image(image.data)
            damaged.set_both(image.record(first) + 2, image.number(16 * SECTOR + position))
            self.assertTrue(any(name in text and first in text for text in self.problems(damaged)), name)
        damaged = Image(image.data)
        damaged.set_both(image.record(first) + 2, 17)
        self.assertTrue(any("the volume descriptors" in text for text in self.problems(damaged)))

    def test_iso_and_udf_that_disagree(self):
        image = self.master("-udf")
        for path in "SYSTEM.CNF", "DIR/B.BIN":
            sector, size = image.place(path)
            # One side keeps the old length, the old place, or both.
            damaged = Image(image.data)
            damaged.set_both(image.record(path) + 10, size - 3)
            self.assert_finds(damaged, "%s is at sector %d with %d bytes; UDF: %s is at sector %d with %d bytes" %
                              (path, sector, size - 3, path, sector, size))
            damaged = Image(image.data)
            damaged.set_both(image.record(path) + 10, 0)
            self.assert_finds(damaged, "%s is empty; UDF: %s is at sector %d with %d bytes" % (path, path, sector, size))
            damaged = Image(image.data)
            entry = image.udf_entry(path)
            struct.pack_into("<I", damaged.data, entry + 180, image.number(entry + 180) - 1)
            damaged.reseal(entry)
            found = self.problems(damaged)
            self.assertIn("%s is at sector %d with %d bytes; UDF: %s is at sector %d with %d bytes" %
                          (path, sector, size, path, sector - 1, size), found)
        # Two files with each other's place.
        damaged = Image(image.data)
        entries = [image.udf_entry(path) for path in ("A.BIN", "Z.BIN")]
        for field, length in ((56, 16), (176, 8)):
            for entry, other in (entries, entries[::-1]):
                damaged.data[entry + field:entry + field + length] = image.data[other + field:other + field + length]
        for entry in entries:
            damaged.reseal(entry)
        self.assert_finds(damaged, "A.BIN is at sector", "Z.BIN is at sector")

    def test_iso_and_joliet_that_disagree(self):
        image = self.master("-J")
        damaged = Image(image.data)
        damaged.set_both(image.record("DIR/B.BIN") + 10, 8999)
        sector = image.place("DIR/B.BIN")[0]
        self.assert_finds(damaged, "DIR/B.BIN is at sector %d with 8999 bytes; Joliet: DIR/B.BIN is at sector %d with "
                          "9000 bytes" % (sector, sector))
        damaged = Image(image.data)
        record = image.record("A.BIN", 17, True)
        damaged.set_both(record + 2, 0x12345678)
        found = self.problems(damaged)
        self.assertIn("Joliet: A.BIN (sector 305419896, 5000 bytes) lies outside the image", found)
        damaged = Image(image.data)
        damaged.set_both(17 * SECTOR + 80, 5)
        self.assert_finds(damaged, "the volume descriptor in sector 17 says 5 sectors, the primary one %d" % image.sectors())
        damaged = Image(image.data)
        root = image.number(17 * SECTOR + 158)
        damaged.data[root * SECTOR:(root + 1) * SECTOR] = bytes(SECTOR)
        self.assertEqual(self.problems(damaged)[0],
                         "Joliet: the root directory (sector %d) does not begin with its own record" % root)

    def test_path_tables_that_disagree(self):
        image = self.master("-J")
        table, table_m = image.number(16 * SECTOR + 140), struct.unpack_from(">I", image.data, 16 * SECTOR + 148)[0]
        damaged = Image(image.data)
        damaged.data[table * SECTOR:(table + 1) * SECTOR] = bytes(SECTOR)
        self.assert_finds(damaged, "the path table ends before its length", "the path table lacks the root directory",
                          "the path table lacks the folder DIR", "the path table lacks the folder DIR/SUB",
                          "the type M path table in sector %d differs from the one in sector %d" % (table_m, table))
        damaged = Image(image.data)
        damaged.data[table_m * SECTOR + 5] ^= 1
        self.assert_finds(damaged, "the type M path table in sector %d differs" % table_m)
        damaged = Image(image.data)
        damaged.data[table * SECTOR + 12] ^= 64
        self.assert_finds(damaged, "the path table has a folder at sector", "the path table has another parent for the "
                          "folder DIR/SUB", "the path table lacks the folder DIR", "the type M path table")
        damaged = Image(image.data)
        damaged.data[table * SECTOR + 28] = 1  # the parent of SUB, a known folder
        self.assert_finds(damaged, "the path table has another parent for the folder DIR/SUB", "the type M path table")
        damaged = Image(image.data)
        joliet = image.number(17 * SECTOR + 140)
        damaged.data[joliet * SECTOR + 2] ^= 64
        self.assertTrue(all(text.startswith("Joliet: the ") for text in self.problems(damaged)))

    def test_lengths_that_disagree(self):
        image = self.master("-no-pad")
        damaged = Image(image.data)
        damaged.set_both(16 * SECTOR + 80, image.sectors() - 1)
        self.assert_finds(damaged, "the image has %d sectors, its volume descriptor says %d" %
                          (image.sectors(), image.sectors() - 1))
        last = max((path for path in FILES if FILES[path]), key=image.place)
        sector = image.place(last)[0]
        found = self.problems(image.data[:-SECTOR])
        self.assertEqual(found[:2], [
            "the image has %d sectors, its volume descriptor says %d" % (image.sectors() - 1, image.sectors()),
            "%s (sector %d, %d bytes) lies outside the image" % (last, sector, FILES[last])])

    def test_damaged_udf(self):
        image = self.master("-udf")
        entry = image.udf_entry("DIR/B.BIN")
        for position, expected in (
                (34 * SECTOR + 300, "the main UDF volume descriptor sequence: sector 34: the descriptor's CRC is wrong"),
                (50 * SECTOR + 300, "the reserve UDF volume descriptor sequence: sector 50: the descriptor's CRC is wrong"),
                (64 * SECTOR + 40, "the UDF integrity descriptor in sector 64: the descriptor's CRC is wrong"),
                (256 * SECTOR + 20, "the UDF anchor in sector 256: the descriptor's CRC is wrong"),
                (len(image.data) - SECTOR + 20,
                 "the UDF anchor in sector %d: the descriptor's CRC is wrong" % (image.sectors() - 1)),
                (entry + 100, 'the UDF file entry of "/DIR/B.BIN" in sector %d: the descriptor\'s CRC is wrong' %
                 (entry // SECTOR))):
            damaged = Image(image.data)
            damaged.data[position] ^= 1
            self.assert_finds(damaged, expected)
        damaged = Image(image.data)
        struct.pack_into("<I", damaged.data, entry + 180, 1 << 24)
        damaged.reseal(entry)
        self.assert_finds(damaged, 'the UDF file entry of "/DIR/B.BIN" in sector %d: its content, from sector %d on, is '
                          "outside the partition" % (entry // SECTOR, image.number(34 * SECTOR + 188) + (1 << 24)))
        damaged = Image(image.data)
        for sector in 34, 50:
            struct.pack_into("<I", damaged.data, sector * SECTOR + 192, image.sectors())
            damaged.reseal(sector * SECTOR)
        self.assert_finds(damaged, "the UDF partition has the sectors")

    def test_many_problems_are_counted(self):
        for i in range(100):
            self.write("src/F%02d.BIN" % i, b"x")
        image = self.master()
        for i in range(100):
            image.set_both(image.record("F%02d.BIN" % i) + 2, image.sectors() + i)
        found = self.problems(image)
        self.assertEqual(len(found), 21)
        self.assertEqual(found[0], "F00.BIN (sector %d, 1 bytes) lies outside the image" % image.sectors())
        self.assertEqual(found[20], "and 80 more outside the image")

    @unittest.skipIf(IS_WINDOWS, "measures memory")
    def test_many_files_take_little_memory(self):
        if self.run_here("--version", preexec_fn=lambda: limited_threads(100)).status != 0:
            self.skipTest("this build does not run in so little memory")
        for folder in range(50):
            os.makedirs(self.path("src/MANY%02d" % folder))
            for i in range(1000):
                os.link(self.path("src/A.BIN"), self.path("src/MANY%02d/A_COMMON_NAME_%03d.BIN" % (folder, i)))
        image = self.master("-udf", "-J", "-l")
        self.write("game.iso", image.data)
        self.assertLess(self.peak_memory("verify", "game.iso"), MOST_MEMORY)


if __name__ == "__main__":
    unittest.main()
