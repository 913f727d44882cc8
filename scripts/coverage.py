#!/usr/bin/env python3
"""Prints which part of the lines of every room was run by programs of a build with "--coverage".

    coverage.py BUILD_FOLDER ROOM...
"""
import collections
import json
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def counted_lines(build):
    """How often each line of each source was run, by path below the checkout; inlined lines add up."""
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
    build, rooms = os.path.abspath(sys.argv[1]), sys.argv[2:]
    lines = counted_lines(build)
    for room in rooms:
        counts = [count for path, counter in lines.items() if path.startswith(room + "/") for count in counter.values()]
        reached = sum(1 for count in counts if count)
        print("%-10s %5d of %5d lines, %3d %%" % (room, reached, len(counts), 100 * reached // max(len(counts), 1)))


if __name__ == "__main__":
    main()
