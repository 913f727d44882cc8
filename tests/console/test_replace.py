"""replace: files of an image are changed, into a new image or where it stands."""
import json
import mmap
import os
import re
import resource
import shutil
import signal
import struct
import subprocess
import unittest

from support import COMMAND, IS_WINDOWS, ConsoleTest, run
from disc import SECTOR, Disc, sectors
from edit_images import own_image
import cso_reference
import dax_reference

SMALL = "SYSTEM.CNF"
GAMMA = "DATA/DEEP/GAMMA.BIN"
JOURNAL = ".game.iso.vantrel-undo"


class Replacing(ConsoleTest):
    """Tests with an image "game.iso" and a file "new"."""

    def write_image(self, name):
        self.image = own_image(name)
        self.disc = Disc(self.image)
        self.write("game.iso", self.image)

    def setUp(self):
        super().setUp()
        self.write_image("umd")
        self.write("new", b"changed " * 1000)

    def assert_content(self, name, path, content):
        """The image is sound, and only this file has other content."""
        disc = Disc(self.read(name))
        self.assertEqual(disc.problems, [])
        for other, file in disc.primary.files.items():
            changed = file.sector == disc.primary.files[path].sector and file.size
            before = self.disc.content(self.disc.primary.files[other])
            self.assertEqual(disc.content(file), content if changed or other == path else before, other)

    def assert_refused(self, result, *texts):
        self.assertEqual((result.status, result.out), (1, ""), result)
        for text in texts:
            self.assertIn(text, result.err)


class Outputs(Replacing):
    def test_every_spelling_of_a_path(self):
        for spelling in (GAMMA, GAMMA.lower(), GAMMA.replace("/", "\\"), "\\Data\\deep/gamma.bin", "/" + GAMMA, GAMMA + ";1"):
            self.assert_done(self.run_here("replace", "-f", "game.iso", spelling + "=new", "-o", "out.iso"))
            self.assert_content("out.iso", GAMMA, self.read("new"))
        self.assertEqual(self.names(), ["game.iso", "new", "out.iso"])

    def test_a_file_whose_path_holds_an_equals_sign(self):
        self.write("a=b", b"content")
        self.assert_done(self.run_here("replace", "game.iso", SMALL + "=a=b", "-o", "out.iso"))
        self.assert_content("out.iso", SMALL, b"content")

    def test_several_files(self):
        self.write("small", b"s")
        self.assert_done(self.run_here("replace", "game.iso", SMALL + "=small", GAMMA + "=new", "-o", "out.iso"))
        disc = Disc(self.read("out.iso"))
        self.assertEqual(disc.problems, [])
        self.assertEqual([disc.content(disc.primary.files[path]) for path in (SMALL, GAMMA)], [b"s", self.read("new")])

    def test_every_form_of_an_image(self):
        self.write("game.cso", cso_reference.compress(6, self.image))
        self.write("game.dax", dax_reference.compress(6, self.image))
        for name in "game.cso", "game.dax":
            self.assert_done(self.run_here("replace", "-f", name, GAMMA + "=new", "-o", "out.iso"))
            self.assert_content("out.iso", GAMMA, self.read("new"))

    def test_an_image_with_an_odd_tail(self):
        tail = b"tail" * 25
        self.write("game.iso", self.image + tail)
        end = len(self.image)
        for content in b"short", bytes(range(256)) * 400:
            self.write("new", content)
            self.assert_done(self.run_here("replace", "-f", "game.iso", GAMMA + "=new", "-o", "out.iso"))
            self.assert_content("out.iso", GAMMA, content)
            self.assertEqual(self.read("out.iso")[end:end + 2048].rstrip(b"\0"), tail)

    def test_raw_images_and_sheets(self):
        self.write_image("cd")
        self.assert_done(self.run_here("iso2bin", "game.iso"))
        for name in "game.bin", "game.cue":
            self.assert_done(self.run_here("replace", "-f", name, GAMMA + "=new", "-o", "out.iso"))
            self.assert_content("out.iso", GAMMA, self.read("new"))
        self.assertEqual(self.read("out.iso")[-150 * SECTOR:], bytes(150 * SECTOR))

    def test_no_file_of_a_sheet_is_replaced(self):
        self.write_image("cd")
        self.assert_done(self.run_here("iso2bin", "-q", "game.iso"))
        before = self.state()
        for output, what in ("game.bin", "a file of the input"), ("game.cue", "the input itself"):
            result = self.run_here("replace", "-f", "game.cue", SMALL + "=new", "-o", output)
            self.assert_refused(result, "game.cue: the output would be " + what)
            self.assertEqual(self.state(), before)

    def test_what_the_image_lacks_of_its_file_is_told(self):
        self.write_image("cd")
        self.assert_done(self.run_here("iso2bin", "-q", "game.iso"))
        self.write("audio.bin", bytes(2352 * 10))
        self.write("two.cue", self.read("game.cue") + b'FILE "audio.bin" BINARY\r\n  TRACK 02 AUDIO\r\n    INDEX 01 00:00:00\r\n')
        for words in [], ["--dry-run"]:
            result = self.run_here("replace", "-f", "two.cue", SMALL + "=new", "-o", "out.iso", *words)
            self.assertEqual((result.status, result.err), (1, "vantrel replace: two.cue: track 2 (AUDIO) is not in the image\n"))
            self.assertIn("SYSTEM.CNF: moved", result.out)
        self.assert_content("out.iso", SMALL, self.read("new"))
        report = json.loads(self.run_here("replace", "two.cue", SMALL + "=new", "-o", "out.iso", "--dry-run", "--json").out)
        self.assertEqual(report["notices"], ["two.cue: track 2 (AUDIO) is not in the image"])
        self.write("game.bin", self.read("game.bin") + b"12")
        self.assert_refused(self.run_here("replace", "game.bin", SMALL + "=new", "-o", "other.iso"), "2 bytes are left over")

    def test_one_of_two_names_changes_both(self):
        self.assert_done(self.run_here("replace", "game.iso", "DATA/TWIN.BIN=new", "-o", "out.iso"))
        disc = Disc(self.read("out.iso"))
        self.assertEqual(disc.content(disc.primary.files["DATA/ALPHA.BIN"]), self.read("new"))
        self.assertEqual(disc.content(disc.primary.files["DATA/TWIN.BIN"]), self.read("new"))

    def test_two_names_of_one_place_with_different_content(self):
        self.write("other", b"other")
        before = self.state()
        words = ["replace", "game.iso", "DATA/TWIN.BIN=new", "DATA/ALPHA.BIN=other"]
        for place in ["-o", "out.iso"], ["--in-place"]:
            self.assert_refused(self.run_here(*words, *place), "TWIN.BIN", "ALPHA.BIN")
            self.assertEqual(self.state(), before)
        self.write("other", self.read("new"))
        self.assert_done(self.run_here(*words, "-o", "out.iso"))
        self.assert_content("out.iso", "DATA/ALPHA.BIN", self.read("new"))


