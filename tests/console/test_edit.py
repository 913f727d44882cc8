"""iml2iso with changed files: the default rebuild, --keep-places, --dry-run, --exact and --like-window."""
import json
import os
import re
import shutil
import struct
import subprocess
import unittest
import zlib

from support import ConsoleTest
from disc import SECTOR, Disc, sectors
from disc_master import Entry, Master, make
from edit_images import own_image

SMALL = "SYSTEM.CNF"
GAMMA = "DATA/DEEP/GAMMA.BIN"


class Edited(ConsoleTest):
    """Tests with an exported image "game.iso", its layout and its files below "files"."""
    image_name = "umd"

    def setUp(self):
        super().setUp()
        self.export(self.image_name)

    def export(self, name):
        self.image = own_image(name)
        self.disc = Disc(self.image)
        self.write("game.iso", self.image)
        self.assert_done(self.run_here("iso2iml", "-f", "-q", "game.iso", "--extract", "files"))
        os.remove(self.path("game.iso"))

    def change(self, path, content):
        self.write("files/" + path, content)

    def rebuild(self, *words):
        return self.run_here("iml2iso", *words, "game.iml", "--files", "files", "-o", "new.iso")

    def rebuilt(self, *words):
        result = self.rebuild("-f", *words)
        self.assert_done(result)
        return Disc(self.read("new.iso"))

    def assert_refused(self, result, *texts):
        self.assertEqual((result.status, result.out), (1, ""), result)
        for text in texts:
            self.assertIn(text, result.err)
        self.assertNotIn("new.iso", self.names())

    def edit_layout(self, change):
        text = self.read("game.iml").decode("latin-1")
        self.assertNotEqual(change(text), text)
        self.write("game.iml", change(text).encode("latin-1"))


class Default(Edited):
    def test_nothing_changed(self):
        for name in "umd", "cd", "cd-bare", "dvd", "joliet", "joliet-behind", "umd-filled-hole":
            self.export(name)
            self.rebuilt()
            self.assertEqual(self.read("new.iso"), self.image, name)
            os.remove(self.path("new.iso"))
            self.assert_done(self.rebuild("--exact"))
            self.assertEqual(self.read("new.iso"), self.image, name)

    def test_changed_files(self):
        self.change(SMALL, b"A longer line for the console\r\n")
        self.change(GAMMA, b"moved " * 20000)
        new = self.rebuilt()
        self.assertEqual(new.problems, [])
        files, before = new.primary.files, self.disc.primary.files
        self.assertEqual(files[SMALL].extents, ((before[SMALL].sector, 31),))
        self.assertEqual(files[GAMMA].extents, ((self.disc.content_end, 120000),))
        self.assertEqual(new.content(files[GAMMA]), b"moved " * 20000)
        self.assertEqual(new.primary.volume_sectors, self.disc.primary.volume_sectors + sectors(120000))
        self.assertEqual({path: file for path, file in files.items() if path not in (SMALL, GAMMA)},
                         {path: file for path, file in before.items() if path not in (SMALL, GAMMA)})

    def test_the_report_tells_what_has_happened(self):
        """Counts of files by what has happened to them; each moved file with its sectors."""
        self.change(SMALL, b"short")
        self.change(GAMMA, b"moved " * 20000)
        result = self.rebuild()
        self.assert_done(result)
        for text in (GAMMA.replace("/", "\\"), str(self.disc.primary.files[GAMMA].sector), str(self.disc.content_end),
                     str(sectors(120000))):
            self.assertIn(text, result.out.replace("/", "\\"))

    def test_a_change_of_the_same_length_is_a_change(self):
        content = bytearray(self.read("files/" + GAMMA))
        content[40000] ^= 1
        self.change(GAMMA, content)
        new = self.rebuilt()
        self.assertEqual(new.content(new.primary.files[GAMMA]), content)
        self.assertIn("GAMMA", self.rebuild("-f").out)

    def test_files_below_another_folder_in_any_case(self):
        os.rename(self.path("files/DATA"), self.path("files/Data"))
        os.rename(self.path("files/SYSTEM.CNF"), self.path("files/system.cnf"))
        os.rename(self.path("files"), self.path("elsewhere"))
        self.assert_done(self.run_here("iml2iso", "game.iml", "--files", "elsewhere", "-o", "new.iso"))
        self.assertEqual(self.read("new.iso"), self.image)

    def test_a_layout_whose_name_has_dots(self):
        self.write("game.v2.iso", self.image)
        self.assert_done(self.run_here("iso2iml", "game.v2.iso", "--extract", "other"))
        os.remove(self.path("game.v2.iso"))
        self.assert_done(self.run_here("iml2iso", "game.v2.iml", "--files", "other"))
        self.assertEqual(self.read("game.v2.iso"), self.image)

    def test_a_failure_leaves_everything_unchanged(self):
        os.remove(self.path("files/" + GAMMA))
        self.write("new.iso", b"older")
        before = self.state()
        self.assertEqual(self.rebuild("-f").status, 1)
        self.assertEqual(self.state(), before)

    def test_no_input_is_replaced(self):
        before = self.state()
        content = self.read("files/" + GAMMA)
        for name in "game.iml", "game.ims", "game.gaps", "files/" + GAMMA:
            result = self.run_here("iml2iso", "-f", "game.iml", "--files", "files", "-o", name)
            self.assertEqual((result.status, result.out), (1, ""), (name, result))
            self.assertIn(name, result.err.replace("\\", "/"))
            self.assertEqual((self.state(), self.read("files/" + GAMMA)), (before, content), name)

    def test_damaged_gaps_are_refused(self):
        self.export("umd-filled-hole")
        gaps = self.read("game.gaps")
        self.write("game.gaps", gaps[:-1] + bytes([gaps[-1] ^ 1]))
        for words in [], ["--exact"], ["--dry-run"]:
            self.assert_refused(self.rebuild(*words), "The image would differ from the one that game.iml was exported from")

    def test_the_gaps_of_another_export_are_refused(self):
        gaps = self.read("game.gaps")
        self.export("cd")
        self.write("game.gaps", gaps)
        self.assert_refused(self.rebuild(), "game.gaps")


