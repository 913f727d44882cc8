"""Times two commands in turn in one run, so that a noisy machine disturbs both alike, and gives their ratio."""
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


def compare(title, ours, reference, limit, rounds=7):
    """Prints best and median times of both and the ratio of the best ones; true when it is within the limit."""
    times = [(timed(ours), timed(reference)) for _ in range(rounds)]
    best = [min(column) for column in zip(*times)]
    median = [statistics.median(column) for column in zip(*times)]
    ratio = best[0] / best[1]
    print("%-44s %7.3f s (median %.3f)  reference %7.3f s (median %.3f)  ratio %.2f  limit %.2f  %s"
          % (title, best[0], median[0], best[1], median[1], ratio, limit, "ok" if ratio <= limit else "OVER"))
    return ratio <= limit


def peak_memory(command):
    """Largest resident size in KiB."""
    done = subprocess.run(["/usr/bin/time", "-f", "%M"] + command, check=True, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True)
    return int(done.stderr.split()[-1])


def scratch_folder():
    """A folder in memory where there is one, so that the disk is not what is measured."""
    return tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
