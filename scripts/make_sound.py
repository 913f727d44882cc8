#!/usr/bin/env python3
"""Makes the default completion sound: a short chime, 8-bit mono PCM at 22050 Hz.

    scripts/make_sound.py           writes resources/sound/success.wav
    scripts/make_sound.py --check   compares that file with a new sound

The sound repeats while the done message is open. It begins and ends in silence, so the loop has no click, and its attack is
soft.
"""
import math
import pathlib
import struct
import sys

PATH = pathlib.Path(__file__).resolve().parent.parent / "resources" / "sound" / "success.wav"
RATE = 22050
LENGTH = RATE * 9 // 5  # samples; even, so that the chunk needs no padding
ATTACK = 0.012  # seconds
RELEASE = 0.25
SILENCE = 128  # the middle of unsigned 8-bit samples
PEAK = 88
# start in seconds, frequency in hertz, loudness: a rising broken chord of D major
NOTES = ((0.00, 587.33, 0.80), (0.13, 739.99, 0.75), (0.26, 880.00, 0.75), (0.39, 1174.66, 0.85))
PARTIALS = ((1, 1.0, 3.2), (2, 0.35, 5.0), (3, 0.12, 8.0))  # multiple, loudness, decay per second


def note_at(time, frequency):
    swell = 0.5 - 0.5 * math.cos(math.pi * min(time / ATTACK, 1.0))
    return swell * sum(loud * math.exp(-decay * time) * math.sin(2 * math.pi * frequency * multiple * time)
                       for multiple, loud, decay in PARTIALS)


def samples():
    wave = []
    for i in range(LENGTH):
        time = i / RATE
        value = sum(loud * note_at(time - start, frequency) for start, frequency, loud in NOTES if time >= start)
        rest = LENGTH / RATE - time
        wave.append(value * (0.5 - 0.5 * math.cos(math.pi * min(rest / RELEASE, 1.0))))
    top = max(abs(value) for value in wave)
    return bytes(SILENCE + math.floor(value / top * PEAK + 0.5) for value in wave)


def sound():
    data = samples()
    chunks = b"fmt " + struct.pack("<IHHIIHH", 16, 1, 1, RATE, RATE, 1, 8) + b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        same = PATH.read_bytes() == sound()
        print("success.wav is up to date" if same else "success.wav differs")
        sys.exit(0 if same else 1)
    PATH.parent.mkdir(parents=True, exist_ok=True)
    PATH.write_bytes(sound())