class Words(Replacing):
    def assert_unchanged(self, status, words, *texts):
        before = self.state()
        result = self.run_here("replace", *words)
        self.assertEqual((result.status, result.out), (status, ""), result)
        for text in texts:
            self.assertIn(text, result.err)
        self.assertEqual(self.state(), before)

    def test_unknown_and_unusable_paths(self):
        self.assert_unchanged(1, ["game.iso", "DATA/GAMA.BIN=new", "-o", "out.iso"], "DATA/GAMA.BIN")
        self.assert_unchanged(1, ["game.iso", "DATA=new", "-o", "out.iso"], "DATA")
        self.assert_unchanged(1, ["game.iso", SMALL + "=nowhere", "-o", "out.iso"], "nowhere")
        self.assert_unchanged(2, ["game.iso", "=new", "-o", "out.iso"], "=new")

    def test_wrong_usage(self):
        self.assert_unchanged(2, ["game.iso", SMALL + "=new"], "-o", "--in-place")
        self.assert_unchanged(2, ["game.iso", SMALL + "=new", "-o", "out.iso", "--in-place"])
        self.assert_unchanged(2, ["game.iso", "-o", "out.iso"])
        self.assert_unchanged(2, ["game.iso", SMALL, "-o", "out.iso"], SMALL)
        self.assert_unchanged(2, ["game.iso", SMALL + "=", "-o", "out.iso"], SMALL + "=\" is not PATH=FILE")

    def test_quiet(self):
        result = self.run_here("replace", "-q", "game.iso", GAMMA + "=new", "-o", "out.iso")
        self.assertEqual((result.status, result.out, result.err), (0, "", ""))
        self.assert_content("out.iso", GAMMA, self.read("new"))

    def test_the_same_path_twice(self):
        self.write("other", b"other")
        self.assertIn(self.run_here("replace", "game.iso", SMALL + "=new", SMALL.lower() + "=other", "-o", "x.iso").status, (1, 2))
        self.assertEqual(self.names(), ["game.iso", "new", "other"])

    def test_existing_outputs_and_outputs_that_are_inputs(self):
        self.write("out.iso", b"older")
        self.assert_unchanged(1, ["game.iso", SMALL + "=new", "-o", "out.iso"], "out.iso")
        self.assert_unchanged(1, ["-f", "game.iso", SMALL + "=new", "-o", "game.iso"], "game.iso")
        self.assert_unchanged(1, ["-f", "game.iso", SMALL + "=new", "-o", "new"], "new")
        self.assert_done(self.run_here("replace", "-f", "game.iso", SMALL + "=new", "-o", "out.iso"))

    def test_in_place_needs_a_plain_image(self):
        self.write("game.cso", cso_reference.compress(6, self.image))
        self.assert_unchanged(1, ["--in-place", "game.cso", SMALL + "=new"], "game.cso", "CSO")

    def test_what_is_no_image(self):
        self.write("notes.iso", b"notes")
        self.assert_unchanged(1, ["notes.iso", SMALL + "=new", "-o", "out.iso"], "notes.iso")
        self.assert_unchanged(1, ["nowhere.iso", SMALL + "=new", "-o", "out.iso"], "nowhere.iso")


