"""Outputs beyond 2 GiB, and the memory that many threads take. It takes long, so only the native build runs it."""
import os
import random
import struct
import unittest
import zlib

from support import ConsoleTest

SECTOR = 2048
MOST_MEMORY = 60 << 20
BLOCK = 16384


def identified(image):
    """The image with the mark of ISO 9660."""
    return image[:32769] + b"CD001" + image[32774:]


class Limits(ConsoleTest):
    def test_many_threads_take_little_memory(self):
        self.write("a.iso", identified(random.Random(1).randbytes(64 << 20)))
        for words in ([("a.iso", "a.cso"), ("a.iso", "a.zso"), ("a.iso", "a.dax"), ("a.iso", "a.bin"),
                       ("a.iso", "large.cso", "--block", "1048576"), ("a.iso", "large.zso", "--block", "1048576"),
                       ("a.cso", "b.iso"), ("a.zso", "b.dax"), ("a.dax", "b.bin"), ("large.cso", "b.iso"),
                       ("large.cso", "b.zso", "--block", "1048576"), ("large.zso", "b.cso")]):
            most = self.peak_memory("convert", "-q", "-f", "-l", "1", "-j", "64", words[0], "-o", *words[1:])
            self.assertLess(most, MOST_MEMORY, words)

    def test_an_output_beyond_two_gibibytes(self):
        """Nothing of the image can be compressed, so its CSO needs an index shift, and gets blocks of 16 KiB."""
        chunk = random.Random(2).randbytes(64 << 20)
        with open(self.path("a.iso"), "wb") as image:
            image.write(identified(chunk))
            for _ in range(31):
                image.write(chunk)
            image.write(chunk[:5 * SECTOR])
            size = image.tell()
        self.assert_done(self.run_here("convert", "-q", "-l", "1", "-o", "a.cso", "a.iso", timeout=1000))
        self.assertEqual(self.run_here("verify", "--against", "a.iso", "a.cso", timeout=1000).status, 0)
        with open(self.path("a.iso"), "rb") as image, open(self.path("a.cso"), "rb") as cso:
            magic, _, image_size, block, version, shift = struct.unpack("<4sIQIBB", cso.read(22))
            self.assertEqual((magic, image_size, block, version, shift), (b"CISO", size, BLOCK, 1, 1))
            count = -(-size // BLOCK)
            cso.seek(24)
            index = struct.unpack("<%dI" % (count + 1), cso.read(4 * count + 4))
            self.assertGreater(os.path.getsize(self.path("a.cso")), 2 << 30)
            self.assertEqual((index[-1] & 0x7FFFFFFF) << shift, os.path.getsize(self.path("a.cso")))
            for number in [*range(0, count, count // 50), count - 2, count - 1]:
                cso.seek((index[number] & 0x7FFFFFFF) << shift)
                stored = cso.read(((index[number + 1] & 0x7FFFFFFF) - (index[number] & 0x7FFFFFFF)) << shift)
                image.seek(number * BLOCK)
                expected = image.read(BLOCK)
                content = stored if index[number] >> 31 else zlib.decompressobj(-15).decompress(stored)
                self.assertEqual(content[:len(expected)], expected, number)


if __name__ == "__main__":
    unittest.main()
