"""The images that the benchmarks convert: the mark of a PSP title, then text, noise and zeros in equal parts, or programs."""
import os
import random


def head():
    bytes_ = bytearray(40 * 2048)
    bytes_[32768:32774] = b"\x01CD001"
    bytes_[33342:33345] = b"PSP"
    return bytes_


def write_image(path, megabytes):
    source = random.Random(7)
    words = [bytes(source.choices(range(97, 123), k=source.randint(2, 9))) + b" " for _ in range(500)]
    with open(path, "wb") as image:
        image.write(head())
        while image.tell() < megabytes << 20:
            image.write(b"".join(source.choices(words, k=3000))[:12 * 2048].ljust(12 * 2048))
            image.write(source.randbytes(12 * 2048))
            image.write(bytes(12 * 2048))
        image.truncate(megabytes << 20)


def write_image_of_programs(path, megabytes, folder="/usr/bin"):
    """Real content, which takes longer to compress than made-up words."""
    with open(path, "wb") as image:
        image.write(head())
        while image.tell() < megabytes << 20:
            for name in sorted(os.listdir(folder)):
                program = os.path.join(folder, name)
                if os.path.isfile(program) and not os.path.islink(program) and image.tell() < megabytes << 20:
                    with open(program, "rb") as file:
                        image.write(file.read())
                    image.write(bytes(-image.tell() % 2048))
        image.truncate(megabytes << 20)
