"""The image that the benchmarks convert: the mark of a PSP title, then text, noise and zeros in equal parts."""
import random


def write_image(path, megabytes):
    source = random.Random(7)
    words = [bytes(source.choices(range(97, 123), k=source.randint(2, 9))) + b" " for _ in range(500)]
    with open(path, "wb") as image:
        head = bytearray(40 * 2048)
        head[32768:32774] = b"\x01CD001"
        head[33342:33345] = b"PSP"
        image.write(head)
        while image.tell() < megabytes << 20:
            image.write(b"".join(source.choices(words, k=3000))[:12 * 2048].ljust(12 * 2048))
            image.write(source.randbytes(12 * 2048))
            image.write(bytes(12 * 2048))
        image.truncate(megabytes << 20)
