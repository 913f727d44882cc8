"""The summary at the end of ./check, of a log as ctest writes it."""
import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import test_summary

LOG = """Start testing: Nov 22 08:00 UTC
----------------------------------------------------------
1/3 Testing: native.first
1/3 Test: native.first
Output:
----------------------------------------------------------
setUpClass (__main__.Fat) ... skipped "mount: unknown file system 'vfat'."
test_one (__main__.Exfat.test_one)
A disk. ... skipped 'needs root'
test_two (__main__.Exfat.test_two) ... skipped 'needs root'
<end of output>
2/3 Testing: native.second
Output:
old failure
<end of output>
2/3 Testing: native.second
Output:
line 1
line 2
<end of output>
3/3 Testing: native.third
Output:
it passes, and nothing is skipped here
<end of output>
"""


class Summary(unittest.TestCase):
    def summary_of(self, failed):
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "LastTest.log").write_text(LOG, encoding="utf-8")
            if failed:
                Path(folder, "LastTestsFailed.log").write_text(failed, encoding="utf-8")
            with contextlib.redirect_stdout(io.StringIO()) as printed:
                test_summary.report(Path(folder))
        return printed.getvalue()

    def test_skipped_tests_with_their_reasons(self):
        self.assertEqual(self.summary_of(""), "\nSkipped tests: 3\n"
                                              "  native.first: 1: mount: unknown file system 'vfat'.\n"
                                              "  native.first: 2: needs root\n")

    def test_output_of_the_last_run_of_what_failed(self):
        self.assertIn("\nEnd of the output of native.second:\nOutput:\nline 1\nline 2\n<end of output>\n",
                      self.summary_of("2:native.second\n"))
        self.assertNotIn("old failure", self.summary_of("2:native.second\n"))
        self.assertNotIn("it passes", self.summary_of("2:native.second\n"))


if __name__ == "__main__":
    unittest.main()