class Names(Edited):
    def test_two_names_of_one_place_changed_alike(self):
        for path in "DATA/ALPHA.BIN", "DATA/TWIN.BIN":
            self.change(path, b"alike " * 5000)
        new = self.rebuilt()
        self.assertEqual(new.problems, [])
        self.assertEqual(new.primary.files["DATA/ALPHA.BIN"].extents, new.primary.files["DATA/TWIN.BIN"].extents)
        self.assertEqual(new.content(new.primary.files["DATA/TWIN.BIN"]), b"alike " * 5000)

    def test_two_names_of_one_place_changed_differently(self):
        self.change("DATA/ALPHA.BIN", b"one")
        self.change("DATA/TWIN.BIN", b"two")
        self.assert_refused(self.rebuild(), "ALPHA.BIN", "TWIN.BIN")

    def test_two_names_of_which_one_is_changed_are_never_silently_wrong(self):
        self.change("DATA/ALPHA.BIN", b"one")
        result = self.rebuild()
        if result.status == 1:
            return self.assert_refused(result, "ALPHA.BIN", "TWIN.BIN")
        self.assert_done(result)
        new = Disc(self.read("new.iso"))
        self.assertEqual([new.content(new.primary.files["DATA/%s.BIN" % name]) for name in ("ALPHA", "TWIN")], [b"one"] * 2)
        self.assertIn("TWIN.BIN", result.out)

    def test_a_missing_file(self):
        os.remove(self.path("files/" + GAMMA))
        self.assert_refused(self.rebuild(), "GAMMA.BIN", "empty file")

    def test_a_folder_in_place_of_a_file(self):
        os.remove(self.path("files/" + GAMMA))
        os.mkdir(self.path("files/" + GAMMA))
        self.assert_refused(self.rebuild(), "GAMMA.BIN")

    def test_a_name_that_the_disc_does_not_have(self):
        self.edit_layout(lambda text: text.replace("GAMMA.BIN", "OMEGA.BIN"))
        os.rename(self.path("files/" + GAMMA), self.path("files/DATA/DEEP/OMEGA.BIN"))
        self.assert_refused(self.rebuild(), "OMEGA.BIN")

    def test_an_added_name(self):
        self.change("ADDED.BIN", b"added")
        line = '%-8d %-8d 2.1  0   "%s"\r\n' % (5000, 5000, "ADDED.BIN")
        self.edit_layout(lambda text: re.sub(r"entries: (\d+)", lambda count: "entries: %d" % (int(count[1]) + 1),
                                             text.replace("[/LOC]", line + "[/LOC]")))
        self.assert_refused(self.rebuild(), "ADDED.BIN")

    def test_a_removed_name(self):
        self.edit_layout(lambda text: re.sub(r"entries: (\d+)", lambda count: "entries: %d" % (int(count[1]) - 1),
                                             re.sub(r"[^\r\n]*GAMMA\.BIN\"\r\n", "", text)))
        self.assert_refused(self.rebuild(), "GAMMA.BIN")
        os.remove(self.path("game.gaps"))
        self.assert_refused(self.rebuild(), "GAMMA.BIN")

    def test_a_removed_name_of_a_hidden_file(self):
        """The gap file tells that it was exported."""
        image = bytearray(self.image)
        image[self.disc.primary.records[GAMMA] + 25] = 1
        self.write("game.iso", image)
        self.assert_done(self.run_here("iso2iml", "-f", "-q", "game.iso", "--extract", "files"))
        self.assert_done(self.rebuild())
        self.assertEqual(self.read("new.iso"), image)
        os.remove(self.path("new.iso"))
        self.edit_layout(lambda text: re.sub(r"entries: (\d+)", lambda count: "entries: %d" % (int(count[1]) - 1),
                                             re.sub(r"[^\r\n]*GAMMA\.BIN\"\r\n", "", text)))
        self.assert_refused(self.rebuild(), "The layout does not list DATA", "GAMMA.BIN")

    def test_a_file_that_no_line_names_is_not_looked_at(self):
        self.change("notes.txt", b"notes")
        self.rebuilt()
        self.assertEqual(self.read("new.iso"), self.image)


