#!/usr/bin/env python3
"""Checks the dialog templates of a resource script for faults that the compiler does not report.

    lint_dialogs.py SCRIPT.rc IDS.h SOURCE...

Faults: a duplicate or undefined id; a control without a label; a control off the grid, outside its dialog, with an empty
area, or overlapping another one. Tooltips in the sources count as labels of buttons without text.
"""
import re
import sys

GRID = 4  # dialog units
ANONYMOUS = "-1"
TEXT_KINDS = {"LTEXT", "CTEXT", "RTEXT", "GROUPBOX", "PUSHBUTTON", "DEFPUSHBUTTON", "AUTOCHECKBOX", "CHECKBOX",
              "AUTORADIOBUTTON", "RADIOBUTTON", "ICON"}
FIELD_KINDS = {"EDITTEXT", "COMBOBOX", "LISTBOX"}
NAMING_KINDS = {"GROUPBOX", "LTEXT"}
LINE_OF_A_LIST = 12  # the height of a closed drop-down list, regardless of its template


class Control:
    def __init__(self, kind, text, name, numbers, style):
        self.kind, self.text, self.name, self.style = kind, text, name, style
        self.x, self.y, self.width, self.height = numbers
        if kind == "COMBOBOX" and "CBS_DROPDOWN" in style:
            self.template_height, self.height = self.height, LINE_OF_A_LIST
        else:
            self.template_height = self.height

    def is_visible(self):
        return "NOT WS_VISIBLE" not in self.style

    def covers(self, other):
        return (self.x <= other.x and self.y <= other.y and self.x + self.width >= other.x + other.width
                and self.y + self.height >= other.y + other.height)

    def meets(self, other):
        return (self.x < other.x + other.width and other.x < self.x + self.width
                and self.y < other.y + other.height and other.y < self.y + self.height)

    def __str__(self):
        label = self.name if self.name != ANONYMOUS else f'"{self.text}"'
        return f"{self.kind} {label}"


def parse_control(line):
    match = re.match(r'([A-Z]+)\s+(?:("(?:[^"]|"")*"|\w+)\s*,\s*)?(-?\w+)\s*,\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+)'
                     r'\s*(?:,\s*(.*))?$', line)
    if not match or match[1] not in TEXT_KINDS | FIELD_KINDS:
        raise ValueError(f"unknown statement: {line}")
    text = (match[2] or "").strip('"')
    return Control(match[1], text, match[3], [int(match[i]) for i in range(4, 8)], match[8] or "")


def parse_dialogs(script):
    """(name, width, height, controls) of every dialog in the script."""
    script = re.sub(r"//[^\n]*|/\*.*?\*/", "", script, flags=re.S)
    dialogs = []
    for match in re.finditer(r"^(\w+)\s+DIALOG(?:EX)?\s+(\d+)\s*,\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+)(.*?)^BEGIN\n(.*?)^END",
                             script, flags=re.S | re.M):
        body = re.sub(r"(,|\|)\s*\n\s*", r"\1 ", match[7])
        controls = [parse_control(line.strip()) for line in body.splitlines() if line.strip()]
        dialogs.append((match[1], int(match[4]), int(match[5]), controls))
    return dialogs


def parse_ids(header):
    return {name: int(value) for name, value in re.findall(r"^#define\s+(\w+)\s+(\d+)", header, flags=re.M)}


def id_faults(controls, ids):
    seen = {}
    for control in controls:
        if control.name == ANONYMOUS:
            continue
        value = {"IDOK": 1, "IDCANCEL": 2}.get(control.name, ids.get(control.name))
        if value is None:
            yield f"{control}: undefined id"
        elif value in seen:
            yield f"{control}: same id as {seen[value]}"
        else:
            seen[value] = control


def name_faults(controls, sources):
    for before, control in zip([None] + controls, controls):
        if control.text or not control.is_visible() or control.kind == "ICON":
            continue
        if control.kind in ("PUSHBUTTON", "DEFPUSHBUTTON"):
            if not re.search(r"\{" + re.escape(control.name) + r',[^}]*\bL"[^"]', sources):
                yield f"{control}: a button without text needs a tooltip"
        elif before is None or before.kind not in NAMING_KINDS or not before.text:
            yield f"{control}: no label precedes it"


def place_faults(controls, width, height):
    for control in controls:
        sides = (control.x, control.y, control.width, control.template_height)
        if any(side % GRID for side in sides):
            yield f"{control}: off the grid of {GRID} units: {', '.join(map(str, sides))}"
        if control.width == 0 or control.height == 0:
            yield f"{control}: empty area"
        if control.x + control.width > width or control.y + control.height > height:
            yield f"{control}: outside the dialog"


def overlap_faults(controls):
    shown = [control for control in controls if control.is_visible()]
    for i, first in enumerate(shown):
        for second in shown[i + 1:]:
            framed = (first.kind == "GROUPBOX" and first.covers(second)
                      or second.kind == "GROUPBOX" and second.covers(first))
            if first.meets(second) and not framed:
                yield f"{first}: overlaps {second}"


def lint(script, header, sources):
    ids = parse_ids(header)
    faults = []
    dialogs = parse_dialogs(script)
    for name, width, height, controls in dialogs:
        for found in (id_faults(controls, ids), name_faults(controls, sources),
                      place_faults(controls, width, height), overlap_faults(controls)):
            faults += [f"{name}: {fault}" for fault in found]
    if not dialogs:
        faults.append("no dialogs found")
    return faults, sum(len(controls) for _, _, _, controls in dialogs)


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


if __name__ == "__main__":
    found, count = lint(read(sys.argv[1]), read(sys.argv[2]), "\n".join(map(read, sys.argv[3:])))
    for fault in found:
        print(fault)
    print(f"{count} controls checked, {len(found)} faults")
    sys.exit(1 if found else 0)
