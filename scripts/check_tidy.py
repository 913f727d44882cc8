#!/usr/bin/env python3
"""Runs clang-tidy on the sources of the programs; fails, and names the places, if it finds anything.

    check_tidy.py [--besides OTHER_BUILD_FOLDER] BUILD_FOLDER

Checks the sources that BUILD_FOLDER compiles and OTHER_BUILD_FOLDER does not, except tests, fuzzers and benchmarks. A clean
source is skipped until it, a header of the checkout that it includes, its compile command or .clang-tidy changes.

Most of the time goes into the headers of the system. So sources of a folder are checked together, as one that includes
them; if such a group is not clean, or does not compile because of equal names, its halves are checked.
"""
import argparse
import concurrent.futures
import functools
import hashlib
import itertools
import json
import os
import re
import shlex
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
GROUP = 8  # sources that are checked together
LEFT_OUT = ("tests/", "fuzz/", "bench/", "../")  # "../": libraries that are built from source


def dependencies(build):
    """The headers of the checkout that each source includes, as recorded by the last build."""
    found = {}
    objects = subprocess.run(["ninja", "-C", build, "-t", "deps"], capture_output=True, text=True, check=True).stdout
    for entry in objects.split("\n\n"):
        paths = [os.path.normpath(os.path.join(build, line.strip())) for line in entry.splitlines()[1:]]
        paths = [path for path in paths if path.startswith(ROOT + os.sep) and not path.startswith(build + os.sep)]
        if paths:
            found.setdefault(paths[0], set()).update(paths)
    return found


def entries_of(build):
    """The compile commands of a build by source path, relative to the checkout."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = json.load(file)
    named = {}
    for entry in entries:
        path = os.path.normpath(os.path.join(entry["directory"], entry["file"]))
        named.setdefault(os.path.relpath(path, ROOT), entry)
    return named


@functools.cache
def words_for_system(compiler):
    """The options that make Clang compile like a cross compiler: its target, and its headers except those with processor
    intrinsics, which only GCC understands."""
    if "mingw" not in compiler:
        return []
    told = subprocess.run([compiler, "-xc++", "-E", "-v", os.devnull], capture_output=True, text=True, check=True).stderr
    folders = re.findall(r"(?m)^ (\S+)$", told.split("#include <...>", 1)[1].split("End of", 1)[0])
    wanted = [folder for folder in folders if "c++" in folder or not folder.startswith("/usr/lib/gcc") or "/../" in folder]
    words = ["--target=x86_64-w64-windows-gnu", "-nostdinc++", "-nostdlibinc"]
    return words + [word for folder in wanted for word in ("-isystem", folder)]


def options_of(command):
    """The options of a compile command without precompiled headers and options that only GCC knows."""
    words = shlex.split(command)
    while words[0].endswith("ccache"):
        words.pop(0)
    kept = list(words_for_system(words.pop(0)))
    skip = False
    for word in words[:words.index("-o")]:
        if skip:
            skip = word == "-include"
        elif word == "-include" or word.endswith("cmake_pch.hxx"):
            skip = word == "-include"
        elif word not in ("-Winvalid-pch", "-Wno-restrict", "-Werror"):
            kept.append(word)
    return kept


class Checker:
    def __init__(self, build, others):
        self.stamps = os.path.join(build, "tidy")
        os.makedirs(self.stamps, exist_ok=True)
        self.dependencies = dependencies(build)
        version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
        with open(os.path.join(ROOT, ".clang-tidy"), "rb") as configuration:
            self.common = version + configuration.read()
        self.options = {}
        for source, entry in entries_of(build).items():
            if source.endswith(".cpp") and not source.startswith(LEFT_OUT) and source not in others:
                self.options[source] = options_of(entry["command"])

    def digest(self, source):
        path = os.path.join(ROOT, source)
        total = hashlib.sha256(self.common + json.dumps(self.options[source]).encode())
        for included in sorted(self.dependencies.get(path, {path})):
            with open(included, "rb") as file:
                total.update(file.read())
        return total.hexdigest()

    def stamp(self, source):
        return os.path.join(self.stamps, source.replace(os.sep, "_") + ".clean")

    def is_known_clean(self, source):
        try:
            with open(self.stamp(source), encoding="utf-8") as file:
                return file.read() == self.digest(source)
        except FileNotFoundError:
            return False

    def groups(self, sources):
        """Sources of the same folder and options, the large groups first, so that none runs alone at the end."""
        found = {}
        for source in sources:
            found.setdefault((os.path.dirname(source), *self.options[source]), []).append(source)
        parts = [group[i:i + GROUP] for group in found.values() for i in range(0, len(group), GROUP)]
        return sorted(parts, key=len, reverse=True)

    def words(self, group):
        """The arguments of clang-tidy for a group."""
        path = os.path.join(ROOT, group[0])
        if len(group) > 1:
            path = os.path.join(self.stamps, group[0].replace(os.sep, "_"))
            with open(path, "w", encoding="utf-8") as file:
                for source in group:
                    file.write('#include "%s"  // NOLINT(bugprone-suspicious-include)\n' % os.path.join(ROOT, source))
        return [path, "--", *self.options[group[0]]]

    def check(self, group):
        """The findings as texts; empty if there are none."""
        digests = [self.digest(source) for source in group]
        done = subprocess.run(["clang-tidy", "--quiet", *self.words(group)], capture_output=True, text=True)
        if done.returncode != 0 and len(group) > 1:
            return self.check(group[:len(group) // 2]) + self.check(group[len(group) // 2:])
        if done.returncode != 0:
            return [done.stdout + ("" if done.stdout else done.stderr)]
        for source, digest in zip(group, digests):
            with open(self.stamp(source), "w", encoding="utf-8") as file:
                file.write(digest)
        return []


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--besides")
    parser.add_argument("build", type=os.path.abspath)
    options = parser.parse_args()
    checker = Checker(options.build, entries_of(options.besides) if options.besides else {})
    waiting = [source for source in checker.options if not checker.is_known_clean(source)]
    findings = set()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for text in itertools.chain.from_iterable(pool.map(checker.check, checker.groups(waiting))):
            # Findings in a header are repeated for every source that includes it.
            findings.update(re.findall(r"(?m)^\S.*?: (?:warning|error): .*$", text) or [text])
    for finding in sorted(findings):
        print(finding)
    print(f"{len(checker.options)} sources, {len(waiting)} checked, {len(findings)} findings")
    return 1 if findings or not checker.options else 0


if __name__ == "__main__":
    sys.exit(main())
