#!/usr/bin/env python3
"""Fails, and names the places, if a source includes a header of a room that its own room does not declare to use, or if
headers of two rooms define types of the same name.

    check_rooms.py ROOMS_FILE

ROOMS_FILE is the rooms.txt of a build: one line per target with its folder, its name and the rooms it uses. The linker
notices neither a wrong include of a header that needs no library nor two types of one name, whose functions it mixes up.
"""
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def declared(path):
    """The folders that each folder may include from: its own, and those of the rooms it uses directly or indirectly."""
    folders, uses = {}, {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            folder, name, *used = line.split()
            folders[name] = folder
            uses[name] = used

    def reach(name, seen):
        if name not in seen:
            seen.add(name)
            for used in uses.get(name, ()):
                reach(used, seen)
        return seen

    allowed = {}
    for name, folder in folders.items():
        allowed.setdefault(folder, set()).update(folders[found] for found in reach(name, set()))
    return allowed


def room_of(path, rooms):
    """The folder of the room that a path of the checkout belongs to, or None."""
    folder = os.path.dirname(path)
    while folder and folder not in rooms:
        folder = os.path.dirname(folder)
    return folder or None


def main():
    allowed = declared(sys.argv[1])
    sources = subprocess.run(["git", "-C", ROOT, "ls-files", "*.cpp", "*.h"], capture_output=True, text=True, check=True)
    wrong, defined = [], {}
    for source in sources.stdout.split():
        room = room_of(source, allowed)
        path = os.path.join(ROOT, source)
        if room is None or not os.path.exists(path):
            continue
        with open(path, encoding="utf-8") as file:
            for number, line in enumerate(file, 1):
                found = re.match(r'#include "([^"]+)"', line)
                other = room_of(found.group(1), allowed) if found else None
                if other and other not in allowed[room]:
                    wrong.append(f"{source}:{number}: {room} does not declare to use {other}")
                found = re.match(r"(?:struct|class) (\w+)[^;]*$", line) if source.endswith(".h") else None
                if found and defined.setdefault(found.group(1), source) != source:
                    wrong.append(f"{source}:{number}: {found.group(1)} is also defined in {defined[found.group(1)]}")
    print("\n".join(wrong) or f"{len(allowed)} rooms include only what they declare to use")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
