"""Killed processes: at any moment a folder holds what it held before or the complete output, and whatever else is left is
removed, undone or completed by the same command run again."""
import contextlib
import os
import random
import shutil
import subprocess
import tempfile
import time
import unittest

from support import COMMAND, IS_WINDOWS, ConsoleTest, psp_image, was_not_started

# Words of commands that may leave something for the next run: several outputs, an older one, changes in place.
LEAVES_SOMETHING = {"iso2bin", "bin", "extract", "iso2iml", "-f", "add-postgap", "check-postgap", "--in-place"}


def ps2_image(sectors, volume):
    image = bytearray(psp_image(sectors))
    image[32768:32774] = b"\1CD001"
    image[32776:32787] = b"PLAYSTATION"
    image[33342:33345] = b"PLA"
    image[33792:33800] = b"CD-XA001"
    image[32848:32852] = volume.to_bytes(4, "little")
    return bytes(image)


def is_ours(name):
    return name.startswith(".vantrel-") or name.endswith(".vantrel-undo")


class Kill(ConsoleTest):
    # For each command. Small images keep the whole test short; more moments: VANTREL_KILLS=2000.
    moments = int(os.environ.get("VANTREL_KILLS", 50 if IS_WINDOWS else 200))

    def leaves_nothing(self, words):
        # On Windows, a file may be left that was created but not yet marked for removal.
        return not IS_WINDOWS and not LEAVES_SOMETHING & set(words)

    def reset(self, files):
        for name in os.listdir(self.folder):
            path = self.path(name)
            if os.path.isdir(path):
                shutil.rmtree(path)
            else:
                os.remove(path)
        for name, content in files.items():
            os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
            self.write(name, content)

    def known(self):
        """All files except ours. Layouts have their date in them, and gap files the checksum of the layout."""
        found = {}
        for folder, folders, files in os.walk(self.folder):
            folders[:] = [name for name in folders if not is_ours(name)]
            for name in files:
                path = os.path.join(folder, name)
                if not is_ours(name):
                    with open(path, "rb") as file:
                        content = file.read()
                    found[os.path.relpath(path, self.folder)] = (
                        len(content) if name.endswith((".iml", ".gaps")) else content)
        return found

    def left(self):
        """What is left of ours. Wine removes the files of a killed process a moment after its end."""
        for _ in range(50 if IS_WINDOWS else 1):
            names = [name for name in os.listdir(self.folder) if is_ours(name)]
            if not names:
                break
            time.sleep(0.02)
        return names

    def kill_after(self, words, seconds):
        """Returns whether the process was still running."""
        process = subprocess.Popen(COMMAND + words, cwd=self.folder, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        try:
            process.wait(seconds)
            return False
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
            return True

    def check(self, words, files, changes_again=False):
        """`changes_again`: whether the command changes its own result when it is run again."""
        self.reset(files)
        before = self.known()
        start = time.monotonic()
        self.assert_done(self.run_here(*words))
        duration = time.monotonic() - start
        after = self.known()
        self.assertNotEqual(before, after)
        moments = random.Random(" ".join(words))
        killed = done = 0
        # The first run can take longer than all others; then more moments are needed to meet one.
        while done < self.moments or (killed == 0 and done < 50 * self.moments):
            done += 1
            self.reset(files)
            killed += self.kill_after(words, moments.uniform(0, duration))
            left = self.left()
            if self.leaves_nothing(words):
                self.assertEqual(left, [], words)
            if not left:
                self.assertIn(self.known(), (before, after), words)
            if left or (moments.random() < 0.1 and not changes_again):
                again = self.run_here(*words)
                self.assertTrue(again.status == 0 or "already" in again.err, again)
                self.assertEqual((self.known(), self.left()), (after, []), words)
        self.assertGreater(killed, 0, "%s ended each time before it was killed" % words)

    def converted(self, *words, image=None):
        """The files that a command makes of an image, without the image."""
        self.reset({"game.iso": image or psp_image(200)})
        self.assert_done(self.run_here(*words, "game.iso"))
        os.remove(self.path("game.iso"))
        state = self.files_below("")
        self.reset({})
        return state

    def test_new_outputs(self):
        image = {"game.iso": psp_image(200)}
        self.check(["iso2cso", "-j", "2", "game.iso"], image)
        self.check(["iso2dax", "game.iso"], image)
        self.check(["cso2iso", "game.cso"], self.converted("iso2cso"))
        self.check(["dax2iso", "game.dax"], self.converted("iso2dax"))

    def test_new_outputs_of_playstation_images(self):
        image = {"game.iso": ps2_image(210, 210)}
        self.check(["iso2bin", "game.iso"], image)
        self.check(["convert", "--to", "zso", "game.iso"], image)
        self.check(["convert", "--to", "bin", "game.iso"], image)
        self.check(["convert", "--verify", "--to", "dax", "game.iso"], image)
        self.check(["bin2iso", "game.bin"], self.converted("iso2bin", image=image["game.iso"]))

    def test_replaced_outputs(self):
        image = {"game.iso": psp_image(200)}
        self.check(["iso2cso", "-f", "game.iso"], {**image, "game.cso": b"older"})
        self.check(["iso2bin", "-f", "game.iso"], {"game.iso": ps2_image(210, 210), "game.bin": b"older",
                                                   "game.cue": b"older"})

    def test_changes_in_place(self):
        self.check(["check-postgap", "game.iso"], {"game.iso": ps2_image(60, 210)})
        self.check(["add-postgap", "--count", "9", "game.iso"], {"game.iso": ps2_image(60, 60)}, changes_again=True)
        files = {"game.iso": self.game()}
        for size in 100, 100_000:
            self.check(["replace", "--in-place", "game.iso", "SYSTEM.CNF=new"], {**files, "new": b"n" * size})

    def test_replaced_files_of_a_copy(self):
        files = {"game.iso": self.game(), "new": b"n" * 100_000}
        self.check(["replace", "game.iso", "SYSTEM.CNF=new", "-o", "new.iso"], files)
        self.check(["replace", "-f", "game.iso", "SYSTEM.CNF=new", "-o", "new.iso"], {**files, "new.iso": b"older"})

    def test_rebuilds(self):
        files = self.converted("iso2iml", "--extract", image=self.game())
        self.check(["iml2iso", "game.iml"], files)
        self.check(["iml2iso", "-f", "game.iml"], {**files, "game.iso": b"older"})

    def game(self, further=None):
        """An image with files."""
        if shutil.which("genisoimage") is None:
            self.skipTest("needs genisoimage")
        files = {"DIR/FILE%d.BIN" % i: os.urandom(3000) for i in range(20)}
        files["SYSTEM.CNF"] = b"BOOT2 = cdrom0:\\A;1\r\n"
        with tempfile.TemporaryDirectory() as folder:
            os.mkdir(os.path.join(folder, "DIR"))
            for name, content in {**files, **(further or {})}.items():
                self.write(os.path.join(folder, name), content)
            done = subprocess.run(["genisoimage", "-quiet", "-sysid", "PLAYSTATION", "-A", "PLAYSTATION", folder],
                                  check=True, capture_output=True)
        image = bytearray(done.stdout)
        image[33792:33800] = b"CD-XA001"
        return bytes(image)

    def test_folders(self):
        files = {"game.iso": self.game()}
        self.check(["extract", "game.iso", "-C", "files"], files)
        self.check(["extract", "-f", "game.iso"], {**files, "SYSTEM.CNF": b"older"})
        self.check(["iso2iml", "game.iso"], files)
        self.check(["iso2iml", "game.iso", "--extract", "files"], files)

    def test_a_batch_keeps_what_was_complete(self):
        images = {"%d.iso" % i: psp_image(100, seed=i) for i in range(8)}
        self.reset(images)
        words = ["iso2cso", "--output-dir", "out"] + sorted(images)
        start = time.monotonic()
        self.assert_done(self.run_here(*words, "-q"))
        duration = time.monotonic() - start
        complete = self.known()
        for moment in range(20):
            self.reset(images)
            self.kill_after(words, duration * moment / 20)
            found = self.known()
            self.assertEqual({name: complete[name] for name in found}, found)
            if self.leaves_nothing(words):
                self.assertEqual(self.left(), [])

    def test_twenty_processes_at_once(self):
        """On one output, one of them is done; on one image in place, the image is changed once."""
        self.reset({"game.iso": psp_image(200)})
        self.assertEqual(sorted(self.at_once(["iso2cso", "game.iso"])), [0] + [1] * 19)
        self.assertEqual(self.names(), ["game.cso", "game.iso"])
        self.reset({"game.iso": psp_image(200), "game.cso": b"older"})
        statuses = self.at_once(["iso2cso", "-f", "game.iso"])
        self.assertIn(0, statuses)
        if not IS_WINDOWS:  # Windows refuses to replace a file that another process is replacing
            self.assertEqual(statuses, [0] * 20)
        self.assertEqual(self.names(), ["game.cso", "game.iso"])
        self.assert_done(self.run_here("cso2iso", "-o", "again.iso", "game.cso"))
        self.assertEqual(self.read("again.iso"), self.read("game.iso"))
        self.reset({"game.iso": ps2_image(60, 210)})
        self.assertIn(0, self.at_once(["check-postgap", "game.iso"]))
        self.assertEqual(self.names(), ["game.iso"])
        self.assertEqual(len(self.read("game.iso")), 210 * 2048)
        self.reset({"game.iso": ps2_image(210, 210)})
        self.assertEqual(sorted(self.at_once(["iso2bin", "game.iso"])), [0] + [1] * 19)
        self.assertEqual(self.names(), ["game.bin", "game.cue", "game.iso"])

    def test_processes_beside_each_other(self):
        """Outputs that wait for others of their process are no leftovers to another process in the same folder."""
        images = ["%d.iso" % i for i in range(20)]
        for _ in range(5):
            self.reset({name: ps2_image(210, 210) for name in images})
            statuses = self.at_once(*(["iso2bin", name] for name in images))
            self.assertEqual(statuses, [0] * 20, self.errors)
            outputs = ["%d.%s" % (i, form) for i in range(20) for form in ("bin", "cue")]
            self.assertEqual(self.names(), sorted(images + outputs), self.errors)

    def at_once(self, *commands):
        """The statuses of these commands, or of one that is run twenty times. Keeps what they print as errors."""
        commands *= 20 // len(commands)
        with contextlib.ExitStack() as stack:
            outputs = [stack.enter_context(tempfile.TemporaryFile()) for _ in commands]
            processes = [subprocess.Popen(COMMAND + words, cwd=self.folder, stdout=output, stderr=output)
                         for words, output in zip(commands, outputs)]
            statuses = [process.wait(60) for process in processes]
            for output in outputs:
                output.seek(0)
            self.errors = [output.read() for output in outputs]
        for i, words in enumerate(commands):
            if was_not_started(statuses[i], self.errors[i]):
                statuses[i] = self.run_here(*words).status
        return statuses


if __name__ == "__main__":
    unittest.main()
