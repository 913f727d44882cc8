"""The rebuild and postgap commands."""
import os
try:
    import resource
except ImportError:  # not on Windows
    resource = None
import struct
import unittest

from support import ConsoleTest, IS_WINDOWS

SECTOR = 2048


def layout(entries, leading=18):
    lines = ["[SYS]", "VERSION=1.00", "MEDIA=UMD", "[LOC]", "#Track",
             "# the number of entries: %d" % (len(entries) + 1), "#Start   End      Mode Fno Path",
             '%-8d %-8d 2.1  0   "game.ims"' % (0, leading - 1)]
    lines += ['%-8d %-8d 2.1  0   "%s"' % entry for entry in entries]
    return "\r\n".join(lines + ["[/LOC]", "", ""]).encode()


def cd_image(sectors, volume_sectors):
    image = bytearray(os.urandom(sectors * SECTOR))
    image[32776:32787] = b"PLAYSTATION"
    image[33792:33800] = b"CD-XA001"
    image[32848:32852] = struct.pack("<I", volume_sectors)
    return bytes(image)


class Rebuild(ConsoleTest):
    def write_layout(self, *entries):
        self.write("game.iml", layout(list(entries)))
        self.write("game.ims", bytes(18 * SECTOR))

    def test_files_below_another_folder_in_any_case(self):
        os.makedirs(self.path("disc/Data"))
        self.write("disc/Data/level.bin", b"x" * SECTOR)
        self.write_layout((18, 18, "DATA\\LEVEL.BIN"))
        self.assert_done(self.run_here("iml2iso", "--files", "disc", "game.iml"))
        self.assertEqual(self.read("game.iso")[18 * SECTOR:], b"x" * SECTOR)
        self.assertEqual(self.names(), ["disc", "game.iml", "game.ims", "game.iso"])

    def test_leading_structures_with_the_name_that_an_export_gives_them(self):
        self.write("game.v2.iml", layout([]))
        self.write("game.v2.ims", bytes(18 * SECTOR))
        self.assert_done(self.run_here("iml2iso", "game.v2.iml"))
        self.assertEqual(len(self.read("game.v2.iso")), 18 * SECTOR)

    def test_a_missing_file_leaves_everything_unchanged(self):
        self.write_layout((18, 18, "NOWHERE"))
        self.write("game.iso", b"older")
        self.write("game.txt", b"notes")
        before = self.state()
        result = self.run_here("iml2iso", "-f", "game.iml")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 3041 - Error!!! Opening [NOWHERE]", result.err)
        self.assertEqual(self.state(), before)

    def test_exact_refuses_files_that_no_longer_fit(self):
        self.write_layout((18, 18, "A"))
        self.write("A", b"x" * 2049)
        result = self.run_here("iml2iso", "--exact", "game.iml")
        self.assertEqual(result.status, 1)
        self.assertIn("A has 2049 bytes, but its sectors in the image hold only 2048", result.err)
        self.assertEqual(self.names(), ["A", "game.iml", "game.ims"])

    def test_postgap_is_reported_and_appended(self):
        image = cd_image(30, 180)
        self.write("game.iso", image)
        result = self.run_here("check-postgap", "--dry-run", "game.iso")
        self.assert_done(result)
        self.assertIn("without its postgap", result.out)
        self.assertEqual(self.read("game.iso"), image)
        self.assert_done(self.run_here("check-postgap", "game.iso"))
        self.assertEqual(self.read("game.iso"), image + b"postgap".ljust(150 * SECTOR, b"\0"))
        result = self.run_here("check-postgap", "game.iso")
        self.assertIn("already Write a postgap", result.out)

    @unittest.skipIf(IS_WINDOWS, "limits of POSIX systems")
    def test_a_postgap_that_cannot_be_completed_is_undone(self):
        image = cd_image(30, 180)
        self.write("game.iso", image)
        limit = 130 * SECTOR + 77
        result = self.run_here("check-postgap", "game.iso",
                               preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual(result.status, 1, result)
        self.assertIn("game.iso", result.err)
        self.assertEqual(self.state(), {"game.iso": image})

    def test_add_postgap_requires_a_count(self):
        self.write("game.iso", cd_image(30, 180))
        self.assertEqual(self.run_here("add-postgap", "game.iso").status, 2)
        self.assertEqual(self.run_here("add-postgap", "--count", "10", "game.iso").status, 2)
        self.assert_done(self.run_here("add-postgap", "--count", "3", "game.iso"))
        image = self.read("game.iso")
        self.assertEqual(len(image), 30 * SECTOR)
        self.assertEqual(image[32848:32856], struct.pack("<I", 30) + struct.pack(">I", 30))


if __name__ == "__main__":
    unittest.main()
