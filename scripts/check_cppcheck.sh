#!/usr/bin/env bash
# Fails, and names the places, where cppcheck finds something in the program's own sources, those for Windows included
# (tests are not: it does not know the macros of their library). What it found out about a source is kept in the given
# folder until the source changes.
#
#   scripts/check_cppcheck.sh FOLDER
set -eu
folder=$1
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p "$folder"
exec cppcheck --cppcheck-build-dir="$folder" -j "$(nproc)" --quiet --error-exitcode=1 \
    --language=c++ --std=c++20 --enable=warning,performance,portability \
    -I . app compress console files iml image iso operation pieces raw
