#!/usr/bin/env python3
"""A second implementation of raw CD sectors after ECMA-130 and CD-ROM XA: the EDC by a byte table, P and Q by division by
the generator polynomial of the codes.

usage: raw_reference.py expand 1|2 POSTGAP_SECTORS IMAGE RAW
"""
import struct
import sys

FIELD = 0x11D


def edc_table():
    table = []
    for byte in range(256):
        for _ in range(8):
            byte = byte >> 1 ^ (0xD8018001 if byte & 1 else 0)
        table.append(byte)
    return table


EDC = edc_table()


def edc(data):
    value = 0
    for byte in data:
        value = value >> 8 ^ EDC[(value ^ byte) & 0xFF]
    return struct.pack("<I", value)


def times_two(value):
    value <<= 1
    return value ^ FIELD if value & 0x100 else value


TWO = [times_two(value) for value in range(256)]
THREE = [two ^ value for value, two in enumerate(TWO)]


def parity(symbols):
    """The remainder by (x + 1)(x + 2) = x^2 + 3x + 2 of the symbols, shifted by two places."""
    first = second = 0
    for symbol in symbols:
        feedback = symbol ^ first
        first, second = second ^ THREE[feedback], TWO[feedback]
    return first, second


def add_parity(area):
    """Appends P and Q to the 2064 bytes of the area."""
    area += bytes(172 + 104)
    for half in 0, 1:
        for column in range(43):
            first, second = parity(area[2 * (43 * row + column) + half] for row in range(24))
            area[2 * (43 * 24 + column) + half] = first
            area[2 * (43 * 25 + column) + half] = second
        for diagonal in range(26):
            first, second = parity(area[2 * ((44 * i + 43 * diagonal) % 1118) + half] for i in range(43))
            area[2 * (1118 + diagonal) + half] = first
            area[2 * (1144 + diagonal) + half] = second
    return area


def bcd(value):
    return int(str(value), 16)


def sector(number, mode, data):
    frames = number + 150
    header = bytes([bcd(frames // 75 // 60), bcd(frames // 75 % 60), bcd(frames % 75), mode])
    sync = b"\0" + b"\xFF" * 10 + b"\0"
    if mode == 1:
        covered = sync + header + data
        area = bytearray((covered + edc(covered) + bytes(8))[12:])
    else:
        covered = bytes([0, 0, 8, 0] * 2) + data
        area = bytearray(bytes(4) + covered + edc(covered))
    return sync + header + bytes(add_parity(area)[4:])


def expand(mode, postgap, image):
    assert len(image) % 2048 == 0
    image += bytes(2048 * postgap)
    return b"".join(sector(i, mode, image[i * 2048:(i + 1) * 2048]) for i in range(len(image) // 2048))


def main(words):
    command, mode, postgap, source, target = words
    assert command == "expand"
    result = expand(int(mode), int(postgap), open(source, "rb").read())
    with open(target, "wb") as output:
        output.write(result)


main(sys.argv[1:])
