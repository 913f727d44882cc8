"""Messages: every failure names its file and the cause, and every notice is shown."""
import os
import unittest

from support import IS_WINDOWS, ConsoleTest, psp_image

MISSING = "File not found" if IS_WINDOWS else "No such file or directory"
CONVERSIONS = ("iso2cso", "cso2iso", "iso2dax", "dax2iso", "iso2bin", "bin2iso", "iso2iml", "iml2iso")


class Messages(ConsoleTest):
    def test_every_failure_names_the_file(self):
        self.write("in valid.bin", b"no image")
        for command in CONVERSIONS + ("info", "verify", "list", "extract"):
            result = self.run_here(command, "in valid.bin")
            self.assertEqual((result.status, result.out), (1, ""), result)
            self.assertTrue(result.err.startswith("vantrel %s: in valid.bin: " % command), result)
            self.assertEqual(result.err.count("\n"), 1, result)
        self.assertEqual(self.names(), ["in valid.bin"])

    def test_a_missing_file_is_told_with_the_cause(self):
        for command in CONVERSIONS + ("check-postgap", "info", "verify", "list", "extract"):
            result = self.run_here(command, "missing.xyz")
            self.assertEqual((result.status, result.out), (1, ""), result)
            self.assertTrue(result.err.startswith("vantrel %s: missing.xyz: " % command), result)
            self.assertIn("missing.xyz: " + MISSING, result.err)

    def test_each_file_of_a_batch_is_named(self):
        self.write("one.dax", b"DAX\0" + bytes(10))
        self.write("two.dax", b"DAX\0" + bytes(10))
        result = self.run_here("dax2iso", "-k", "one.dax", "two.dax")
        for name in "one.dax", "two.dax":
            self.assertIn("vantrel dax2iso: %s: Input is not a valid DAX file.\n" % name, result.err)

    def test_an_empty_cso(self):
        self.write("z.cso", b"")
        result = self.run_here("cso2iso", "z.cso")
        self.assertIn("(z.cso: the file is shorter than a CSO header)", result.err)

    def test_a_listed_file_that_is_missing(self):
        self.write("game.ims", bytes(18 * 2048))
        lines = ["[SYS]", "VERSION=1.00", "MEDIA=UMD", "[LOC]", "#Track", "# the number of entries: 2",
                 "#Start   End      Mode Fno Path", '0        17       2.1  0   "game.ims"',
                 '18       18       2.1  0   "NOWHERE"', "[/LOC]", "", ""]
        self.write("game.iml", "\r\n".join(lines).encode())
        result = self.run_here("iml2iso", "--like-window", "game.iml")
        self.assertEqual(result.status, 1)
        self.assertRegex(result.err, r"game\.iml: Code 3041 - Error!!! Opening \[NOWHERE\] \(.*NOWHERE: no such file\)")

    @unittest.skipIf(IS_WINDOWS, "devices of POSIX systems")
    def test_a_device_is_no_image(self):
        for command in "info", "verify", "list":
            result = self.run_here(command, "/dev/null")
            self.assertEqual(result.status, 1, result)
            self.assertIn("/dev/null: Illegal seek", result.err)

    def test_a_folder_is_no_image(self):
        os.mkdir(self.path("folder"))
        result = self.run_here("iso2cso", "folder")
        self.assertIn("folder: Code 1001e - Error Opening folder (folder is a folder)", result.err)


if __name__ == "__main__":
    unittest.main()
