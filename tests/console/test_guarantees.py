"""Guarantees of every conversion: a full disk, an interrupt or a closed pipe leaves the folder unchanged."""
import os
import random
import resource
import shutil
import signal
import struct
import subprocess
import time
import unittest

from support import COMMAND, ConsoleTest, interrupted, limited_threads, psp_image, run

SIXTEEN_MEGABYTES = 8192


def has_unnamed_file(pid):
    """Whether a process has created its output."""
    try:
        return any(os.readlink("/proc/%d/fd/%s" % (pid, name)).endswith(" (deleted)")
                   for name in os.listdir("/proc/%d/fd" % pid))
    except OSError:  # the process has ended, or closed the file meanwhile
        return False


class Guarantees(ConsoleTest):
    def write_large(self):
        self.write("game.iso", psp_image(SIXTEEN_MEGABYTES))
        self.write("game.cso", b"older")

    def write_containers(self):
        """Writes an image of 64 MiB, and both compressed forms of it."""
        self.write("game.iso", psp_image(4 * SIXTEEN_MEGABYTES))
        for command in "iso2cso", "iso2dax":
            self.assert_done(self.run_here(command, "-l", "1", "game.iso"))

    def test_interrupts_at_random_times(self):
        self.write_large()
        before = self.state()
        stopped = 0
        for round_number in range(100):
            seconds = random.Random(round_number).uniform(0.005, 0.25)
            number = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)[round_number % 3]
            jobs = (1, 2, 5)[round_number // 3 % 3]
            result = interrupted(["iso2cso", "-f", "-j", jobs, "game.iso"], self.folder, seconds, number)
            if result.status == 128 + number:
                self.assertEqual(result.err, "vantrel: interrupted; nothing unfinished was kept\n")
                stopped += 1
            else:
                # The signal came before the handler was installed or after the end of the conversion.
                self.assertIn(result.status, (0, -number), result)
                if result.status == 0:
                    self.write("game.cso", b"older")
            self.assertEqual(self.state(), before)
        self.assertGreater(stopped, 25)

    def test_an_interrupt_takes_effect_within_a_second(self):
        self.write_containers()
        names = self.names()
        stopped = 0
        for words in (["iso2cso", "-f", "game.iso"], ["iso2dax", "-f", "game.iso"],
                      ["cso2iso", "-o", "new.iso", "game.cso"],
                      ["dax2iso", "-o", "new.iso", "game.dax"]):
            for jobs in "1", "2", "5":
                process = subprocess.Popen(COMMAND + words + ["-j", jobs], cwd=self.folder, stdout=subprocess.DEVNULL,
                                           stderr=subprocess.DEVNULL)
                while not has_unnamed_file(process.pid) and process.poll() is None:
                    time.sleep(0.001)
                start = time.monotonic()
                process.send_signal(signal.SIGINT)
                status = process.wait(10)
                self.assertLess(time.monotonic() - start, 1.0)
                if status == 130:
                    stopped += 1
                    self.assertEqual(self.names(), names)
                elif words[0].endswith("2iso") and status == 0:
                    os.remove(self.path("new.iso"))
        self.assertGreater(stopped, 5)

    def test_a_limited_file_size(self):
        """The output ends after a megabyte, at the same block for any number of threads."""
        self.write_containers()
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))
        for command, name, text in (("iso2cso", "game.iso", "game.iso: Code 1009-block 1[0-9]* : Write error .*game.cso: File too large"),
                                    ("cso2iso", "game.cso", "game.cso: Code 1110-block 639 : Write error .*game.iso: File too large"),
                                    ("iso2dax", "game.iso", "game.iso: I/O write error. .*game.dax: File too large"),
                                    ("dax2iso", "game.dax", "game.dax: I/O error writing to output file. .*game.iso: File too large")):
            before = self.state()
            told = set()
            for jobs in 1, 2, 5:
                result = self.run_here(command, "-f", "-j", jobs, name, preexec_fn=limit)
                self.assertEqual(result.status, 1, result)
                told.add(result.err)
                self.assertEqual(self.names(), sorted(before))
            self.assertEqual(self.state(), before)
            self.assertEqual(len(told), 1, told)
            self.assertRegex(told.pop(), text)

    def test_few_or_no_threads_are_enough(self):
        without = lambda: limited_threads(1024)
        few = lambda: limited_threads(100)
        if self.run_here("--version", preexec_fn=without).status != 0:
            self.skipTest("this build does not run in so little memory")
        self.write("game.iso", psp_image(1000))
        for compress, expand, name in ("iso2cso", "cso2iso", "game.cso"), ("iso2dax", "dax2iso", "game.dax"):
            self.assert_done(self.run_here(compress, "-j", "4", "game.iso"))
            expected = self.read(name)
            for limit in without, few:
                self.assert_done(self.run_here(compress, "-f", "-j", "16", "game.iso", preexec_fn=limit))
                self.assertEqual(self.read(name), expected)
                self.assert_done(self.run_here(expand, "-f", "-j", "16", "-o", "new.iso", name, preexec_fn=limit))
                self.assertEqual(self.read("new.iso"), self.read("game.iso"))
        # The sums of the image and of the sheet's file, which other threads compute.
        self.write("game.cue", b"FILE game.iso BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n")
        expected = self.run_here("verify", "game.cue").out
        self.assertEqual(expected.count("sha1: "), 2, expected)
        for limit in without, few:
            self.assertEqual(self.run_here("verify", "game.cue", preexec_fn=limit).out, expected)

    @unittest.skipUnless(os.geteuid() == 0 and shutil.which("unshare"), "needs a file system of its own")
    def test_a_full_disk(self):
        """A tmpfs of 4 MB in a mount namespace of its own holds the input but not the output."""
        script = """set -e
            mount -t tmpfs -o size=4m none "$1"
            head -c 3000000 "$2" > "$1/game.iso"
            printf older > "$1/game.cso"
            status=0; "$3" iso2cso -f "$1/game.iso" || status=$?
            ls -A "$1"; cat "$1/game.cso"
            exit $status"""
        self.write("source.iso", psp_image(2048))
        os.mkdir(self.path("disk"))
        done = subprocess.run(["unshare", "-m", "sh", "-c", script, "sh", self.path("disk"), self.path("source.iso"),
                               COMMAND[0]], capture_output=True, text=True, timeout=60)
        if "mount:" in done.stderr:
            self.skipTest(done.stderr)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertEqual(done.stdout, "game.cso\ngame.iso\nolder")
        self.assertRegex(done.stderr, r"Write error \(Cannot write .*game\.cso: No space left on device\)\n$")

    @unittest.skipUnless(os.geteuid() == 0 and shutil.which("unshare"), "needs a file system of its own")
    def test_a_read_only_folder(self):
        """A read-only mount stops root too, unlike permissions."""
        script = """mount --bind "$1" "$1" && mount -o remount,ro,bind "$1" || exit 99
            cd "$1" && exec "$2" iso2cso game.iso"""
        self.write("game.iso", psp_image())
        done = subprocess.run(["unshare", "-m", "sh", "-c", script, "sh", self.folder, COMMAND[0]],
                              capture_output=True, text=True, timeout=60)
        if done.returncode == 99:
            self.skipTest(done.stderr)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, "vantrel iso2cso: game.iso: Code 10010g - Error create game.cso "
                                      "(game.cso: Read-only file system)\n")
        self.assertEqual(self.names(), ["game.iso"])

    def test_a_folder_without_permission(self):
        self.write("game.iso", psp_image())
        os.chmod(self.folder, 0o555)
        self.addCleanup(os.chmod, self.folder, 0o755)
        result = self.run_as_ordinary_user("iso2cso", "game.iso")
        self.assertEqual((result.status, result.err), (1, "vantrel iso2cso: game.iso: Code 10010g - Error create game.cso "
                                                          "(game.cso: Permission denied)\n"))
        self.assertEqual(self.names(), ["game.iso"])

    def test_files_without_permission(self):
        """Each command names the unreadable file and the cause."""
        names = {"iso2cso": "a.iso", "iso2dax": "a.iso", "iso2bin": "a.iso", "iso2iml": "a.iso", "verify": "a.iso",
                 "check-postgap": "a.iso", "info": "a.iso", "list": "a.iso", "extract": "a.iso", "cso2iso": "b.cso",
                 "dax2iso": "c.dax", "bin2iso": "d.bin", "iml2iso": "e.iml"}
        for name in set(names.values()):
            self.write(name, psp_image())
            os.chmod(self.path(name), 0)
        os.chmod(self.folder, 0o777)
        before = self.names()
        for command, name in names.items():
            result = self.run_as_ordinary_user(command, name)
            self.assertEqual((result.status, result.out), (1, ""), (command, result))
            self.assertIn(name, result.err)
            self.assertIn("Permission denied", result.err, command)
            self.assertEqual(self.names(), before)

    def test_pipes_are_refused_at_once(self):
        """Without anybody who writes to it, opening a pipe could wait forever, and ignore Ctrl-C."""
        os.mkfifo(self.path("game.iso"))
        for command in "iso2cso", "cso2iso", "iso2bin", "bin2iso", "iso2iml", "iml2iso", "info", "verify", "list", "extract":
            result = self.run_here(command, *(["-o", "out"] if "2" in command else []), "game.iso")
            self.assertEqual((result.status, result.out), (1, ""), result)
            self.assertIn("game.iso", result.err)
            self.assertEqual(self.names(), ["game.iso"])

    def write_image(self, system, volume_sectors):
        """An image of 60 sectors, whose kind depends on its system identifier."""
        image = bytearray(psp_image(60))
        image[32768:32774] = b"\1CD001"
        image[32776:32776 + len(system)] = system
        image[33792:33800] = b"CD-XA001"
        image[32848:32852] = struct.pack("<I", volume_sectors)
        self.write("game.iso", image)
        return bytes(image)

    def test_a_read_only_image(self):
        image = self.write_image(b"PLAYSTATION", 210)
        os.chmod(self.path("game.iso"), 0o444)
        os.chmod(self.folder, 0o777)
        for words in ["check-postgap"], ["add-postgap", "--count", "2"]:
            result = self.run_as_ordinary_user(*words, "game.iso")
            self.assertEqual((result.status, result.out), (1, ""), result)
            self.assertIn("game.iso: Permission denied", result.err)
            self.assertEqual(self.state(), {"game.iso": image})

    @unittest.skipUnless(shutil.which("strace"), "a signal at a chosen moment comes from strace")
    def test_an_interrupted_postgap_is_undone(self):
        """Ctrl-C leaves the image unchanged, or the signal came too late and everything is done."""
        for words, system, moments in ((["check-postgap"], b"PLAYSTATION", {"read": 130, "write": 0}),
                                       (["add-postgap", "--count", "9"], b"PSP GAME", {"read": 130, "write": 0})):
            for call, status in moments.items():
                image = self.write_image(system, 210)
                signal_at = ["strace", "-qq", "-o", os.devnull, "-P", self.path("game.iso"),
                             "-e", "inject=%s:signal=SIGINT:when=1" % call]
                result = run(*words, "game.iso", program=signal_at + COMMAND, cwd=self.folder,
                             env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
                self.assertEqual(result.status, status, (words, call, result))
                if status == 130:
                    self.assertEqual(result.err, "vantrel: interrupted; nothing unfinished was kept\n")
                    self.assertEqual(self.read("game.iso"), image)
                else:
                    self.assertEqual(result.err, "")
                    self.assertGreater(len(self.read("game.iso")), len(image))

    @unittest.skipUnless(os.geteuid() == 0 and shutil.which("lowntfs-3g") and shutil.which("unshare"),
                         "needs to mount a disk that folds cases")
    def test_a_disk_that_ignores_case(self):
        """Files that differ only in case are a failure there, before anything is written, but not on other disks."""
        script = """set -e
            mkfs.ntfs -q -F -f "$1/volume" >&2
            lowntfs-3g -o ignore_case "$1/volume" "$1/disk" || exit 99
            touch "$1/disk/a"; [ -e "$1/disk/A" ]; rm "$1/disk/a"
            status=0; (cd "$1/disk"; shift; "$@") || status=$?
            find "$1/disk" -mindepth 1
            umount "$1/disk"
            exit $status"""
        os.makedirs(self.path("src/DIR"))
        for name in "src/DIR/ONE.TXT", "src/DIR/one.txt":
            self.write(name, name.encode())
        subprocess.run(["genisoimage", "-quiet", "-U", "-sysid", "PSP GAME", "-A", "PSP GAME", "-o", self.path("game.iso"),
                        self.path("src")], check=True, stderr=subprocess.DEVNULL)
        image = bytearray(self.read("game.iso"))
        image[33792:33800] = b"CD-XA001"
        self.write("game.iso", image)
        os.mkdir(self.path("disk"))
        self.write("volume", bytes(8 << 20))
        for words in ["extract", "../game.iso"], ["iso2iml", "../game.iso", "-o", "game.iml", "--extract"]:
            self.assert_done(self.run_here(words[0], "-f", "game.iso", *words[2:]))
            done = subprocess.run(["unshare", "-m", "sh", "-c", script, "sh", self.folder] + COMMAND + words,
                                  capture_output=True, text=True, timeout=60)
            if done.returncode == 99:
                self.skipTest(done.stderr)
            self.assertEqual((done.returncode, done.stdout), (1, ""), done.stderr)
            self.assertIn('\\ONE.TXT" and "', done.stderr)
            self.assertIn("cannot both be extracted: they would be the same file on this disk", done.stderr)

    @unittest.skipUnless(os.path.exists("/dev/full"), "needs a device that is always full")
    def test_results_that_cannot_be_written(self):
        self.write("game.iso", psp_image())
        for words in ["iso2cso", "game.iso"], ["info", "game.cso"], ["verify", "--json", "game.cso"], ["--help"]:
            with open("/dev/full", "wb") as full:
                done = subprocess.run(COMMAND + words, cwd=self.folder, stdout=full, stderr=subprocess.PIPE, text=True)
            self.assertEqual((done.returncode, done.stderr),
                             (1, "vantrel: cannot write the results: No space left on device\n"), words)


if __name__ == "__main__":
    unittest.main()
