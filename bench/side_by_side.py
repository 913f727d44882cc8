"""Measures two commands alternately, so that other load on the machine affects both alike, and prints their ratio."""
import math
import os
import statistics
import subprocess
import tempfile
import time

BIN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "build", "native", "bin")


def program(name):
    return os.path.abspath(os.path.join(BIN, name))


def timed(command):
    start = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return time.monotonic() - start


def compare(title, ours, reference, limit=math.inf, rounds=7):
    """Prints the best and median times of both and the ratio of the best times. Returns whether it is within the limit."""
    times = [(timed(ours), timed(reference)) for _ in range(rounds)]
    best = [min(column) for column in zip(*times)]
    median = [statistics.median(column) for column in zip(*times)]
    ratio = best[0] / best[1]
    print("%-44s %7.3f s (median %.3f)  reference %7.3f s (median %.3f)  ratio %.2f  limit %.2f  %s"
          % (title, best[0], median[0], best[1], median[1], ratio, limit, "ok" if ratio <= limit else "OVER"))
    return ratio <= limit


def compare_jobs(title, ours, reference, limit, copied=None, rounds=5):
    """Compares `ours` with one and with two jobs to the reference on one core. The limit applies to the reference time
    divided by the jobs, or to that of copying `copied` if it is longer. Returns whether all are within."""
    copy = ["cp", copied, copied + ".copy"] if copied else ["true"]
    commands = [ours + ["-j", "1"], ours + ["-j", "2"], reference, copy]
    times = [[timed(command) for command in commands] for _ in range(rounds)]
    best = [min(column) for column in zip(*times)]
    median = [statistics.median(column) for column in zip(*times)]
    good = True
    for jobs in 1, 2:
        share = best[2] / jobs
        within = best[jobs - 1] <= limit * max(share, best[3] if copied else 0)
        print("%-30s -j %d %7.3f s (median %.3f)  reference / %d %7.3f s (median %.3f)%s  ratio %.2f  limit %.2f  %s"
              % (title, jobs, best[jobs - 1], median[jobs - 1], jobs, share, median[2] / jobs,
                 "  cp %.3f s" % best[3] if copied else "", best[jobs - 1] / share, limit, "ok" if within else "OVER"))
        good &= within
    return good


def memory_within(program, words, jobs, blocks):
    """Prints the peak memory of a conversion. Returns whether it is at most 64 MiB plus 8 bytes per block."""
    peak = peak_memory([program] + words + ["-j", str(jobs)])
    limit = blocks * 8 // 1024 + (64 << 10)
    print("%s -j %d of %d blocks: peak %d KiB, 64 MiB + 8 bytes per block = %d KiB  %s"
          % (words[0], jobs, blocks, peak, limit, "ok" if peak <= limit else "OVER"))
    return peak <= limit


def peak_memory(command):
    """Peak resident size in KiB."""
    done = subprocess.run(["/usr/bin/time", "-f", "%M"] + command, check=True, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True)
    return int(done.stderr.split()[-1])


def scratch_folder():
    """A folder in memory if the system has one, so that the disk does not affect the results."""
    return tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
