#!/usr/bin/env python3
"""Tells which lines of the rooms were run, and which conditions were true and false, by programs of the coverage build.

    coverage.py measure BUILD RESULT          counts what the profiles in BUILD/profiles tell, and removes them
    coverage.py table RESULT...               lines and branches of each room, one pair of columns for each result
    coverage.py missing RESULT [FOLDER...]    every line that has not run, and every condition that was never true or false,
                                              except those that tests/uncovered names with a reason

What the compiler evaluates, conditions that are constants, and values that no case of a switch has do not count.
"""
import collections
import glob
import json
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LEFT_OUT = {"tests", "fuzz", "bench", "resources"}
REASONS = os.path.join(ROOT, "tests", "uncovered")


def measure(build, result):
    """For each source: how often each line ran, and how often each condition was true and false."""
    profiles = glob.glob(os.path.join(build, "profiles", "*.profraw"))
    merged = os.path.join(build, "merged.profdata")
    subprocess.run(["llvm-profdata", "merge", "--sparse", "-o", merged, *profiles], check=True)
    programs = [path for path in glob.glob(os.path.join(build, "bin", "*")) if os.access(path, os.X_OK)]
    objects = [word for path in programs[1:] for word in ("-object", path)]
    exported = subprocess.run(["llvm-cov", "export", "--instr-profile", merged, programs[0], *objects],
                              capture_output=True, check=True).stdout
    ours = set(subprocess.run(["git", "-C", ROOT, "ls-files"], capture_output=True, text=True, check=True).stdout.split())
    sources = {}
    for file in json.loads(exported)["data"][0]["files"]:
        path = os.path.relpath(file["filename"], ROOT)
        if path in ours and path.split(os.sep)[0] not in LEFT_OUT:
            sources[path] = counts_of(path, file)
    with open(result, "w", encoding="utf-8") as file:
        json.dump(sources, file)
    for path in profiles:
        os.remove(path)


def counts_of(path, file):
    """Counts by line, and of each condition: [line, column, end line, end column, times true, times false]."""
    with open(os.path.join(ROOT, path), encoding="utf-8") as source:
        text = source.read().splitlines()
    counted = {line: count for line, count in lines(file["segments"]).items()
               if line <= len(text) and text[line - 1].strip(" }") and not is_evaluated_by_compiler(text, line)}
    return {"lines": counted, "branches": [branch for branch in branches(file["branches"])
                                           if branch[0] in counted and not is_no_condition(text, branch)]}


def is_evaluated_by_compiler(text, line):
    """Whether the line is in a constexpr function at the left margin."""
    while line > 1 and not re.match(r"\w.*\) .*\{$|\}", text[line - 1]):
        line -= 1
    return text[line - 1].startswith("constexpr ")


def is_no_condition(text, branch):
    """Whether this is a constant, a condition of the compiler, or the value of a switch."""
    line = text[branch[0] - 1]
    condition = line[branch[1] - 1:branch[3] - 1]
    return condition == "true" or "if constexpr (" in line or "switch (%s)" % condition in line


def lines(segments):
    """The largest count of the regions on each line. A segment reaches to the next one."""
    counts = {}
    for (line, _, count, is_counted, _, is_gap), following in zip(segments, segments[1:]):
        if is_counted and not is_gap:
            for number in range(line, following[0] + (following[1] > 1)):
                counts[number] = max(count, counts.get(number, 0))
    return counts


def branches(found):
    """The copies of a template are added."""
    counts = collections.defaultdict(lambda: [0, 0])
    for branch in found:
        both = counts[tuple(branch[:4])]
        both[0] += branch[4]
        both[1] += branch[5]
    return [[*place, *both] for place, both in sorted(counts.items())]


def load(result):
    with open(result, encoding="utf-8") as file:
        return json.load(file)


def share(counts):
    reached, total = sum(1 for count in counts if count), len(counts)
    return "%6d %5.1f %%" % (total, 100 * reached / max(total, 1))


def table(results):
    loaded = [load(result) for result in results]
    names = [os.path.splitext(os.path.basename(result))[0] for result in results]
    print("%-10s" % "room" + "".join("  %14s %14s" % (name + " lines", "branches") for name in names))
    for room in sorted({path.split(os.sep)[0] for sources in loaded for path in sources}):
        row = "%-10s" % room
        for sources in loaded:
            files = [file for path, file in sources.items() if path.split(os.sep)[0] == room]
            row += "  %s %s" % (share([count for file in files for count in file["lines"].values()]),
                                share([count for file in files for branch in file["branches"] for count in branch[4:]]))
        print(row)


def missing(result, folders):
    """Fails if there is anything."""
    named = reasons()
    printed = False
    for path, file in sorted(load(result).items()):
        if folders and not any(path.startswith(folder.rstrip("/") + "/") or path == folder for folder in folders):
            continue
        with open(os.path.join(ROOT, path), encoding="utf-8") as source:
            text = source.read().splitlines()
        found = [(int(line), "never run: " + text[int(line) - 1].strip()) for line, count in file["lines"].items() if not count]
        for line, column, end_line, end_column, times_true, times_false in file["branches"]:
            if file["lines"][str(line)] and not (times_true and times_false):
                condition = text[line - 1][column - 1:end_column - 1 if end_line == line else None]
                found.append((line, "never %s: %s" % ("false" if times_true else "true", condition)))
        for line, what in sorted(found):
            if "%s: %s" % (path, what) not in named:
                printed = True
                print("%s:%d: %s" % (path, line, what))
        reached = {name for name in named if name.startswith(path + ": ")} - {"%s: %s" % (path, what) for _, what in found}
        for name in sorted(reached):
            printed = True
            print("needs no reason any more: " + name)
    return 1 if printed else 0


def reasons():
    """The lines of tests/uncovered that are no comments: what needs not be reached. The comment above tells why."""
    named = set()
    for path in glob.glob(os.path.join(REASONS, "*.txt")):
        with open(path, encoding="utf-8") as file:
            named.update(line.rstrip() for line in file if line.strip() and not line.startswith("#"))
    return named


def main():
    action, arguments = sys.argv[1], sys.argv[2:]
    if action == "measure":
        measure(os.path.abspath(arguments[0]), arguments[1])
    elif action == "table":
        table(arguments)
    else:
        return missing(arguments[0], arguments[1:])
    return 0


if __name__ == "__main__":
    sys.exit(main())
