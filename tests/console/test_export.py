"""iso2iml of the built program: folders, stale companions, path texts; what it writes can be rebuilt."""
import os
import subprocess
import unittest

from support import IS_WINDOWS, ConsoleTest

SEPARATOR = "\\" if IS_WINDOWS else "/"


class Export(ConsoleTest):
    def master(self, name, **files):
        """The same of files that are given as NAME="content"."""
        os.mkdir(self.path("src-" + name))
        for file, content in files.items():
            self.write("src-%s/%s.BIN" % (name, file.upper()), content.encode())
        return self.psp(name, "src-" + name)

    def psp(self, name, source="src"):
        """An image of a folder, with the marks of a PSP title."""
        subprocess.run(["genisoimage", "-quiet", "-sysid", "PSP GAME", "-A", "PSP GAME", "-o", self.path(name),
                        self.path(source)], check=True, stderr=subprocess.DEVNULL)
        image = bytearray(self.read(name))
        image[33792:33800] = b"CD-XA001"
        self.write(name, image)
        return bytes(image)

    def test_a_layout_that_cannot_be_rebuilt_is_no_success(self):
        image = bytearray(self.master("odd.iso", game="first"))
        image[33343] = ord("X")  # neither PlayStation 2 nor PSP
        self.write("odd.iso", image)
        result = self.run_here("iso2iml", "odd.iso")
        self.assertEqual(result.status, 1, result)
        self.assertIn("no known medium", result.out + result.err)
        self.assertTrue(os.path.exists(self.path("odd.iml")))

    def test_several_images_have_folders_of_their_own(self):
        one = self.master("one.v1.iso", game="first", only1="1")
        two = self.master("two.iso", game="second")
        self.assert_done_in_batch(self.run_here("iso2iml", "one.v1.iso", "two.iso", "--extract", "files"))
        self.assertEqual(sorted(os.listdir(self.path("files"))), ["one.v1", "two"])
        self.assertEqual(self.read("files/one.v1/GAME.BIN"), b"first")
        self.assertEqual(self.read("files/two/GAME.BIN"), b"second")
        for name, image in ("one.v1", one), ("two", two):
            self.assert_done(self.run_here("iml2iso", "--exact", "--files", os.path.join("files", name),
                                           "-o", "again", "-f", name + ".iml"))
            self.assertEqual(self.read("again"), image)

    def assert_done_in_batch(self, result):
        self.assertEqual(result.status, 0, result)
        self.assertEqual(result.err.count("\n"), 1, result)

    def test_a_folder_with_other_files_is_named(self):
        self.master("game.iso", game="first")
        os.mkdir(self.path("files"))
        self.write("files/NOTES.TXT", b"mine")
        result = self.run_here("iso2iml", "game.iso", "--extract", "files")
        self.assertEqual((result.status, result.err), (1, "vantrel iso2iml: game.iso: files%s exists already; -f adds the "
                                                       "files to it and replaces those that exist\n" % SEPARATOR))
        self.assertEqual((os.listdir(self.path("files")), os.path.exists(self.path("game.iml"))), (["NOTES.TXT"], False))
        self.assert_done(self.run_here("iso2iml", "-f", "game.iso", "--extract", "files"))
        self.assertEqual(self.read("files/NOTES.TXT"), b"mine")

    def test_without_a_folder_the_layouts_name_the_folders(self):
        images = {"one": self.master("one.iso", game="first"), "two": self.master("two.iso", game="second")}
        self.assert_done_in_batch(self.run_here("iso2iml", "--output-dir", "out", "one.iso", "two.iso", "--extract"))
        for name, image in images.items():
            self.assertIn(b'"%s\\GAME.BIN"' % name.encode(), self.read("out/%s.iml" % name))
            self.assert_done(self.run_here("iml2iso", "--exact", os.path.join("out", name + ".iml")))
            self.assertEqual(self.read("out/%s.iso" % name), image)

    def test_layouts_are_verified_with_files_of_another_folder(self):
        self.master("game.iso", game="first")
        self.assert_done(self.run_here("iso2iml", "game.iso", "--extract", "files"))
        self.assertEqual(self.run_here("verify", "game.iml").status, 1)
        self.assertIn("GAME.BIN is missing", self.run_here("verify", "game.iml").out)
        self.assert_done(self.run_here("verify", "--files", "files", "game.iml"))
        self.assertIn("missing: none\n", self.run_here("info", "game.iml", "--files", "files").out)

    def test_images_of_the_same_name_are_not_mixed(self):
        for folder in "a", "b":
            os.mkdir(self.path(folder))
        result = self.run_here("iso2iml", "-f", os.path.join("a", "game.iso"), os.path.join("b", "Game.bin"),
                               "--extract", "files")
        self.assertEqual((result.status, result.out), (2, ""))
        self.assertIn("two images have the name Game; export them one by one", result.err)

    def test_one_image_needs_no_folder_of_its_own(self):
        self.master("game.iso", game="first")
        self.assert_done(self.run_here("iso2iml", "game.iso", "--extract", os.path.join("new", "files")))
        self.assertEqual(os.listdir(self.path("new/files")), ["GAME.BIN"])

    def test_a_stale_rest_of_an_earlier_export_is_refused(self):
        self.master("game.iso", game="first")
        self.assert_done(self.run_here("iso2iml", "game.iso", "--extract"))
        before = self.state()
        result = self.run_here("iso2iml", "-f", "game.iso")
        self.assertEqual((result.status, result.err), (1, "vantrel iso2iml: game.iso: game.gaps of an earlier export "
                                                          "would not belong to the new layout; use --extract again, "
                                                          "or delete it\n"))
        self.assertEqual(self.state(), before)
        self.assert_done(self.run_here("iso2iml", "-f", "game.iso", "--extract"))
        os.remove(self.path("game.gaps"))
        self.assert_done(self.run_here("iso2iml", "-f", "game.iso"))

    def test_names_without_an_extension(self):
        """On the disc they end in a dot, which Windows drops when it writes files and when it reads them."""
        os.makedirs(self.path("src/DIR"))
        files = {"src/NO_EXTEN": b"first", "src/DIR/OTHER": b"second"}
        for name, content in files.items():
            self.write(name, content)
        image = self.psp("game.iso")
        self.assertIn(b"NO_EXTEN.;1", image)
        written = {name.removeprefix("src/") + ("" if IS_WINDOWS else "."): content for name, content in files.items()}
        self.assert_done(self.run_here("extract", "game.iso", "-C", "extracted"))
        self.assertEqual(self.files_below("extracted"), written)
        self.assert_done(self.run_here("iso2iml", "game.iso", "--extract", "files"))
        self.assertIn(b'"NO_EXTEN."', self.read("game.iml"))
        self.assertEqual(self.files_below("files"), written)
        self.assert_done(self.run_here("verify", "--files", "files", "game.iml"))
        for folder in "files", "extracted", "src":  # other programs leave the dot out on every system
            self.assert_done(self.run_here("iml2iso", "--exact", "--files", folder, "-f", "-o", "again.iso", "game.iml"))
            self.assertEqual(self.read("again.iso"), image)

    def test_extracted_files_keep_recorded_dates(self):
        date = 1_000_000_000
        os.mkdir(self.path("src"))
        self.write("src/GAME.BIN", b"first")
        os.utime(self.path("src/GAME.BIN"), (date, date))
        self.psp("game.iso")
        self.assert_done(self.run_here("iso2iml", "game.iso", "--extract", "files"))
        self.assertEqual(os.stat(self.path("files/GAME.BIN")).st_mtime, date)
        self.assert_done(self.run_here("iso2iml", "-f", "--no-dates", "game.iso", "--extract", "files"))
        self.assertGreater(os.stat(self.path("files/GAME.BIN")).st_mtime, date)

    def test_a_path_ends_with_a_separator_of_its_own_kind(self):
        self.master("game.iso", game="first")
        own = "\\" if IS_WINDOWS else "/"
        for path, text in (("C:\\Game_Folder", "\\Game_Folder\\GAME.BIN"), ("C:\\Game\\", "\\Game\\GAME.BIN"),
                           ("/games/game/", "/games/game/GAME.BIN"), ("/games/game", "/games/game%sGAME.BIN" % own)):
            self.assert_done(self.run_here("iso2iml", "-f", "game.iso", "--path", path))
            self.assertIn(b'"%s"' % text.encode(), self.read("game.iml"))

    @unittest.skipIf(IS_WINDOWS, "a folder of this system there")
    def test_files_are_not_extracted_to_a_folder_of_another_system(self):
        result = self.run_here("iso2iml", "game.iso", "--path", "C:\\Game", "--extract")
        self.assertEqual(result.status, 2)
        self.assertIn("--extract: needs a folder, because that of --path is one of another system", result.err)


if __name__ == "__main__":
    unittest.main()
