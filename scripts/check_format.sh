#!/usr/bin/env bash
# Fails, and names the places, when a source is not formatted as .clang-format says.
set -eu
cd "$(dirname "${BASH_SOURCE[0]}")/.."
find app bench compress console files fuzz iml iso operation raw resources tests \
    \( -name '*.cpp' -o -name '*.h' \) -print0 2>/dev/null | sort -z | xargs -0 clang-format --dry-run -Werror
