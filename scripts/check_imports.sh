#!/usr/bin/env bash
# Fails if a Windows program needs a DLL that is not part of Windows.
#
#   check_imports.sh PROGRAM.exe...
set -eu
system='ADVAPI32|COMCTL32|COMDLG32|GDI32|IMAGEHLP|KERNEL32|MSIMG32|msvcrt|OLE32|OLEAUT32|SHCORE|SHELL32|SHLWAPI|USER32|UXTHEME|VERSION|WINMM|DWMAPI|DBGHELP|OLEACC|UIAUTOMATIONCORE|WS2_32'
status=0
for program in "$@"; do
    imports=$(x86_64-w64-mingw32-objdump -p "$program" | sed -n 's/^\tDLL Name: //p')
    if [ -z "$imports" ]; then
        echo "$program: has no import table"
        status=1
    fi
    others=$(grep -viE "^($system)\.dll$" <<<"$imports" || true)
    if [ -n "$others" ]; then
        echo "$program needs" $others
        status=1
    fi
done
exit $status