class Reports(Replacing):
    def test_keep_places_names_every_file_that_does_not_fit(self):
        self.write("large", bytes(range(256)) * 400)
        self.write("small", b"small")
        before = self.state()
        words = ["game.iso", SMALL + "=large", GAMMA + "=large", "MOVIE/INTRO.PSS=small", "--keep-places"]
        for place in ["-o", "out.iso"], ["--in-place"]:
            result = self.run_here("replace", *words, *place)
            self.assert_refused(result, "SYSTEM.CNF", "GAMMA.BIN", "102400", "70001", str(self.disc.primary.files[SMALL].size))
            self.assertNotIn("INTRO", result.err)
            self.assertEqual(self.state(), before)
        self.assert_done(self.run_here("replace", "game.iso", GAMMA + "=small", "--keep-places", "-o", "out.iso"))
        self.assert_content("out.iso", GAMMA, b"small")

    def test_a_dry_run_writes_nothing_and_gives_the_same_report(self):
        self.write("large", bytes(range(256)) * 400)
        before = self.state()
        words = ["replace", "game.iso", SMALL + "=new", GAMMA + "=large", "DATA/BETA.BIN=new"]
        for place in ["-o", "out.iso"], ["--in-place"]:
            for json_word in [], ["--json"]:
                told = self.run_here(*words, *place, *json_word, "--dry-run")
                self.assert_done(told)
                self.assertEqual(self.state(), before)
                done = self.run_here(*words, *place, *json_word)
                self.assert_done(done)
                self.assertEqual(self.without_result(done.out), self.without_result(told.out))
                for name in set(self.names()) - set(before):
                    os.remove(self.path(name))
                self.write("game.iso", self.image)

    def without_result(self, text):
        """A report without what says whether it was written."""
        if text.startswith("{"):
            return {key: value for key, value in json.loads(text).items() if key not in ("dry_run", "output")}
        return [re.sub(r"^[^:]*: |; nothing was written$| \(\d+ bytes\)$", "", line) if "sectors added" in line else line
                for line in text.splitlines()]

    def test_refusals_as_json(self):
        result = self.run_here("replace", "--json", "game.iso", "NOWHERE=new", "-o", "out.iso")
        report = json.loads(result.out)
        self.assertEqual((result.status, report["file"]), (1, "game.iso"))
        self.assertIn("NOWHERE", report["error"])