class WithoutGaps(Edited):
    def test_a_filled_hole_becomes_zeros(self):
        self.export("umd-filled-hole")
        os.remove(self.path("game.gaps"))
        result = self.rebuild()
        self.assert_done(result)
        self.assertIn("There is no game.gaps", result.out)
        last = self.disc.primary.files["MOVIE/LAST.PSS"].sector * SECTOR
        hole = slice(last - 11 * SECTOR, last)
        self.assertEqual(self.image[hole], b"\x5a" * 11 * SECTOR)
        image = self.read("new.iso")
        self.assertEqual(image[hole], bytes(11 * SECTOR))
        self.assertEqual(image[:hole.start] + image[last:], self.image[:hole.start] + self.image[last:])

    def test_what_no_file_covers_is_zeros_and_told(self):
        """The notice names the gap file and the option that writes it."""
        self.export("joliet")
        os.remove(self.path("game.gaps"))
        self.change(GAMMA, b"short")
        result = self.rebuild()
        self.assert_done(result)
        self.assertIn("There is no game.gaps: whatever no listed file covers becomes zeros, and files of their recorded "
                      "length count as unchanged. ", result.out)
        self.assertIn(": 9 files of unchanged length, 1 changed in place, 0 moved, 0 sectors added", result.out)
        self.assertIn("--extract", result.out)
        new = Disc(self.read("new.iso"))
        self.assertEqual(new.content(new.primary.files[GAMMA]), b"short")
        self.assertEqual(new.content(new.trees["joliet"].files[GAMMA]), b"short")

    def test_joliet_that_cannot_be_reached_is_told(self):
        """The primary tree is right, and the status says that this is not all."""
        self.export("joliet-behind")
        os.remove(self.path("game.gaps"))
        for content in self.read("files/" + GAMMA), b"short", b"long " * 30000:
            self.change(GAMMA, content)
            result = self.rebuild("-f")
            self.assertEqual(result.status, 1, result)
            self.assertIn("The directories of the Joliet volume cannot be read", result.err)
            self.assertIn("There is no game.gaps", result.out)
            new = Disc(self.read("new.iso"))
            self.assertEqual(new.content(new.primary.files[GAMMA]), content)
        result = self.rebuild("-f", "--json")
        report = json.loads(result.out)  # one object
        self.assertEqual((result.status, report["moved"]), (1, 1), result)
        self.assertIn("The directories of the Joliet volume cannot be read", report["notices"][1])

    def test_a_layout_of_other_media(self):
        """Audio and data that a window's layout never had are zeros; the files are right."""
        for name in "cd", "dvd", "dvd-without-udf":
            self.export(name)
            os.remove(self.path("game.gaps"))
            self.change(SMALL, b"grown " * 1000)
            self.assert_done(self.rebuild("-f"))
            new = Disc(self.read("new.iso"))
            self.assertEqual(new.problems, [], name)
            self.assertEqual(new.content(new.primary.files[SMALL]), b"grown " * 1000)


