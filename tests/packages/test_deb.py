"""The Debian package, installed into a separate root, and its program run there."""
import glob
import gzip
import os
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM = os.environ["VANTREL_PROGRAM"]
SOURCE = os.environ["VANTREL_SOURCE"]
sys.path.insert(0, os.path.join(SOURCE, "tests", "console"))
from support import psp_image  # noqa: E402


class DebianPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.root = os.path.join(cls.scratch.name, "root")
        for folder in "info", "updates", "triggers":
            os.makedirs(os.path.join(cls.root, "var/lib/dpkg", folder))
        open(os.path.join(cls.root, "var/lib/dpkg/status"), "w").close()
        subprocess.run([os.path.join(SOURCE, "scripts/make_packages.sh"), "deb", "5.0.0", PROGRAM, cls.scratch.name],
                       check=True, stdout=subprocess.DEVNULL)
        package, = glob.glob(os.path.join(cls.scratch.name, "*.deb"))
        # The root has no other packages, so the dependencies are those of the host.
        subprocess.run(["dpkg", "--root=" + cls.root, "--force-not-root", "--force-depends", "--force-bad-path",
                        "--log=/dev/null", "--install", package], check=True, capture_output=True)

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def installed(self, path):
        return os.path.join(self.root, path)

    def test_package_fields(self):
        status = subprocess.run(["dpkg", "--root=" + self.root, "-s", "vantrel"], check=True, capture_output=True,
                                text=True).stdout
        self.assertIn("Version: 5.0.0", status)
        for library in "libc6", "libgcc-s1", "zlib1g":
            self.assertRegex(status, r"Depends: .*\b" + library)

    def test_the_program_runs_from_there(self):
        program = self.installed("usr/bin/vantrel")
        version = subprocess.run([program, "--version"], check=True, capture_output=True, text=True).stdout
        self.assertEqual(version, "vantrel 5.0.0\n")
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "game.iso"), "wb") as image:
                image.write(psp_image())
            for words in ["iso2cso", "game.iso"], ["cso2iso", "-o", "new-game.iso", "game.cso"]:
                subprocess.run([program, *words, "-q"], check=True, cwd=folder)
            with open(os.path.join(folder, "new-game.iso"), "rb") as image:
                self.assertEqual(image.read(), psp_image())

    def test_manual_and_completions_are_installed(self):
        with gzip.open(self.installed("usr/share/man/man1/vantrel.1.gz"), "rt") as page:
            self.assertIn("iso2cso", page.read())
        for path in ("bash-completion/completions/vantrel", "zsh/vendor-completions/_vantrel",
                     "fish/vendor_completions.d/vantrel.fish", "doc/vantrel/copyright"):
            self.assertGreater(os.path.getsize(self.installed("usr/share/" + path)), 100, path)

    def test_links_of_the_readme_lead_to_documents(self):
        folder = self.installed("usr/share/doc/vantrel")
        with open(os.path.join(folder, "README.md"), encoding="utf-8") as file:
            links = re.findall(r"\]\(([^):#]+)\)", file.read())
        self.assertGreater(len(links), 10)
        for link in links:
            self.assertTrue(os.path.exists(os.path.join(folder, link)), link)


if __name__ == "__main__":
    unittest.main()
