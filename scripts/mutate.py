#!/usr/bin/env python3
"""Changes one operator, number or statement of the engine at a time, and tells which changes no test notices.

    mutate.py [--count N] [--seed N] [--list] [FOLDER|FILE...]     the default is every room that the native build compiles

Works on a copy of the checkout in build/mutate, which is built as the native one is. For each change, unit tests and those
of the console program are built and run natively, except those that take minutes, until one fails: first those of the
changed room. Files that a changed program writes are limited. A change that does not compile is replaced by another. The
same seed chooses the same changes of the same sources.
"""
import argparse
import concurrent.futures
import glob
import json
import os
import random
import re
import resource
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WORK = os.path.join(ROOT, "build", "mutate")
COPY = os.path.join(WORK, "source")
BUILD = os.path.join(WORK, "native")  # the last part of the path is the prefix of the console tests
ROOMS = ("operation", "pipeline", "files", "iso", "iml", "raw", "compress", "image", "app", "console")
LEFT_OUT = ("kill", "limits", "file_systems", "lz4_size_test")
MOST_FILE_BYTES = 10 << 30

# Patterns and replacements. clang-format puts blanks around binary operators, and none into templates.
SWAPS = [(" < ", " <= "), (" <= ", " < "), (" > ", " >= "), (" >= ", " > "), (" == ", " != "), (" != ", " == "),
         (" + ", " - "), (" - ", " + "), (" * ", " / "), (" / ", " * "), (" % ", " / "), (" && ", " || "),
         (" || ", " && "), (" += ", " -= "), (" -= ", " += "), (" | ", " & "), (" & ", " | "), (" << ", " >> "),
         (" >> ", " << "), ("++", "--"), ("--", "++"), ("true", "false"), ("false", "true"), ("continue;", "break;"),
         ("std::min(", "std::max("), ("std::max(", "std::min(")]
NEGATION = re.compile(r"(?<![\w)])!(?=[\w(])")
NUMBER = re.compile(r"(?<![\w.\"'])\d[\d']*(?=[UL]*\b)(?!\.)")
CONDITION = re.compile(r"\b(if|while) \(")
STATEMENT = re.compile(r"^\s+(?!return|break|continue|case|using|throw|const |static |default)[\w:.\->*\[\]]+(\(| [-+|&]?= ).*;$")
SKIPPED = re.compile(r"^\s*(//|#|static_assert|namespace|using|template|\})")


def code_of(line):
    """The line without its comment, and with the characters of texts replaced by blanks."""
    line = re.sub(r"\s+//.*$", "", line)
    return re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])+\'', lambda text: " " * len(text.group()), line)


def changes_of(line):
    """Every line that one change makes of this one."""
    if SKIPPED.match(line):
        return
    code = code_of(line)
    for old, new in SWAPS:
        for found in re.finditer(re.escape(old), code):
            yield line[:found.start()] + new + line[found.end():]
    for found in NEGATION.finditer(code):
        yield line[:found.start()] + line[found.end():]
    for found in NUMBER.finditer(code):
        digits = found.group().replace("'", "")
        if len(digits) < 2 or digits[0] != "0":
            for step in (1, -1):
                yield line[:found.start()] + str(int(digits) + step) + line[found.end():]
    for found in CONDITION.finditer(code):
        yield line[:found.end()] + "!(" + line[found.end():].replace(") {", ")) {", 1)
    if STATEMENT.match(code):
        yield "\n"


def candidates(paths):
    """(path, line number from 0, new line) of every possible change."""
    found = []
    for path in paths:
        with open(os.path.join(ROOT, path), encoding="utf-8") as file:
            for number, line in enumerate(file):
                found += [(path, number, change) for change in changes_of(line) if change != line]
    return found


def sources(folders):
    """The sources that the native build compiles, and their headers."""
    with open(os.path.join(BUILD, "compile_commands.json"), encoding="utf-8") as file:
        compiled = {os.path.relpath(entry["file"], COPY) for entry in json.load(file)}
    listed = subprocess.run(["git", "-C", ROOT, "ls-files", *(folders or ROOMS)], capture_output=True, text=True,
                            check=True).stdout.split()
    return [path for path in listed if path in compiled or path.endswith(".h") and path[:-2] + ".cpp" in compiled]


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, text=True,
                          check=False, **options)


def build(targets=("all",)):
    return run(["cmake", "--build", BUILD, "--target", *targets])


