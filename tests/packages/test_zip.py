"""The zip for Windows: both programs run from an empty folder. Needs a display and Wine."""
import glob
import os
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

PROGRAMS = os.path.dirname(os.environ["VANTREL_PROGRAM"])
SOURCE = os.environ["VANTREL_SOURCE"]
sys.path.insert(0, os.path.join(SOURCE, "tests", "console"))
from support import psp_image  # noqa: E402


class WindowsZip(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        subprocess.run([os.path.join(SOURCE, "scripts/make_packages.sh"), "zip", "5.0.0", PROGRAMS, cls.scratch.name],
                       check=True, stdout=subprocess.DEVNULL)
        archive, = glob.glob(os.path.join(cls.scratch.name, "*.zip"))
        with zipfile.ZipFile(archive) as file:
            cls.names = file.namelist()
            file.extractall(cls.scratch.name)
        cls.folder = archive[:-len(".zip")]

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def test_content(self):
        for name in "quorn_vantrel.exe", "vantrel.exe", "README.md", "LICENSE", "CHANGELOG.md", "docs/formats/cso.md":
            self.assertIn(os.path.basename(self.folder) + "/" + name, self.names)

    def test_the_console_program_runs(self):
        with open(os.path.join(self.folder, "game.iso"), "wb") as image:
            image.write(psp_image())
        for words in ["iso2cso", "game.iso"], ["cso2iso", "-o", "new-game.iso", "game.cso"]:
            subprocess.run(["wine", os.path.join(self.folder, "vantrel.exe"), *words, "-q"], check=True,
                           cwd=self.folder, timeout=60)
        with open(os.path.join(self.folder, "new-game.iso"), "rb") as image:
            self.assertEqual(image.read(), psp_image())

    def test_the_window_opens_and_closes(self):
        process = subprocess.Popen(["wine", os.path.join(self.folder, "quorn_vantrel.exe")], cwd=self.folder)
        found = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "quorn_vantrel_v5.0"],
                               capture_output=True, text=True, timeout=60)
        window = found.stdout.split()[0]
        deadline = time.monotonic() + 60
        while process.poll() is None and time.monotonic() < deadline:
            subprocess.run(["xdotool", "windowfocus", window, "key", "Escape"], stderr=subprocess.DEVNULL)
            time.sleep(0.2)
        self.assertEqual(process.wait(1), 0)
        self.assertIn("Success.wav", os.listdir(self.folder))


if __name__ == "__main__":
    unittest.main()
