#!/usr/bin/env bash
# Measures, under Wine on a private display and on one processor: the cost of the window's update after each unit of a
# conversion; the time of a BIN of 64 MiB in the window and in the console program; and the parts of the time of a UMD
# image of 256 MiB. Build the preset "windows" first.
#
#     frame_cost.sh [PROCESSOR]
set -eu
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [ -z "${FRAME_COST_PINNED-}" ]; then
    FRAME_COST_PINNED=yes exec taskset -c "${1-0}" "$0"
fi
. "$here/../scripts/wine_env.sh"
wine_env_display
wine_env_no_audio
wine_env_wine
programs=$here/../build/windows/bin
wine "$programs/frame_bench.exe" 8>&- </dev/null
wine "$programs/window_bin_bench.exe" "Z:$(realpath "$programs")/vantrel.exe" 8>&- </dev/null
wine "$programs/window_umd_bench.exe" 8>&- </dev/null