class SeveralExtents(Edited):
    """A file of two extents, which follow each other or not, keeps its places; all others can be changed."""

    def image_with_extents(self, *entries):
        image = bytearray(make(Master(kind="umd", entries=[Entry(name, content) for name, content in entries])))
        records = Disc(image).primary.records
        image[records["LARGE0.BIN"] + 25] = 0x80
        name = records["LARGE1.BIN"] + 33
        image[name:name + 10] = b"LARGE0.BIN"
        return bytes(image)

    def test_several_extents(self):
        parts = [("LARGE0.BIN", b"first " * 1024), ("LARGE1.BIN", b"second " * 900)]
        others = [("A.BIN", b"a" * 3000), ("Z.BIN", b"z" * 100)]
        for entries in others[:1] + parts + others[1:], parts[:1] + others + parts[1:]:
            image = self.image_with_extents(*entries)
            self.write("game.iso", image)
            large = parts[0][1] + parts[1][1]
            self.assertEqual(self.run_here("extract", "game.iso", "LARGE0.BIN", "--stdout").out, large.decode())
            self.assertIn("%10d LARGE0.BIN" % len(large), self.run_here("list", "game.iso").out)
            self.write("longer", large + b"x")
            self.assert_refused(self.run_here("replace", "game.iso", "LARGE0.BIN=longer", "-o", "new.iso"),
                                "LARGE0.BIN: it is recorded in 2 extents, so it cannot be changed")
            self.assert_done(self.run_here("iso2iml", "-f", "game.iso", "--extract", "files"))
            self.assert_done(self.rebuild())
            self.assertEqual(self.read("new.iso"), image)
            for name in "A.BIN", "Z.BIN":
                self.change(name, b"grown " * 2000)
            new = self.rebuilt()
            self.assertEqual(new.problems, [])
            self.assertEqual(new.primary.files["LARGE0.BIN"].extents, Disc(image).primary.files["LARGE0.BIN"].extents)
            self.assertEqual({name: new.content(file) for name, file in new.primary.files.items()},
                             {"A.BIN": b"grown " * 2000, "LARGE0.BIN": large, "Z.BIN": b"grown " * 2000})
            os.remove(self.path("new.iso"))
            if os.path.exists(self.path("files/LARGE0.BIN")):
                self.change("LARGE0.BIN", large + b"x")
                self.assert_refused(self.rebuild(), "LARGE0.BIN: it is recorded in 2 extents, so it cannot be changed")
            shutil.rmtree(self.path("files"))


class Rules(Edited):
    def test_keep_places_names_every_file_with_both_sizes(self):
        self.change(SMALL, bytes(5000))
        self.change(GAMMA, bytes(80000))
        self.change("MOVIE/INTRO.PSS", b"small")
        self.assert_refused(self.rebuild("--keep-places"), "SYSTEM.CNF", "5000", str(self.disc.primary.files[SMALL].size),
                            "GAMMA.BIN", "70001", "80000")
        self.assertNotIn("INTRO", self.rebuild("--keep-places").err)
        for path in SMALL, GAMMA:
            self.change(path, b"small")
        new = self.rebuilt("--keep-places")
        self.assertEqual([file.sector for file in new.primary.files.values()],
                         [file.sector for file in self.disc.primary.files.values()])

    def test_a_dry_run_writes_nothing_and_gives_the_same_report(self):
        self.change(SMALL, bytes(5000))
        self.change(GAMMA, b"short")
        for words in [], ["--json"]:
            before = self.state()
            told = self.rebuild("--dry-run", *words)
            self.assert_done(told)
            self.assertEqual(self.state(), before)
            done = self.rebuild(*words)
            self.assert_done(done)
            self.assertEqual(self.without_result(done.out), self.without_result(told.out))
            os.remove(self.path("new.iso"))
        self.assertEqual(self.rebuild("--dry-run", "--keep-places").status, 1)
        os.remove(self.path("game.gaps"))
        told = self.rebuild("--dry-run")
        self.assertEqual(told.status, 0, told)
        self.assertIn("nothing was written", told.out)
        self.assertNotIn("new.iso", self.names())

    def without_result(self, text):
        """A report without what says whether it was written."""
        if text.startswith("{"):
            return {key: value for key, value in json.loads(text).items() if key not in ("dry_run", "output")}
        return [re.sub(r"^[^:]*: |; nothing was written$| \(\d+ bytes\)$", "", line) if "sectors added" in line else line
                for line in text.splitlines()]

    def test_exact_refuses_every_changed_file(self):
        content = bytearray(self.read("files/" + GAMMA))
        for changed in bytes([content[0] ^ 1]) + content[1:], content[1:], content + b"x":
            self.change(GAMMA, changed)
            self.assert_refused(self.rebuild("--exact"))
        self.change(GAMMA, content)
        self.assert_done(self.rebuild("--exact"))
        self.assertEqual(self.read("new.iso"), self.image)

    def test_rules_that_exclude_each_other(self):
        for words in ["--exact", "--like-window"], ["--keep-places", "--like-window"]:
            self.assertEqual(self.rebuild(*words).status, 2, words)


