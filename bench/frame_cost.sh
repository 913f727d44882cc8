#!/usr/bin/env bash
# The cost of the window's update after each unit of a conversion, under Wine on a private display, everything on one
# processor: build/windows/bin/frame_bench.exe. Build the preset "windows" first.
set -eu
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [ -z "${FRAME_COST_PINNED-}" ]; then
    FRAME_COST_PINNED=yes exec taskset -c "${1-0}" "$0"
fi
. "$here/../scripts/wine_env.sh"
wine_env_display
wine_env_no_audio
wine_env_wine
wine "$here/../build/windows/bin/frame_bench.exe" 8>&- </dev/null
