#!/usr/bin/env python3
"""The second implementation of a disc reader accepts sound discs and finds every kind of damage."""
import binascii
import unittest

from disc import SECTOR, Disc
from edit_images import OURS, own_image


class Damage(unittest.TestCase):
    def setUp(self):
        self.image = bytearray(own_image("dvd-joliet"))
        self.disc = Disc(bytes(self.image))

    def put(self, position, data):
        self.image[position:position + len(data)] = data

    def add(self, position, amount=1):
        self.image[position] = (self.image[position] + amount) % 256

    def assert_found(self, *texts):
        problems = "; ".join(Disc(bytes(self.image)).problems)
        for text in texts:
            self.assertIn(text, problems)

    def seal(self, sector):
        """Gives a damaged descriptor a right CRC and checksum."""
        start = sector * SECTOR
        length = int.from_bytes(self.image[start + 10:start + 12], "little")
        self.put(start + 8, binascii.crc_hqx(bytes(self.image[start + 16:start + 16 + length]), 0).to_bytes(2, "little"))
        self.image[start + 4] = sum(self.image[start:start + 4] + self.image[start + 5:start + 16]) % 256

    def test_sound_discs(self):
        for name in OURS:
            self.assertEqual(Disc(own_image(name)).problems, [], name)

    def test_contents(self):
        file = self.disc.primary.files["SYSTEM.CNF"]
        self.assertEqual(self.disc.content(file)[:5], b"BOOT2")
        self.assertEqual(self.disc.content(self.disc.udf.files["DATA/TWIN.BIN"]),
                         self.disc.content(self.disc.primary.files["DATA/ALPHA.BIN"]))
        self.assertEqual(self.disc.udf.anchors, [256, self.disc.sectors - 1])

    def test_byte_orders(self):
        record = self.disc.primary.records["SYSTEM.CNF"]
        for position in 2, 5, 6, 9, 10, 13, 14, 17:
            self.setUp()
            self.add(record + position)
            self.assert_found("two byte orders")
        for position in 80, 87, 128, 132, 139, 158, 173:
            self.setUp()
            self.add(16 * SECTOR + position)
            self.assert_found("two byte orders")

    def test_places_outside_of_the_image(self):
        record = self.disc.trees["joliet"].records["MOVIE/LAST.PSS"]
        self.put(record + 2, b"\0\0\1\0\0\1\0\0")
        self.assert_found("joliet: MOVIE/LAST.PSS is outside of the image")

    def test_overlaps(self):
        alpha, beta = (self.disc.primary.records["DATA/%s.BIN" % name] for name in ("ALPHA", "BETA"))
        sector = int.from_bytes(self.image[alpha + 2:alpha + 6], "little") + 1
        self.put(beta + 2, sector.to_bytes(4, "little") + sector.to_bytes(4, "big"))
        self.assert_found("overlap", "ISO 9660 has")

    def test_circles(self):
        deep, data = (self.disc.primary.records[name] for name in ("DATA/DEEP", "DATA"))
        self.put(deep + 2, self.image[data + 2:data + 10])
        self.assert_found("reached twice")

    def test_path_tables(self):
        for offset in 140, 148:
            self.setUp()
            order = "little" if offset == 140 else "big"
            table = int.from_bytes(self.image[16 * SECTOR + offset:16 * SECTOR + offset + 4], order) * SECTOR
            self.add(table + 10 + (2 if order == "little" else 5))
            self.assert_found("path table %s names other folders" % ("L" if order == "little" else "M"))

    def test_every_descriptor_of_udf(self):
        entries = self.disc.udf.entries
        file_set = entries[""] - 2
        names = self.disc.udf.folders["DATA"].extents[0][0]
        for sector in 32, 33, 34, 35, 36, 37, 48, 50, 53, 64, 256, self.disc.sectors - 1, file_set, entries["DATA"], \
                entries["SYSTEM.CNF"], names:
            for position, text in ((4, "checksum"), (8, "CRC"), (12, "instead of"), (20, "CRC")):
                self.setUp()
                self.add(sector * SECTOR + position)
                self.assert_found(text)

    def test_lengths_of_udf(self):
        entry = self.disc.udf.entries["SYSTEM.CNF"]
        for position, text in ((56, "length"), (64, "blocks recorded"), (176, "extents of")):
            self.setUp()
            self.add(entry * SECTOR + position)
            self.seal(entry)
            self.assert_found(text)

    def test_sizes_of_the_partition(self):
        for sectors, position, text in (((34, 50), 192, "integrity descriptor: size"), ((64,), 84, "integrity descriptor: size"),
                                        ((34,), 192, "main and reserve sequence differ")):
            self.setUp()
            for sector in sectors:
                self.add(sector * SECTOR + position, -1)
                self.seal(sector)
            self.assert_found(text)

    def test_a_lost_closing_anchor(self):
        self.assertEqual(self.disc.closing_anchors, 1)
        self.put((self.disc.sectors - 1) * SECTOR, bytes(SECTOR))
        self.assertEqual(Disc(bytes(self.image)).closing_anchors, 0)


if __name__ == "__main__":
    unittest.main()