def prepare():
    os.makedirs(WORK, exist_ok=True)
    files = subprocess.run(["git", "-C", ROOT, "ls-files", "-z"], capture_output=True, check=True).stdout
    # With new dates, so that what an interrupted run has compiled is compiled again.
    subprocess.run(["rsync", "--archive", "--no-times", "--checksum", "--from0", "--files-from=-", ROOT + "/", COPY],
                   input=files, check=True)
    done = run(["cmake", "--preset", "native", "-B", BUILD, "-Wno-dev", "-D", "VANTREL_BENCH=OFF"], cwd=COPY)
    if done.returncode == 0:
        done = build()
    if done.returncode != 0:
        sys.exit("The unchanged sources do not build:\n" + done.stdout[-3000:])


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_FILE_BYTES, MOST_FILE_BYTES))


def console_tests():
    """Runs the tests of the console program until one fails; its name, or nothing if all pass."""
    left_out = "|".join(r"\.%s$" % name for name in LEFT_OUT)
    done = run(["ctest", "--test-dir", BUILD, "-R", r"native\.console\.", "-E", left_out, "-j", str(os.cpu_count()),
                "--timeout", "300", "--stop-on-failure"], preexec_fn=limit_files)
    failed = re.search(r"(?m)^\s*\d+ - (\S+).* \((?!Passed)", done.stdout)
    return failed.group(1) if failed else None if done.returncode == 0 else "ctest"


class UnitTests:
    """The unit test programs, and how long each of them takes."""

    def __init__(self):
        found = glob.glob(os.path.join(BUILD, "bin", "*_test"))
        self.seconds = {path: 0.0 for path in sorted(found) if os.path.basename(path) not in LEFT_OUT}
        self.running = set()

    def failing(self, path):
        """The first test of a program that fails, or nothing. A program that takes much longer than before never ends."""
        limit = 30 + 10 * self.seconds[path] if self.seconds[path] else 600
        start = time.monotonic()
        with subprocess.Popen([path, "--gtest_fail_fast", "--gtest_brief=1"], stdout=subprocess.PIPE, text=True,
                              stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, preexec_fn=limit_files) as process:
            self.running.add(process)
            try:
                output = process.communicate(timeout=limit)[0]
            except subprocess.TimeoutExpired:
                process.kill()
                return os.path.basename(path) + " (never ends)"
            finally:
                self.running.remove(process)
        if process.returncode == 0:
            self.seconds[path] = time.monotonic() - start
            return None
        failed = re.search(r"(?m)^\[  FAILED  \] ([^ ,]+)", output)
        return os.path.basename(path) + "." + (failed.group(1) if failed else "(ends)")

    def first_failing(self, paths):
        """The first test of these programs that fails, or nothing. The short ones go first."""
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            results = [pool.submit(self.failing, path) for path in sorted(paths, key=self.seconds.get)]
            for result in concurrent.futures.as_completed(results):
                if result.result():
                    pool.shutdown(wait=False, cancel_futures=True)
                    for process in tuple(self.running):
                        process.kill()
                    return result.result()
        return None

    def noticing(self, room):
        """'broken' if the changed room does not compile, else the test that notices the change, or nothing."""
        own = [path for path in self.seconds if os.path.basename(path).startswith(room)]
        if build([os.path.basename(path) for path in own]).returncode != 0:
            return "broken"
        failed = self.first_failing(own)
        if failed:
            return failed
        if build().returncode != 0:
            return "broken"
        return self.first_failing(set(self.seconds) - set(own)) or console_tests()


def attempt(unit_tests, path, number, change):
    """What notices the change of one line; see noticing."""
    target = os.path.join(COPY, path)
    with open(target, encoding="utf-8") as file:
        original = file.readlines()
    try:
        with open(target, "w", encoding="utf-8") as file:
            file.writelines(original[:number] + [change] + original[number + 1:])
        return unit_tests.noticing(path.split("/")[0])
    finally:
        with open(target, "w", encoding="utf-8") as file:
            file.writelines(original)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=20, help="changes to try (20)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--list", action="store_true", help="print the chosen changes and try none")
    parser.add_argument("paths", nargs="*")
    options = parser.parse_args()
    prepare()
    unit_tests = UnitTests()
    failed = None if options.list else unit_tests.noticing("")
    if failed:
        sys.exit("The unchanged sources fail " + failed)
    chosen = candidates(sources(options.paths))
    random.Random(options.seed).shuffle(chosen)
    tried = survived = 0
    for path, number, change in chosen:
        if tried == options.count:
            break
        with open(os.path.join(ROOT, path), encoding="utf-8") as file:
            line = file.readlines()[number].strip()
        what = "%s:%d: %s  ->  %s" % (path, number + 1, line, change.strip() or "(removed)")
        result = "listed" if options.list else attempt(unit_tests, path, number, change)
        if result == "broken":
            continue
        tried += 1
        survived += result is None
        print("%s  %s" % ("SURVIVED" if result is None else result, what), flush=True)
    if not options.list:
        print("%d of %d changes were noticed" % (tried - survived, tried))
    return 1 if survived else 0


if __name__ == "__main__":
    sys.exit(main())
