#!/usr/bin/env python3
"""Prints how many lines of each top-level folder were run by programs of a build with "--coverage".

    coverage.py BUILD_FOLDER
"""
import collections
import json
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LEFT_OUT = {"tests", "fuzz", "bench", ".."}  # "..": libraries


def counted_lines(build):
    """How often each line of each source was run, by path in the checkout; all copies of inline code are added."""
    notes = [os.path.join(folder, name) for folder, _, names in os.walk(build) for name in names
             if name.endswith(".gcno")]
    lines = collections.defaultdict(collections.Counter)
    for note in notes:
        printed = subprocess.run(["gcov", "--stdout", "--json-format", note], cwd=build, capture_output=True, text=True,
                                 check=True).stdout
        for document in printed.splitlines():
            for source in json.loads(document)["files"]:
                path = os.path.relpath(os.path.join(build, source["file"]), ROOT)
                for line in source["lines"]:
                    lines[path][line["line_number"]] += line["count"]
    return lines


def main():
    counts = collections.defaultdict(list)
    for path, counter in counted_lines(os.path.abspath(sys.argv[1])).items():
        counts[path.split(os.sep)[0]] += counter.values()
    for folder in sorted(counts.keys() - LEFT_OUT):
        reached, total = sum(1 for count in counts[folder] if count), len(counts[folder])
        print("%-10s %5d of %5d lines, %3d %%" % (folder, reached, total, 100 * reached // max(total, 1)))


if __name__ == "__main__":
    main()
