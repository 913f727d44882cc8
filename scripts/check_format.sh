#!/usr/bin/env bash
# Fails, and names the places, if a source is not formatted according to .clang-format.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format --dry-run -Werror
