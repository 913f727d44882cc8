"""The program on a terminal and in a session: progress line, control characters, signals, closed pipes."""
import fcntl
import os
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import termios
import time
import unicodedata
import unittest

from support import COMMAND, ConsoleTest, psp_image

ERASE = "\r\x1b[K"


def columns(text):
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


class Terminal(ConsoleTest):
    def on_terminal(self, *words, sizes=(80,), stdout=True):
        """Runs the program on a terminal that changes its number of columns, and returns what it shows. The sizes take
        turns, one for each line that is drawn."""
        leader, follower = pty.openpty()
        resize = lambda width: fcntl.ioctl(leader, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
        resize(sizes[0])
        process = subprocess.Popen(COMMAND + [str(word) for word in words], cwd=self.folder, stderr=follower,
                                   stdout=follower if stdout else subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                                   env={**os.environ, "TERM": "xterm"})
        os.close(follower)
        shown = b""
        while select.select([leader], [], [], 30)[0]:
            try:
                shown += os.read(leader, 4096)
            except OSError:
                break
            resize(sizes[shown.count(ERASE.encode()) % len(sizes)])
        os.close(leader)
        return process.wait(30), shown.decode("utf-8", "surrogateescape")

    def test_a_terminal_gets_a_progress_line_and_a_pipe_does_not(self):
        self.write("game.iso", psp_image(8192))
        self.assert_done(self.run_here("iso2cso", "game.iso"))
        status, shown = self.on_terminal("iso2cso", "-f", "game.iso", stdout=False)
        self.assertEqual(status, 0)
        self.assertRegex(shown, r"game\.iso .*%")
        self.assertTrue(shown.endswith(ERASE), "the line is removed at the end")

    def test_the_progress_line_fits_the_terminal(self):
        for name in ("game", "x" * 200, "\u30b2\u30fc\u30e0" * 20, "cafe\u0301 " * 20):
            name += ".iso"
            self.write(name, psp_image(8192))
            for width in 20, 21, 40, 80, 200:
                status, shown = self.on_terminal("iso2cso", "-f", name, sizes=(width,), stdout=False)
                self.assertEqual(status, 0)
                self.assertTrue(shown.endswith(ERASE), shown)
                lines = [line for line in shown.split(ERASE) if line]
                self.assertTrue(lines)
                for line in lines:
                    self.assertLess(columns(line), width, line)
                    self.assertRegex(line, r" [0-9]+%")
                    self.assertNotIn("\n", line)
            os.remove(self.path(name))

    def test_the_progress_of_a_sheet_counts_its_data_track(self):
        """The sheet itself has less than a hundred bytes."""
        units = {"bytes": 1, "kB": 1000, "MB": 1_000_000}
        size = 1 << 27
        self.write("track.img", b"")
        os.truncate(self.path("track.img"), size)
        self.write("game.cue", b'FILE track.img BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n')
        _, shown = self.on_terminal("verify", "game.cue", stdout=False)
        drawn = re.findall(r"game\.cue +([0-9]+)%  ([0-9.]+) (bytes|kB|MB)", shown)
        self.assertGreater(int(drawn[-1][0]), 10, shown)
        for percent, done, unit in drawn:
            self.assertAlmostEqual(float(done) * units[unit], int(percent) * size / 100, delta=size / 100)

    def test_the_progress_line_follows_a_resize(self):
        self.write("a rather long name of a game.iso", psp_image(4 * 8192))
        self.write("a rather long name of a game.cso", b"")
        _, shown = self.on_terminal("iso2cso", "-f", "a rather long name of a game.iso", sizes=(120, 20), stdout=False)
        widths = [columns(line) for line in shown.split(ERASE) if line]
        self.assertGreater(max(widths), 20)
        self.assertLess(min(widths), 20)

    def test_names_do_not_control_the_terminal(self):
        name = "a\x1b[31m\u009b31m.iso"
        escaped = "a\\x1B[31m\\xC2\\x9B31m."
        self.write(name, psp_image())
        for words, expected in ((["iso2cso", name], escaped + "iso -> " + escaped + "cso: "), (["iso2cso", name], escaped),
                                (["info", "missing" + name], "missing" + escaped), (["iso2cso", "-f", "missing" + name], escaped)):
            _, shown = self.on_terminal(*words)
            self.assertIn(expected, shown)
            self.assertNotIn("\x1b[31m", shown)
            self.assertNotIn("\u009b", shown)
        # A pipe gets the names as they are.
        self.assertIn(name, self.run_here("iso2cso", "-f", name).out)

    def test_names_in_an_image_do_not_control_the_terminal(self):
        os.mkdir(self.path("src"))
        self.write("src/GAMEFILE.BIN", b"x")
        subprocess.run(["genisoimage", "-quiet", "-V", "GAME", "-o", self.path("game.iso"), self.path("src")], check=True,
                       stderr=subprocess.DEVNULL)
        image = self.read("game.iso").replace(b"GAMEFILE.BIN", b"GA\x1b[31mE.BIN")
        self.write("game.iso", image[:33342] + b"PSP" + image[33345:])
        for words in ["list", "game.iso"], ["verify", "game.iso"], ["extract", "game.iso"]:
            _, shown = self.on_terminal(*words)
            self.assertNotIn("\x1b[31m", shown, words)
        self.assertIn("GA\\x1B[31mE.BIN", self.on_terminal("list", "game.iso")[1])
        self.assertIn("GA\x1b[31mE.BIN", self.run_here("list", "game.iso").out)

    def test_an_ignored_signal_stays_ignored(self):
        """nohup, and shells for programs in the background, ignore signals before they start the program."""
        self.write("game.iso", psp_image(8192))
        for number in signal.SIGHUP, signal.SIGINT:
            process = subprocess.Popen(COMMAND + ["iso2cso", "-f", "game.iso"], cwd=self.folder,
                                       preexec_fn=lambda: signal.signal(number, signal.SIG_IGN), stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE)
            while process.poll() is None:
                process.send_signal(number)
                time.sleep(0.01)
            self.assertEqual((process.wait(), process.communicate()[1]), (0, b""))

    @unittest.skipUnless(shutil.which("nohup"), "needs nohup")
    def test_nohup(self):
        self.write("game.iso", psp_image(8192))
        process = subprocess.Popen(["nohup"] + COMMAND + ["iso2cso", "-q", "game.iso"], cwd=self.folder,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
        time.sleep(0.1)
        process.send_signal(signal.SIGHUP)
        self.assertEqual(process.wait(30), 0)

    def test_a_closed_pipe_is_silent(self):
        self.write("game.iso", psp_image())
        self.write("other.iso", psp_image())
        self.assert_done(self.run_here("iso2dax", "game.iso"))
        for words in (["--help"], ["info", "game.dax"], ["verify", "--json", "game.dax"],
                      ["iso2cso", "game.iso", "other.iso"]):
            reader, writer = os.pipe()
            os.close(reader)
            done = subprocess.run(COMMAND + words, cwd=self.folder, stdout=writer, stderr=subprocess.PIPE, text=True)
            os.close(writer)
            self.assertEqual((done.returncode, done.stderr), (141, ""), words)
        self.assertEqual(self.names(), ["game.cso", "game.dax", "game.iso", "other.iso"])

    def test_replacing_keeps_permissions_and_links(self):
        self.write("game.iso", psp_image())
        self.write("real.cso", b"older")
        os.chmod(self.path("real.cso"), 0o640)
        os.symlink("real.cso", self.path("game.cso"))
        self.assert_done(self.run_here("iso2cso", "-f", "game.iso"))
        self.assertTrue(os.path.islink(self.path("game.cso")))
        self.assertEqual(self.read("real.cso")[:4], b"CISO")
        self.assertEqual(os.stat(self.path("real.cso")).st_mode & 0o777, 0o640)
        self.assertEqual(self.names(), ["game.cso", "game.iso", "real.cso"])


if __name__ == "__main__":
    unittest.main()
