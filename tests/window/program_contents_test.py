#!/usr/bin/env python3
"""The Windows programs import no function that older supported versions of Windows lack, and have version and manifest.

usage: program_contents_test.py OBJDUMP PROGRAM.exe...
"""
import re
import subprocess
import sys

# Functions newer than Windows 7, which must be loaded at run time.
LATER_FUNCTIONS = {
    "GetDpiForWindow", "GetDpiForSystem", "SystemParametersInfoForDpi", "GetSystemMetricsForDpi",
    "SetDefaultDllDirectories", "AdjustWindowRectExForDpi", "SetProcessDpiAwarenessContext",
    "GetSystemTimePreciseAsFileTime", "CreateFile2",
}


def check(objdump, program):
    listing = subprocess.run([objdump, "-p", program], capture_output=True, text=True, check=True).stdout
    faults = []
    imported = set(re.findall(r"^\s+[0-9a-f]+\s+\d+\s+(\w+)\s*$", listing, re.MULTILINE))
    faults += [f"{program} imports {name}" for name in sorted(imported & LATER_FUNCTIONS)]
    if "WriteFile" not in imported and "_write" not in imported:
        faults.append(f"{program}: the list of its functions could not be read")
    with open(program, "rb") as file:
        content = file.read()
    for text in (b"asInvoker", b"longPathAware", b"UTF-8</activeCodePage>", "FileVersion".encode("utf-16-le")):
        if text not in content:
            faults.append(f"{program} does not carry {text!r}")
    return faults


def main():
    faults = [fault for program in sys.argv[2:] for fault in check(sys.argv[1], program)]
    print("\n".join(faults) or f"{len(sys.argv) - 2} programs checked")
    return 1 if faults or len(sys.argv) < 3 else 0


sys.exit(main())
