"""iso2dax and dax2iso of the built program."""
import struct
import unittest
import zlib

from support import ConsoleTest, psp_image
import dax_reference


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

    def expand(self, dax):
        self.write("game.dax", dax)
        self.assert_done(self.run_here("dax2iso", "-f", "-o", "new-game.iso", "game.dax"))
        return self.read("new-game.iso")

    def test_a_partial_last_frame_is_kept(self):
        for length in 81920, 81921, 81920 + 2048, 81920 + 8191:
            image = psp_image(50)[:length]
            self.write("game.iso", image)
            self.assert_done(self.run_here("iso2dax", "-f", "game.iso"))
            dax = self.read("game.dax")
            self.assertEqual(dax, dax_reference.compress(9, image))
            self.assertEqual(dax_reference.expand(dax), image)
            self.assertEqual(self.expand(dax), image)

    def test_the_padding_of_the_last_frame_is_left_out(self):
        for sectors in 40, 41, 43:
            image = psp_image(sectors)
            self.assertEqual(self.expand(dax_reference.compress(6, image, padded=True)), image)
            self.write("other.dax", dax_reference.compress(9, image))
            self.assert_done(self.run_here("verify", "game.dax", "--against", "other.dax"))

    def test_plain_areas(self):
        image = psp_image(41)  # 11 frames
        for areas in ((0, 11),), ((0, 1), (10, 1)), ((7, 2), (3, 1)), ((5, 0),), ():
            for padded in False, True:
                dax = dax_reference.compress(9, image, padded, 1, areas)
                self.assertEqual(dax_reference.expand(dax), image)
                self.assertEqual(self.expand(dax), image, areas)
                self.write("other.dax", dax_reference.compress(9, image))
                self.assert_done(self.run_here("verify", "game.dax", "--against", "other.dax"))

    def test_wrong_plain_areas_are_refused(self):
        image = psp_image(41)
        for areas in ((0, 12),), ((11, 1),), ((0xFFFFFFFF, 2),), ((0, 8), (4, 8)), ((0, 11), (0, 1)), ((0, 0),) * 12:
            dax = bytearray(dax_reference.compress(9, image, version=1, areas=((0, 0),) * len(areas)))
            for number, area in enumerate(areas):
                struct.pack_into("<2I", dax, 32 + 6 * 11 + 8 * number, *area)
            self.write("game.dax", dax)
            result = self.run_here("dax2iso", "game.dax")
            self.assertEqual(result.status, 1)
            self.assertRegex(result.err, r"^vantrel dax2iso: game.dax: Corrupted input file. \(game.dax: DAX area ")
            self.assertRegex(self.run_here("info", "game.dax").err,
                             r"^vantrel info: game.dax: DAX area (count 12|\d+ of \d+ frames from frame \d+) is not "
                             r"supported: the image has 11 frames\n$")

    def test_frames_that_fall_short_are_refused(self):
        image = psp_image(41)
        frames = [image[at:at + 8192] for at in range(0, len(image), 8192)]
        for number, left in (3, 8000), (10, 2047):
            frame = frames[number][:left]
            short = b"".join(frames[:number]) + frame.ljust(8192, b"?")
            dax = bytearray(dax_reference.compress(9, image))
            stored = zlib.compress(frame, 9)
            struct.pack_into("<I", dax, 32 + 4 * number, len(dax))
            struct.pack_into("<H", dax, 32 + 4 * 11 + 2 * number, len(stored))
            self.write("game.dax", dax + stored)
            result = self.run_here("dax2iso", "game.dax")
            whole = 8192 if number < 10 else 2048
            self.assertEqual((result.status, result.out, result.err), (
                1, "", "vantrel dax2iso: game.dax: frame %d has %d bytes instead of %d\n" % (number, left, whole)))
            self.assertIn("frame %d: it has %d bytes instead of %d" % (number, left, whole),
                          self.run_here("verify", "game.dax").out)
            self.assertEqual(self.names(), ["game.dax"])
        dax = bytearray(dax_reference.compress(9, image, version=1, areas=((2, 1),)))
        struct.pack_into("<H", dax, 32 + 4 * 11 + 2 * 2, 8191)
        self.write("game.dax", dax)
        self.assertEqual(self.run_here("dax2iso", "game.dax").err,
                         "vantrel dax2iso: game.dax: frame 2 has 8191 bytes instead of 8192\n")
        struct.pack_into("<H", dax, 32 + 4 * 11 + 2 * 2, 8193)
        self.write("game.dax", dax)
        self.assertEqual(self.run_here("dax2iso", "game.dax").err,
                         "vantrel dax2iso: game.dax: Input seems to be corrupted.\n")

    def test_other_versions_are_refused_by_name(self):
        self.write("game.dax", dax_reference.compress(9, psp_image(), version=2))
        for command in "dax2iso", "info", "verify", "list", "extract":
            result = self.run_here(command, "game.dax")
            self.assertEqual((result.status, result.out, result.err), (
                1, "", "vantrel %s: game.dax: DAX version 2 is not supported\n" % command))

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

    def test_a_truncated_image_is_converted_with_a_notice(self):
        self.check_truncated_images("iso2dax", "dax2iso", "game.dax")

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
