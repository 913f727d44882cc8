#!/usr/bin/env bash
# Runs cppcheck on the sources of the programs, including those for Windows; fails if it finds anything. Tests are left out
# because cppcheck does not know the macros of their library. FOLDER keeps the results for unchanged sources.
#
#   scripts/check_cppcheck.sh FOLDER
set -euo pipefail
folder=$1
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p "$folder"
git ls-files '*.cpp' | grep -Ev '^(tests|fuzz|bench)/' |
    cppcheck --cppcheck-build-dir="$folder" -j "$(nproc)" --quiet --error-exitcode=1 \
        --language=c++ --std=c++20 --enable=warning,performance,portability -I . --file-list=-
