"""The rebuild as the window does it, from layouts that need not describe a disc."""
import os
import unittest

from support import IS_WINDOWS, ConsoleTest

SECTOR = 2048


def layout(entries, leading=18):
    lines = ["[SYS]", "VERSION=1.00", "MEDIA=UMD", "[LOC]", "#Track",
             "# the number of entries: %d" % (len(entries) + 1), "#Start   End      Mode Fno Path",
             '%-8d %-8d 2.1  0   "game.ims"' % (0, leading - 1)]
    lines += ['%-8d %-8d 2.1  0   "%s"' % entry for entry in entries]
    return "\r\n".join(lines + ["[/LOC]", "", ""]).encode()


class Rebuild(ConsoleTest):
    def write_layout(self, *entries):
        self.write("game.iml", layout(list(entries)))
        self.write("game.ims", bytes(18 * SECTOR))

    def test_files_below_another_folder_in_any_case(self):
        os.makedirs(self.path("disc/Data"))
        self.write("disc/Data/level.bin", b"x" * SECTOR)
        self.write_layout((18, 18, "DATA\\LEVEL.BIN"))
        self.assert_done(self.run_here("iml2iso", "--like-window", "--files", "disc", "game.iml"))
        self.assertEqual(self.read("game.iso")[18 * SECTOR:], b"x" * SECTOR)
        self.assertEqual(self.names(), ["disc", "game.iml", "game.ims", "game.iso"])

    def test_leading_structures_with_the_name_that_an_export_gives_them(self):
        self.write("game.v2.iml", layout([]))
        self.write("game.v2.ims", bytes(18 * SECTOR))
        self.assert_done(self.run_here("iml2iso", "--like-window", "game.v2.iml"))
        self.assertEqual(len(self.read("game.v2.iso")), 18 * SECTOR)

    @unittest.skipIf(IS_WINDOWS, "the system finds names in any case")
    def test_leading_structures_in_the_current_folder_in_any_case(self):
        self.write("game.iml", layout([]))
        self.write("GAME.IMS", bytes(18 * SECTOR))
        self.assert_done(self.run_here("iml2iso", "--like-window", "game.iml"))
        self.assertEqual(len(self.read("game.iso")), 18 * SECTOR)

    def test_a_missing_file_leaves_everything_unchanged(self):
        self.write_layout((18, 18, "NOWHERE"))
        self.write("game.iso", b"older")
        self.write("game.txt", b"notes")
        before = self.state()
        result = self.run_here("iml2iso", "--like-window", "-f", "game.iml")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 3041 - Error!!! Opening [NOWHERE]", result.err)
        self.assertEqual(self.state(), before)

    def test_exact_needs_its_gap_file(self):
        self.write_layout((18, 18, "A"))
        self.write("A", b"x" * 2048)
        result = self.run_here("iml2iso", "--exact", "game.iml")
        self.assertEqual(result.status, 1)
        self.assertIn('game.gaps is missing: an exact rebuild needs the gap file that "vantrel iso2iml --extract" writes',
                      result.err)
        self.assertEqual(self.names(), ["A", "game.iml", "game.ims"])

    def test_no_input_is_replaced(self):
        self.write_layout((18, 18, "A"))
        self.write("A", b"x" * 2048)
        self.write("game.gaps", b"of an export")
        before = self.state()
        for name, problem in (("game.ims", "game.ims: the output would be a file of the input"),
                              ("game.gaps", "game.gaps: the output would be a file of the input"),
                              ("game.iml", "game.iml: the output would be the input itself"),
                              ("A", "The image would replace .%sA, which the layout lists" % ("\\" if IS_WINDOWS else "/"))):
            result = self.run_here("iml2iso", "--like-window", "-f", "-o", name, "game.iml")
            self.assertEqual((result.status, result.out), (1, ""))
            self.assertIn(problem, result.err)
            self.assertEqual(self.state(), before)


if __name__ == "__main__":
    unittest.main()
