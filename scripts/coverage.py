#!/usr/bin/env python3
"""Tells which lines and branches of the rooms were run by programs of a build with "--coverage".

    coverage.py measure BUILD_FOLDER RESULT   counts what has run since the counters were deleted
    coverage.py table RESULT...               lines and branches of each room, one pair of columns for each result
    coverage.py missing RESULT [FOLDER...]    every line and branch that has not run

Branches to the handling of exceptions, which the compiler adds to most calls, do not count.
"""
import collections
import json
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LEFT_OUT = {"tests", "fuzz", "bench", "build", ".."}  # "..": libraries


def measure(build, result):
    """Counts of each line of each source, and of its branches; all copies of inline code are added."""
    notes = [os.path.join(folder, name) for folder, _, names in os.walk(build) for name in names
             if name.endswith(".gcno")]
    sources = collections.defaultdict(dict)
    for note in notes:
        printed = subprocess.run(["gcov", "--stdout", "--json-format", "--branch-probabilities", note], cwd=build,
                                 capture_output=True, text=True, check=True).stdout
        for document in printed.splitlines():
            for source in json.loads(document)["files"]:
                path = os.path.relpath(os.path.join(build, source["file"]), ROOT)
                if path.split(os.sep)[0] not in LEFT_OUT:
                    add(sources[path], source["lines"])
    with open(result, "w", encoding="utf-8") as file:
        json.dump(sources, file)


def add(counts, lines):
    for line in lines:
        ran, branches = counts.get(str(line["line_number"]), (0, []))
        taken = [branch["count"] for branch in line["branches"] if not branch["throw"]]
        if len(taken) == len(branches):
            taken = [a + b for a, b in zip(taken, branches)]
        elif len(taken) < len(branches):
            taken = branches
        counts[str(line["line_number"])] = (ran + line["count"], taken)


def load(result):
    with open(result, encoding="utf-8") as file:
        return json.load(file)


def share(counts):
    reached, total = sum(1 for count in counts if count), len(counts)
    return "%6d %3d %%" % (total, 100 * reached // max(total, 1))


def table(results):
    loaded = [load(result) for result in results]
    names = [os.path.splitext(os.path.basename(result))[0] for result in results]
    print("%-10s" % "room" + "".join("  %12s %12s" % (name + " lines", "branches") for name in names))
    for room in sorted({path.split(os.sep)[0] for sources in loaded for path in sources}):
        row = "%-10s" % room
        for sources in loaded:
            lines = [line for path, counts in sources.items() if path.split(os.sep)[0] == room for line in counts.values()]
            row += "  %s %s" % (share([ran for ran, _ in lines]), share([count for _, taken in lines for count in taken]))
        print(row)


def missing(result, folders):
    for path, counts in sorted(load(result).items()):
        if folders and not any(path.startswith(folder.rstrip("/") + "/") or path == folder for folder in folders):
            continue
        with open(os.path.join(ROOT, path), encoding="utf-8") as file:
            text = file.read().splitlines()
        for number, (ran, taken) in sorted(counts.items(), key=lambda item: int(item[0])):
            if not ran or 0 in taken:
                what = "line" if not ran else "%d of %d branches" % (taken.count(0), len(taken))
                print("%s:%s: %s: %s" % (path, number, what, text[int(number) - 1].strip()))


def main():
    action, arguments = sys.argv[1], sys.argv[2:]
    if action == "measure":
        measure(os.path.abspath(arguments[0]), arguments[1])
    elif action == "table":
        table(arguments)
    else:
        missing(arguments[0], arguments[1:])


if __name__ == "__main__":
    main()
