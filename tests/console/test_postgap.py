"""The postgap commands."""
import os
try:
    import resource
except ImportError:  # not on Windows
    resource = None
import struct
import unittest

from support import ConsoleTest, IS_WINDOWS, psp_image

SECTOR = 2048


def image(sectors, volume_sectors, system=b"PLAYSTATION"):
    content = bytearray(psp_image(sectors))
    content[32768:32774] = b"\1CD001"
    content[32776:32776 + 32] = system.ljust(32)
    content[33792:33800] = b"CD-XA001"
    content[32848:32852] = struct.pack("<I", volume_sectors)
    return bytes(content)


def dvd_image():
    content = bytearray(image(30, 30))
    content[33792:33800] = bytes(8)
    return bytes(content)


class Postgap(ConsoleTest):
    def test_it_is_appended_once(self):
        content = image(30, 180)
        self.write("game.iso", content)
        result = self.run_here("check-postgap", "--dry-run", "game.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("without its postgap", result.err)
        self.assertEqual(self.read("game.iso"), content)
        self.assert_done(self.run_here("check-postgap", "game.iso"))
        self.assertEqual(self.read("game.iso"), content + b"postgap".ljust(150 * SECTOR, b"\0"))
        before = self.state()
        for words in ["check-postgap"], ["check-postgap", "--dry-run"]:
            result = self.run_here(*words, "game.iso")
            self.assert_done(result)
            self.assertIn("already Write a postgap", result.out)
            self.assertEqual(self.state(), before)

    def test_images_without_postgap(self):
        for content in dvd_image(), image(30, 30, b"PSP GAME"):
            self.write("game.iso", content)
            for words in ["check-postgap"], ["check-postgap", "--dry-run"]:
                self.assert_done(self.run_here(*words, "game.iso"))
            self.assertEqual(self.read("game.iso"), content)

    def test_everything_else_is_refused(self):
        unmarked = bytearray(image(30, 180))
        unmarked[32769:32774] = bytes(5)
        others = {"text": b"some text\n" * 5000, "noise": os.urandom(30 * SECTOR), "empty": b"", "other": bytes(unmarked),
                  "system": image(30, 180, b"LINUX"), "odd": image(30, 180) + b"x", "long": image(31, 180),
                  "short": image(29, 180), "CISO": b"CISO" + bytes(40_000)}
        for name, content in others.items():
            self.write("game.iso", content)
            for words in ["check-postgap"], ["check-postgap", "--dry-run"]:
                result = self.run_here(*words, "game.iso")
                self.assertEqual((result.status, result.out), (1, ""), name)
                self.assertIn("game.iso", result.err)
            self.assertEqual(self.read("game.iso"), content)

    @unittest.skipIf(IS_WINDOWS, "limits of POSIX systems")
    def test_a_postgap_that_cannot_be_completed_is_undone(self):
        content = image(30, 180)
        self.write("game.iso", content)
        limit = 130 * SECTOR + 77
        result = self.run_here("check-postgap", "game.iso",
                               preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual(result.status, 1, result)
        self.assertIn("game.iso", result.err)
        self.assertEqual(self.state(), {"game.iso": content})

    def test_add_postgap_requires_a_count(self):
        self.write("game.iso", image(30, 180))
        self.assertEqual(self.run_here("add-postgap", "game.iso").status, 2)
        self.assertEqual(self.run_here("add-postgap", "--count", "10", "game.iso").status, 2)

    def test_add_postgap_reports_what_it_did(self):
        for system, appended in (b"PLAYSTATION", 0), (b"PSP GAME", 3):
            self.write("game.iso", image(30, 180, system))
            result = self.run_here("add-postgap", "--count", "3", "game.iso")
            self.assert_done(result)
            sectors = 30 + appended
            self.assertIn("%d sectors appended, volume size set to %d sectors" % (appended, sectors), result.out)
            content = self.read("game.iso")
            self.assertEqual(len(content), sectors * SECTOR)
            self.assertEqual(content[32848:32856], struct.pack("<I", sectors) + struct.pack(">I", sectors))

    @unittest.skipIf(IS_WINDOWS, "handles of files are numbers from 0 on only elsewhere")
    def test_add_postgap_without_standard_input(self):
        self.write("game.iso", image(30, 180, b"PSP GAME"))
        self.assert_done(self.run_here("add-postgap", "--count", "3", "game.iso", preexec_fn=lambda: os.close(0)))
        self.assertEqual(len(self.read("game.iso")), 33 * SECTOR)

    def test_add_postgap_refuses_the_rest(self):
        for content in dvd_image(), os.urandom(30 * SECTOR), image(30, 180, b"PSP GAME") + b"x":
            self.write("game.iso", content)
            self.assertEqual(self.run_here("add-postgap", "--count", "3", "game.iso").status, 1)
            self.assertEqual(self.read("game.iso"), content)


if __name__ == "__main__":
    unittest.main()
