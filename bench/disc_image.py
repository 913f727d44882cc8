"""Disc images of any length for the benchmarks: an ISO 9660 file system with a few large files in its root directory."""
import random

SECTOR = 2048
MEBIBYTE = 1 << 20
NOISE = [random.Random(seed).randbytes(MEBIBYTE) for seed in range(5)]
FIRST_FILE = 32  # first sector of the files
MAX_FILE_BYTES = 1 << 30


def both(value, size=4):
    return value.to_bytes(size, "little") + value.to_bytes(size, "big")


def record(name, sector, size, flags=0):
    fixed = bytes(1) + both(sector) + both(size) + bytes(7) + bytes([flags, 0, 0]) + both(1, 2) + bytes([len(name)])
    whole = fixed + name + bytes(1 - len(name) % 2)
    return bytes([len(whole) + 1]) + whole


def split(size):
    """The lengths of the files that hold `size` bytes together."""
    return [min(MAX_FILE_BYTES, size - start) for start in range(0, size, MAX_FILE_BYTES)]


def write_content(file, size, sparse):
    """Writes incompressible noise, or a hole."""
    if sparse:
        file.truncate(file.tell() + size)
        file.seek(0, 2)
        return
    for start in range(0, size, MEBIBYTE):
        file.write(NOISE[start // MEBIBYTE % len(NOISE)][:size - start])


def write_disc(path, size, sparse, application=b"PSP GAME"):
    """Writes an image of `size` bytes, which are whole sectors. The application identifier determines the medium."""
    lengths = split(size - FIRST_FILE * SECTOR)
    records = record(b"\0", 20, SECTOR, 2) + record(b"\1", 20, SECTOR, 2)
    sector = FIRST_FILE
    for i, length in enumerate(lengths):
        records += record(b"F%d.BIN;1" % i, sector, length)
        sector += length // SECTOR
    volume = bytearray(SECTOR)
    volume[0:8] = b"\1CD001\1\0"
    volume[8:40] = b"PLAYSTATION".ljust(32)
    volume[80:88] = both(size // SECTOR)
    volume[128:132] = both(SECTOR, 2)
    volume[132:140] = both(10)
    volume[140:144] = (18).to_bytes(4, "little")
    volume[156:190] = record(b"\0", 20, SECTOR, 2)
    volume[574:702] = application.ljust(128)
    volume[1024:1032] = b"CD-XA001" if application.startswith(b"PLA") else bytes(8)
    with open(path, "wb") as image:
        image.seek(16 * SECTOR)
        image.write(volume + b"\xFFCD001\1".ljust(SECTOR, b"\0"))
        image.write(b"\1\0\x14\0\0\0\1\0\0\0".ljust(2 * SECTOR, b"\0"))
        image.write(records.ljust((FIRST_FILE - 20) * SECTOR, b"\0"))
        write_content(image, size - FIRST_FILE * SECTOR, sparse)
