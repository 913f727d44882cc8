#!/usr/bin/env python3
"""Reads the log of ctest and prints what a long run hides: which tests were skipped and why, and the output of those that
failed.

    test_summary.py LOG_FOLDER
"""
import re
import sys
from collections import Counter
from pathlib import Path

# As Python's unittest and run_window_test.sh report it.
SKIPPED = re.compile(r"""\bskipped (['"])(.*)\1$""")
TEST = re.compile(r"^\d+/\d+ Testing: (.*)$")
LINES_OF_A_FAILURE = 60


def outputs(log):
    """The lines of the last run of each test, by its name."""
    found, name = {}, None
    for line in log.splitlines():
        start = TEST.match(line)
        if start:
            name = start[1]
            found[name] = []
        elif name is not None:
            found[name].append(line)
    return found


def report(folder):
    found = outputs((folder / "LastTest.log").read_text(encoding="utf-8", errors="replace"))
    skipped = Counter((name, match[2]) for name, lines in found.items() for match in map(SKIPPED.search, lines) if match)
    print("\nSkipped tests: %d" % skipped.total())
    for (name, reason), count in sorted(skipped.items()):
        print("  %s: %d: %s" % (name, count, reason.replace("\\n", " ")))
    failures = folder / "LastTestsFailed.log"
    for line in failures.read_text(encoding="utf-8").splitlines() if failures.exists() else ():
        name = line.partition(":")[2]
        print("\nEnd of the output of %s:" % name)
        print("\n".join(found.get(name, [])[-LINES_OF_A_FAILURE:]))


if __name__ == "__main__":
    report(Path(sys.argv[1]))
