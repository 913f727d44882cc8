"""What holds for every conversion: a full disk, an interrupt or a closed pipe leave the folder as it was."""
import os
import pty
import random
import resource
import select
import shutil
import signal
import subprocess
import time
import unittest

from support import COMMAND, ConsoleTest, interrupted, psp_image

SIXTEEN_MEGABYTES = 8192


class Guarantees(ConsoleTest):
    def write_large(self):
        self.write("game.iso", psp_image(SIXTEEN_MEGABYTES))
        self.write("game.cso", b"older")

    def test_interrupts_at_random_moments(self):
        self.write_large()
        before = self.state()
        stopped = 0
        for round_number in range(100):
            seconds = random.Random(round_number).uniform(0.005, 0.25)
            number = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)[round_number % 3]
            result = interrupted(["iso2cso", "-f", "game.iso"], self.folder, seconds, number)
            if result.status == 128 + number:
                self.assertEqual(result.err, "vantrel: interrupted; nothing unfinished was kept\n")
                stopped += 1
            else:
                # The signal came before the program listens or when all was done.
                self.assertIn(result.status, (0, -number), result)
                if result.status == 0:
                    self.write("game.cso", b"older")
            self.assertEqual(self.state(), before)
        self.assertGreater(stopped, 25)

    def test_an_interrupt_is_obeyed_within_a_second(self):
        self.write("game.iso", psp_image(4 * SIXTEEN_MEGABYTES))
        process = subprocess.Popen(COMMAND + ["iso2cso", "game.iso"], cwd=self.folder, stderr=subprocess.DEVNULL)
        time.sleep(0.3)
        start = time.monotonic()
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(10), 130)
        self.assertLess(time.monotonic() - start, 1.0)
        self.assertEqual(self.names(), ["game.iso"])

    def test_a_file_that_may_not_grow(self):
        self.write_large()
        before = self.state()
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))
        result = self.run_here("iso2cso", "-f", "game.iso", preexec_fn=limit)
        self.assertEqual(result.status, 1, result)
        self.assertIn("Write error", result.err)
        self.assertEqual(self.state(), before)

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
        self.assertIn("Write error", done.stderr)

    @unittest.skipUnless(os.geteuid() == 0 and shutil.which("unshare"), "needs a file system of its own")
    def test_a_read_only_folder(self):
        """A mount stops root as well, which permissions do not."""
        script = """mount --bind "$1" "$1" && mount -o remount,ro,bind "$1" || exit 99
            cd "$1" && exec "$2" iso2cso game.iso"""
        self.write("game.iso", psp_image())
        done = subprocess.run(["unshare", "-m", "sh", "-c", script, "sh", self.folder, COMMAND[0]],
                              capture_output=True, text=True, timeout=60)
        if done.returncode == 99:
            self.skipTest(done.stderr)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, "vantrel iso2cso: Code 10010g - Error create game.cso "
                                      "(game.cso: Read-only file system)\n")
        self.assertEqual(self.names(), ["game.iso"])

    @unittest.skipIf(os.geteuid() == 0, "permissions do not stop root")
    def test_a_folder_without_permission(self):
        self.write("game.iso", psp_image())
        os.chmod(self.folder, 0o555)
        self.addCleanup(os.chmod, self.folder, 0o755)
        result = self.run_here("iso2cso", "game.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("Code 10010g - Error create game.cso (game.cso: Permission denied)", result.err)

    def test_a_terminal_gets_a_progress_line_and_a_pipe_does_not(self):
        self.write_large()
        result = self.run_here("iso2cso", "-f", "game.iso")
        self.assertEqual((result.status, result.err), (0, ""))
        leader, follower = pty.openpty()
        process = subprocess.Popen(COMMAND + ["iso2cso", "-f", "game.iso"], cwd=self.folder, stderr=follower,
                                   stdout=subprocess.DEVNULL, env={**os.environ, "TERM": "xterm"})
        os.close(follower)
        shown = b""
        while select.select([leader], [], [], 30)[0]:
            try:
                shown += os.read(leader, 4096)
            except OSError:
                break
        os.close(leader)
        self.assertEqual(process.wait(30), 0)
        self.assertIn(b"game.iso", shown)
        self.assertIn(b"%", shown)
        self.assertTrue(shown.endswith(b"\r\x1b[K"), "the line is taken away again")


if __name__ == "__main__":
    unittest.main()