class Limits(Replacing):
    """Content that exceeds the medium or the format is refused before anything is written."""

    def sparse(self, name, size):
        with open(self.path(name), "wb") as file:
            file.truncate(size)

    def with_sectors(self, count):
        """Lets the image and its volume have so many sectors, most of them a hole of the file."""
        image = bytearray(self.image)
        image[32848:32856] = count.to_bytes(4, "little") + count.to_bytes(4, "big")
        self.write("game.iso", image)
        with open(self.path("game.iso"), "r+b") as file:
            file.truncate(count * SECTOR)
            file.seek((count - 160) * SECTOR)
            file.write(b"content")

    def test_a_file_of_four_gibibytes(self):
        self.sparse("huge", 1 << 32)
        self.assert_refused(self.run_here("replace", "game.iso", SMALL + "=huge", "-o", "out.iso"), "4294967296")
        self.assertEqual(self.names(), ["game.iso", "huge", "new"])

    def test_a_file_of_more_than_a_gibibyte(self):
        """Its file entry of UDF has two allocation descriptors, because each describes less than a gibibyte."""
        self.write_image("dvd")
        size = (1 << 30) + 5000
        self.sparse("large", size)
        with open(self.path("large"), "r+b") as file:
            file.write(b"begin")
            file.seek(size - 3)
            file.write(b"end")
        self.assert_done(self.run_here("replace", "--in-place", "game.iso", GAMMA + "=large"))
        with open(self.path("game.iso"), "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as image:
            disc = Disc(image)
            self.assertEqual(disc.problems, [])
            for file in disc.primary.files[GAMMA], disc.udf.files[GAMMA]:
                self.assertEqual(file.extents, ((self.disc.content_end, size),))
                start = file.sector * SECTOR
                self.assertEqual((image[start:start + 5], image[start + size - 3:start + size]), (b"begin", b"end"))
            descriptors, = struct.unpack_from("<I", image, disc.udf.entries[GAMMA] * SECTOR + 172)
            self.assertEqual(descriptors, 16)
            self.assertEqual(disc.closing_anchors, 1)

    def test_more_than_a_medium_holds(self):
        for name, count, size in ("umd", 878000, 20 << 20), ("cd", 332900, 1 << 20):
            self.write_image(name)
            self.with_sectors(count)
            self.sparse("large", size)
            for place in ["-o", "out.iso"], ["--in-place"]:
                length = os.path.getsize(self.path("game.iso"))
                result = self.run_here("replace", "game.iso", SMALL + "=large", *place)
                self.assertEqual((result.status, result.out), (1, ""), (name, result))
                self.assertIn("game.iso", result.err)
                self.assertEqual(os.path.getsize(self.path("game.iso")), length)
                self.assertEqual(self.names(), ["game.iso", "large", "new"])


class InPlace(Replacing):
    def test_the_result_is_that_of_a_new_image(self):
        for name in "umd", "cd", "dvd", "joliet-behind":
            self.write_image(name)
            for path in SMALL, GAMMA, "EMPTY.DAT", "MOVIE/LAST.PSS":
                self.write("game.iso", self.image)
                self.assert_done(self.run_here("replace", "-f", "game.iso", path + "=new", "-o", "out.iso"))
                self.assert_done(self.run_here("replace", "--in-place", "game.iso", path + "=new"))
                self.assertEqual(self.read("game.iso"), self.read("out.iso"), (name, path))
                self.assert_content("game.iso", path, self.read("new"))

    def test_only_what_changes_is_written(self):
        """The data of other files are never touched, whatever the length of the image."""
        if IS_WINDOWS or not shutil.which("strace"):
            self.skipTest("needs strace")
        words = COMMAND + ["replace", "--in-place", "game.iso", "DATA/BETA.BIN=new"]
        self.write("new", b"x" * 1024)
        with open(self.path("game.iso"), "r+b") as file:
            file.truncate(1 << 30)
        traced = run("-f", "-P", self.path("game.iso"), "-e", "trace=read,pread64,write,pwrite64,copy_file_range", *words,
                     program=["strace"], cwd=self.folder, env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
        self.assertEqual(traced.status, 0, traced)
        amounts = {name: sum(int(count) for count in re.findall(r"\b%s[^=]*= (\d+)" % name, traced.err))
                   for name in ("p?read", "p?write", "copy_file_range")}
        self.assertLess(amounts["p?write"] + amounts["copy_file_range"], 64 << 10, amounts)
        self.assertLess(amounts["p?read"], 4 << 20, amounts)

    @unittest.skipIf(IS_WINDOWS, "a limited file size is a property of POSIX systems")
    def test_a_limited_file_size_is_undone(self):
        """The image cannot grow: it is as it was, to the last byte."""
        self.write("large", bytes(range(256)) * 4000)
        before = self.state()
        size = len(self.image) + 20 * SECTOR
        limit = lambda: (signal.signal(signal.SIGXFSZ, signal.SIG_IGN), resource.setrlimit(resource.RLIMIT_FSIZE, (size, size)))
        result = self.run_here("replace", "--in-place", "game.iso", GAMMA + "=large", preexec_fn=limit)
        self.assert_refused(result, "game.iso", "File too large")
        self.assertEqual(self.state(), before)
        result = self.run_here("replace", "game.iso", GAMMA + "=large", "-o", "out.iso", preexec_fn=limit)
        self.assert_refused(result, "out.iso", "File too large")
        self.assertEqual(self.state(), before)

    @unittest.skipUnless(not IS_WINDOWS and os.geteuid() == 0 and shutil.which("unshare"),
                         "needs a file system of its own")
    def test_a_full_disk_is_undone(self):
        script = """set -e
            mount -t tmpfs -o size=400k none "$1/disk"
            cp "$1/game.iso" "$1/disk"
            status=0; "$2" replace --in-place "$1/disk/game.iso" DATA/DEEP/GAMMA.BIN="$1/large" || status=$?
            cmp "$1/game.iso" "$1/disk/game.iso"; ls -A "$1/disk"
            exit $status"""
        self.write("large", bytes(range(256)) * 4000)
        os.mkdir(self.path("disk"))
        done = subprocess.run(["unshare", "-m", "sh", "-c", script, "sh", self.folder, COMMAND[0]], capture_output=True,
                              text=True, timeout=60)
        if "mount:" in done.stderr:
            self.skipTest(done.stderr)
        self.assertEqual((done.returncode, done.stdout), (1, "game.iso\n"), done.stderr)
        self.assertIn("No space left on device", done.stderr)

    @unittest.skipUnless(shutil.which("strace") and not IS_WINDOWS, "a signal at a chosen moment comes from strace")
    def test_an_interrupt_is_undone(self):
        """Ctrl-C at each transfer leaves the image as it was, or came too late and everything is done."""
        self.write_image("dvd")
        self.write("large", bytes(range(256)) * 400)
        words = ["replace", "--in-place", "game.iso", GAMMA + "=large", SMALL + "=new"]
        self.assert_done(self.run_here(*words))
        changed = self.read("game.iso")
        statuses = []
        for moment in range(1, 200):
            self.write("game.iso", self.image)
            signal_at = ["strace", "-qq", "-f", "-o", os.devnull, "-P", self.path("game.iso"), "-P", self.path("large"),
                         "-P", self.path(JOURNAL), "-e",
                         "inject=read,pread64,write,pwrite64:signal=SIGINT:when=%d" % moment]
            result = run(*words, program=signal_at + COMMAND, cwd=self.folder,
                         env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
            statuses.append(result.status)
            self.assertEqual(self.read("game.iso"), self.image if result.status == 130 else changed, (moment, result))
            self.assertEqual(self.names(), ["game.iso", "large", "new"])
            if result.status == 0:
                break
        self.assertEqual(set(statuses), {0, 130}, statuses)
        self.assertGreater(len(statuses), 5)

    @unittest.skipUnless(shutil.which("strace") and not IS_WINDOWS, "a failure at a chosen moment comes from strace")
    def test_a_failed_write_is_undone(self):
        self.write_image("dvd")
        self.write("large", bytes(range(256)) * 400)
        words = ["replace", "--in-place", "game.iso", GAMMA + "=large", SMALL + "=new"]
        for moment in range(1, 200):
            failing = ["strace", "-qq", "-f", "-o", os.devnull, "-P", self.path("game.iso"), "-P", self.path(JOURNAL),
                       "-e", "inject=write,pwrite64:error=EIO:when=%d" % moment]
            result = run(*words, program=failing + COMMAND, cwd=self.folder,
                         env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
            if result.status == 0:
                break
            self.assert_refused(result, "game.iso", "Input/output error")
            self.assertEqual(self.read("game.iso"), self.image)
            self.assertEqual(self.names(), ["game.iso", "large", "new"])
        self.assertGreater(moment, 5)

    @unittest.skipIf(IS_WINDOWS, "permissions of POSIX systems")
    def test_a_read_only_image(self):
        os.chmod(self.path("game.iso"), 0o444)
        os.chmod(self.path("new"), 0o644)
        os.chmod(self.folder, 0o777)
        self.assert_refused(self.run_as_ordinary_user("replace", "--in-place", "game.iso", SMALL + "=new"),
                            "game.iso", "Permission denied")
        self.assertEqual(self.read("game.iso"), self.image)


class DamagedImages(Replacing):
    """Structures that contradict themselves are refused with a reason, before anything is written."""

    def put(self, position, data):
        image = bytearray(self.image)
        image[position:position + len(data)] = data
        self.image = bytes(image)
        self.write("game.iso", image)

    def place(self, sector, size):
        return sector.to_bytes(4, "little") + sector.to_bytes(4, "big") + size.to_bytes(4, "little") + size.to_bytes(4, "big")

    def assert_unusable(self, *texts, path=SMALL):
        for words in ["-o", "out.iso"], ["--in-place"], ["--dry-run", "-o", "out.iso"]:
            self.assert_refused(self.run_here("replace", "game.iso", path + "=new", *words), *texts)
            self.assertEqual(self.names(), ["game.iso", "new"])
            self.assertEqual(self.read("game.iso"), self.image)

    def damage_record(self, path, sector, size, tree="primary"):
        self.put(self.disc.trees[tree].records[path] + 2, self.place(sector, size))

    def test_a_circle_of_folders(self):
        self.damage_record("DATA/DEEP", *self.disc.primary.folders["DATA"])
        self.assert_unusable("DATA")

    def test_a_folder_that_contains_the_root(self):
        self.damage_record("DATA/DEEP", *self.disc.primary.folders[""])
        self.assert_unusable("game.iso")

    def test_a_record_that_leaves_its_sector(self):
        self.write_image("umd-folders")
        last = max(position for path, position in self.disc.primary.records.items()
                   if path.startswith("SOUND") and position // SECTOR == self.disc.primary.folders["SOUND"][0])
        self.put(last, b"\xff")
        self.assert_unusable("SOUND", path="EMPTY.DAT")

    def test_files_beyond_the_image(self):
        self.damage_record("DATA/BETA.BIN", self.disc.primary.files["DATA/BETA.BIN"].sector, 0x7FFFFFFF)
        self.assert_unusable("BETA.BIN", path="DATA/BETA.BIN")

    def test_a_folder_beyond_the_image(self):
        self.damage_record("MOVIE", 0x00FFFFFF, SECTOR)
        self.assert_unusable("MOVIE")

    def test_overlapping_files(self):
        alpha = self.disc.primary.files["DATA/ALPHA.BIN"]
        self.damage_record("DATA/BETA.BIN", alpha.sector + 1, 4096)
        self.assert_unusable("BETA.BIN", "ALPHA.BIN", path="DATA/BETA.BIN")
        self.assert_unusable("BETA.BIN", "ALPHA.BIN", path="DATA/ALPHA.BIN")

    def test_a_file_over_structures(self):
        self.damage_record("DATA/BETA.BIN", 16, 4096)
        self.assert_unusable("BETA.BIN", path="DATA/BETA.BIN")

    def test_udf_that_contradicts_iso9660(self):
        self.write_image("dvd")
        other = self.disc.primary.files["DATA/BETA.BIN"]
        self.damage_record(GAMMA, other.sector, other.size)
        self.assert_unusable("GAMMA.BIN", path=GAMMA)

    def test_a_damaged_file_entry(self):
        self.write_image("dvd")
        self.put(self.disc.udf.entries[GAMMA] * SECTOR + 56, b"\1\0\0\0")
        self.assert_unusable("game.iso", path=GAMMA)

    def test_joliet_that_contradicts_the_primary_tree(self):
        self.write_image("joliet")
        file = self.disc.primary.files[GAMMA]
        self.damage_record(GAMMA, file.sector, file.size - 2048, tree="joliet")
        self.assert_unusable("GAMMA.BIN", path=GAMMA)

    def test_an_image_that_ends_early(self):
        for length in 17 * SECTOR, 20 * SECTOR + 100, self.disc.primary.files["MOVIE/LAST.PSS"].sector * SECTOR:
            self.image = own_image("umd")[:length]
            self.write("game.iso", self.image)
            self.assert_unusable("game.iso", path="MOVIE/LAST.PSS")


if __name__ == "__main__":
    unittest.main()