class LikeWindow(Edited):
    """--like-window writes what the button of the window writes, byte for byte: stale records, marks in the last sector of
    each file, files of a DVD one after the other."""

    def sum_of(self, name, changes):
        self.export(name)
        for path, content in changes.items():
            self.change(path, content)
        result = self.rebuild("-f", "--like-window")
        self.assert_done(result)
        image = self.read("new.iso")
        os.remove(self.path("new.iso"))
        return len(image) // SECTOR, "%08x" % zlib.crc32(image)

    def test_images(self):
        changes = {SMALL: b"A longer line for the console\r\n", GAMMA: b"moved " * 20000, "MOVIE/LAST.PSS": b"short"}
        for name, unchanged, changed in WINDOW_SUMS:
            self.assertEqual(self.sum_of(name, {}), unchanged, name)
            self.assertEqual(self.sum_of(name, changes), changed, name)


# Sectors and CRC-32 of the image that the window rebuilds, from unchanged and from changed files.
WINDOW_SUMS = [
    ("umd", (97, "cab68b53"), (94, "1527938d")),
    ("cd", (245, "3ad23075"), (244, "5e3765af")),
    ("cd-bare", (238, "043bfd04"), (245, "395dc958")),
    ("dvd", (366, "8248744c"), (386, "3e86e043")),
    ("dvd-without-udf", (118, "04015c96"), (138, "576d3c6f")),
    ("joliet-behind", (248, "ecb239ab"), (247, "21d25417")),
]


class DamagedLayouts(Edited):
    """The leading structures are checked as an image's are, before anything is written."""

    def put(self, position, data):
        structures = bytearray(self.read("game.ims"))
        structures[position:position + len(data)] = data
        self.write("game.ims", structures)

    def damage_record(self, path, sector, size):
        place = sector.to_bytes(4, "little") + sector.to_bytes(4, "big") + size.to_bytes(4, "little") + size.to_bytes(4, "big")
        self.put(self.disc.primary.records[path] + 2, place)

    def assert_unusable(self, *texts):
        self.change(SMALL, b"changed")
        self.assert_refused(self.rebuild(), *texts)
        os.remove(self.path("game.gaps"))
        self.assert_refused(self.rebuild(), *texts)

    def test_a_circle_of_folders(self):
        self.damage_record("DATA/DEEP", *self.disc.primary.folders["DATA"])
        self.assert_unusable("DATA")

    def test_overlapping_files(self):
        self.damage_record("DATA/BETA.BIN", self.disc.primary.files["DATA/ALPHA.BIN"].sector + 1, 4096)
        self.assert_unusable("BETA.BIN")

    def test_overlapping_files_of_the_exported_image(self):
        """They are restored as they were, but no content may change: it would change another file, too."""
        image = bytearray(self.image)
        sector = self.disc.primary.files["DATA/ALPHA.BIN"].sector + 1
        place = struct.pack("<I", sector) + struct.pack(">I", sector)
        record = self.disc.primary.records["DATA/BETA.BIN"]
        image[record + 2:record + 10] = place
        self.write("game.iso", image)
        self.assert_done(self.run_here("iso2iml", "-f", "-q", "game.iso", "--extract", "files"))
        self.assert_done(self.rebuild())
        self.assertEqual(self.read("new.iso"), image)
        os.remove(self.path("new.iso"))
        self.change("DATA/BETA.BIN", bytes(4096))
        self.assert_refused(self.rebuild(), "BETA.BIN", "overlap")

    def test_a_file_beyond_all_sectors(self):
        self.damage_record("DATA/BETA.BIN", 0xFFFFFFF0, 0xFFFFFFF0)
        self.assert_unusable("BETA.BIN")

    def test_a_record_that_leaves_its_sector(self):
        self.put(self.disc.primary.records["DATA/BETA.BIN"], b"\xff")
        self.assert_unusable("DATA")

    def test_structures_that_are_cut_off(self):
        self.write("game.ims", self.read("game.ims")[:-SECTOR])
        self.assert_refused(self.rebuild(), "game.ims")


if __name__ == "__main__":
    unittest.main()
