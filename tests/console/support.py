"""Support for the tests of the console program: running it, temporary folders, small images of PSP titles.

The program under test is named by the environment variable VANTREL_PROGRAM; an .exe is run under Wine.
"""
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

# The second implementations of the formats.
sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "oracle"))

PROGRAM = os.environ.get("VANTREL_PROGRAM", "build/native/bin/vantrel")
IS_WINDOWS = PROGRAM.endswith(".exe")
NOBODY = 65534
COMMAND = (["wine"] if IS_WINDOWS else []) + [os.path.abspath(PROGRAM)]


class Result:
    def __init__(self, status, out, err):
        self.status, self.out, self.err = status, out, err

    def __repr__(self):
        return "status %d\n--- out\n%s--- err\n%s" % (self.status, self.out, self.err)


def was_not_started(status, printed):
    """One of thousands of programs ends under Wine with status 1 before its first instruction. Ours always says why."""
    return IS_WINDOWS and status == 1 and not printed


def run(*words, program=COMMAND, timeout=120, **options):
    """Runs the program with its output piped. The text is UTF-8 with "\\n" as line ends."""
    def start():
        return subprocess.run(program + [str(word) for word in words], capture_output=True, timeout=timeout,
                              stdin=subprocess.DEVNULL, **options)
    done = start()
    if was_not_started(done.returncode, done.stdout + done.stderr):
        done = start()
    text = [stream.decode("utf-8", "surrogateescape").replace("\r\n", "\n") for stream in (done.stdout, done.stderr)]
    return Result(done.returncode, *text)


class ConsoleTest(unittest.TestCase):
    """Every test has a temporary folder, which is the current folder of the program."""
    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="vantrel-console-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def run_here(self, *words, **options):
        return run(*words, cwd=self.folder, **options)

    def run_as_ordinary_user(self, *words):
        """Runs the program as another user if this is root, whom permissions do not stop; with a copy of the program."""
        if os.geteuid() != 0:
            return self.run_here(*words)
        with tempfile.TemporaryDirectory(prefix="vantrel-program-") as place:
            os.chmod(place, 0o755)
            program = shutil.copy(COMMAND[0], place)
            return run(*words, program=[program], cwd=self.folder, user=NOBODY, group=NOBODY, extra_groups=[])

    def peak_memory(self, *words):
        """Runs the program, which must succeed, and returns the most memory that it had, in bytes."""
        # In a process of its own, because a child begins with the memory of its parent.
        measure = ("import resource, subprocess, sys\n"
                   "status = subprocess.call(sys.argv[1:], stdout=subprocess.DEVNULL)\n"
                   "print(status, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
        out = subprocess.run([sys.executable, "-c", measure, *COMMAND, *words], cwd=self.folder, check=True,
                             capture_output=True).stdout
        status, kibibytes = map(int, out.split())
        self.assertEqual(status, 0)
        return kibibytes << 10

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def names(self):
        return sorted(os.listdir(self.folder))

    def files_below(self, folder):
        """The contents of all files in a folder and its folders, by paths with slashes."""
        root = self.path(folder)
        return {os.path.relpath(os.path.join(place, name), root).replace(os.sep, "/"): self.read(os.path.join(place, name))
                for place, _, names in os.walk(root) for name in names}

    def state(self):
        """The contents of all files in the folder, for comparison."""
        return {name: self.read(name) for name in self.names() if os.path.isfile(self.path(name))}

    def check_truncated_images(self, compress, expand, name):
        """A truncated image is converted in full, with a notice that counts its whole sectors."""
        image = bytearray(psp_image(40))
        image[32769:32774] = b"CD001"
        for sectors, length, notice in (
                (40, 81920, ""), (39, 81920, ""),
                (41, 81920, "game.iso is truncated: it has 40 sectors, its volume descriptor says 41\n"),
                (40, 81919, "game.iso is truncated: it has 39 sectors, its volume descriptor says 40\n")):
            image[32848:32852] = sectors.to_bytes(4, "little")
            self.write("game.iso", image[:length])
            result = self.run_here(compress, "-f", "game.iso")
            self.assert_done(result)
            self.assertEqual(result.out.split("game.iso -> ")[0], notice)
            self.assert_done(self.run_here(expand, "-f", "-o", "new-game.iso", name))
            self.assertEqual(self.read("new-game.iso"), image[:length])

    def assert_done(self, result):
        self.assertEqual(result.status, 0, result)
        self.assertEqual(result.err, "", result)


def limited_threads(stack):
    """For preexec_fn: limits the address space to 512 MiB and the stack of each thread to so many MiB, so that only few
    threads or none can be started."""
    import resource
    resource.setrlimit(resource.RLIMIT_STACK, (stack << 20, resource.RLIM_INFINITY))
    resource.setrlimit(resource.RLIMIT_AS, (1 << 29, 1 << 29))


def psp_image(sectors=40, seed=1):
    """An image with the mark of a PSP title, half random data and half text."""
    source = random.Random(seed)
    image = bytearray()
    while len(image) < sectors * 2048:
        image += source.randbytes(2048) if len(image) // 2048 % 2 else b"a few words again " * 113 + bytes(14)
    image = image[:sectors * 2048]
    image[33342:33345] = b"PSP"
    return bytes(image)


def interrupted(words, folder, seconds, number=signal.SIGINT):
    """Starts the program, sends a signal after so many seconds, and returns the result."""
    process = subprocess.Popen(COMMAND + [str(word) for word in words], cwd=folder, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    try:
        process.wait(seconds)
    except subprocess.TimeoutExpired:
        process.send_signal(number)
    out, err = process.communicate(timeout=60)
    return Result(process.returncode, out.decode(), err.decode())
