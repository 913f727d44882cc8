"""./check repeats its tests when something has changed or they failed, and else says that nothing has changed. A checkout of
its own, whose build and ctest do nothing, stands for the real one."""
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class Check(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.checkout = Path(folder.name, "checkout")
        self.tools = Path(folder.name, "tools")
        (self.checkout / "scripts").mkdir(parents=True)
        self.tools.mkdir()
        shutil.copy(ROOT / "check", self.checkout)
        (self.checkout / "scripts/setup.sh").write_text("install_packages() { :; }\nbuild_preset() { :; }\n")
        (self.checkout / ".gitignore").write_text("build/\n")
        (self.checkout / "source").write_text("1\n")
        for words in (["init", "-q"], ["add", "."]):
            subprocess.run(["git", *words], cwd=self.checkout, check=True)
        self.ctest(0)

    def ctest(self, status):
        """What the stand-in for ctest returns from now on."""
        script = self.tools / "ctest"
        script.write_text("#!/bin/sh\necho tests run\nexit %d\n" % status)
        script.chmod(0o755)

    def runs(self, *words, status=0):
        """Whether ./check runs the tests."""
        done = subprocess.run(["./check", *words], cwd=self.checkout, capture_output=True, text=True, check=False,
                              env={**os.environ, "PATH": "%s:%s" % (self.tools, os.environ["PATH"])})
        self.assertEqual(done.returncode, status, done.stderr)
        self.assertNotEqual("tests run" in done.stdout, "Nothing has changed" in done.stdout, done.stdout)
        return "tests run" in done.stdout

    def test_passed_tests_are_repeated_when_a_file_has_changed(self):
        self.assertTrue(self.runs())
        self.assertFalse(self.runs())
        (self.checkout / "source").write_text("2\n")
        self.assertTrue(self.runs())
        self.assertFalse(self.runs())
        (self.checkout / "added").write_text("")
        self.assertTrue(self.runs())

    def test_failed_tests_are_repeated(self):
        self.ctest(8)
        self.assertTrue(self.runs(status=8))
        self.ctest(0)
        self.assertTrue(self.runs())
        self.assertFalse(self.runs())

    def test_on_request(self):
        self.assertTrue(self.runs("-R", "some"))
        self.assertTrue(self.runs(), "some tests are not all")
        self.assertTrue(self.runs("--again"))
        self.assertTrue(self.runs("-R", "some"))
        self.assertFalse(self.runs())

    def test_without_a_checkout(self):
        shutil.rmtree(self.checkout / ".git")
        self.assertTrue(self.runs())
        self.assertTrue(self.runs())


if __name__ == "__main__":
    unittest.main()
