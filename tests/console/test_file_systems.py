"""File systems without unnamed files and without renaming that never replaces: NTFS by FUSE has hard links, exFAT by FUSE
and FAT by the kernel have none. The tests of kills run there, too, and leftovers of a dead process are removed beside a
living one. Mounting needs root; whatever this machine cannot mount is skipped with the reason."""
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import test_kill
from support import COMMAND, psp_image


def call(*words):
    """Runs a tool. Skips the tests of the class if it fails."""
    done = subprocess.run(words, capture_output=True, text=True)
    if done.returncode != 0:
        raise unittest.SkipTest("%s: %s" % (words[0], (done.stderr + done.stdout).strip()))
    return done.stdout.strip()


class Disk:
    """A disk of 128 MiB for each class of tests, with a folder for each test."""
    moments = 10

    @classmethod
    def setUpClass(cls):
        if os.geteuid() != 0 or "VANTREL_OWN_MOUNTS" not in os.environ:
            raise unittest.SkipTest("needs root and unshare to mount disks")
        for tool in "losetup", cls.make[0], cls.mount[0]:
            if shutil.which(tool) is None:
                raise unittest.SkipTest("needs " + tool)
        place = tempfile.mkdtemp(prefix="vantrel-disk-")
        cls.addClassCleanup(shutil.rmtree, place, ignore_errors=True)
        volume, cls.disk = os.path.join(place, "volume"), os.path.join(place, "disk")
        os.mkdir(cls.disk)
        with open(volume, "wb") as file:
            file.truncate(128 << 20)
        device = call("losetup", "--find", "--show", volume)
        try:
            call(*cls.make, device)
            call(*cls.mount, device, cls.disk)
        finally:
            subprocess.run(["losetup", "--detach", device], check=False)  # as soon as the disk is not mounted any more
        cls.addClassCleanup(subprocess.run, ["umount", "--lazy", cls.disk], check=False)

    def setUp(self):
        super().setUp()
        self.outside = self.folder
        self.folder = tempfile.mkdtemp(prefix="test-", dir=self.disk)
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def test_the_system_lacks_unnamed_files(self):
        with self.assertRaises(OSError):
            os.open(self.folder, os.O_TMPFILE | os.O_RDWR)

    def leaves_nothing(self, words):
        return False

    def is_held(self, name):
        """Whether its process has locked it: it does so before it writes anything else."""
        path = self.path(name)
        return os.path.isdir(os.path.join(path, "staged")) if os.path.isdir(path) else os.path.getsize(path) > 0

    def start(self, words, output, others):
        """Starts a process that makes an output, and stops it while it holds something that `others` does not name.
        Returns both."""
        for _ in range(100):
            process = subprocess.Popen(COMMAND + words, cwd=self.folder, stdout=subprocess.DEVNULL)
            self.addCleanup(process.wait)
            self.addCleanup(process.kill)
            while process.poll() is None:
                process.send_signal(signal.SIGSTOP)
                for name in set(self.left()) - set(others):
                    if self.is_held(name):
                        return process, name
                process.send_signal(signal.SIGCONT)
                time.sleep(0.001)
            self.remove(output)  # it has ended between two looks
        self.fail("%s ended each time before it was seen" % words)

    def remove(self, name):
        path = self.path(name)
        shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)

    def check_leftovers(self, words, target, image):
        """`target` returns the words for an output of this name."""
        living, of_living = self.start([*words, *target("living"), image], "living", [])
        dead, of_dead = self.start([*words, *target("dead"), image], "dead", [of_living])
        dead.kill()
        dead.wait()
        self.assertEqual(set(self.left()), {of_living, of_dead})
        self.assert_done(self.run_here(*words, *target("next"), "small.iso"))
        self.assertEqual(self.left(), [of_living])
        living.send_signal(signal.SIGCONT)
        self.assertEqual(living.wait(60), 0)
        self.assertEqual(self.left(), [])
        self.assertEqual(self.names(), ["living", "next", "small.iso"])

    def test_leftovers_of_a_dead_process_beside_a_living_one(self):
        image = os.path.join(self.outside, "game.iso")
        self.write(image, psp_image(8000))
        self.write("small.iso", psp_image(40))
        self.check_leftovers(["iso2cso", "-j", "1"], lambda name: ["-o", name], image)
        self.assert_done(self.run_here("convert", "--to", "iso", "living", "-o", "again"))
        self.assertEqual(self.read("again"), self.read(image))

    def test_folders_of_a_dead_process_beside_a_living_one(self):
        image = os.path.join(self.outside, "game.iso")
        content = os.urandom(24 << 20)
        self.write(image, self.game({"LARGE.BIN": content}))
        self.write("small.iso", self.game({}))
        self.check_leftovers(["extract"], lambda name: ["-C", name], image)
        self.assertEqual(self.read("living/LARGE.BIN"), content)


class Ntfs(Disk, test_kill.Kill):
    make, mount = ["mkfs.ntfs", "--quick", "--quiet"], ["lowntfs-3g"]


class Exfat(Disk, test_kill.Kill):
    make, mount = ["mkfs.exfat"], ["mount.exfat-fuse"]


class Fat(Disk, test_kill.Kill):
    make, mount = ["mkfs.vfat"], ["mount", "-t", "vfat"]


if __name__ == "__main__":
    if os.geteuid() == 0 and shutil.which("unshare") and "VANTREL_OWN_MOUNTS" not in os.environ:
        # The disks are mounted for this process only, and not any more when it ends.
        os.environ["VANTREL_OWN_MOUNTS"] = "1"
        os.execvp("unshare", ["unshare", "-m", sys.executable] + sys.argv)
    unittest.main()
