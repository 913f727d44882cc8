#!/usr/bin/env bash
# Runs a Windows program that drives the window, with a display, a Wine prefix and, optionally, an audio device of its
# own. Keeps the pictures that the program requests. Exits with 77 if there can be no audio device.
#
#   run_window_test.sh [--audio] [--show] [--pictures FOLDER] [--scale PERCENT] PROGRAM.exe [ARGUMENT...]
#
# --show uses the current display, so that somebody can watch.
set -u
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/../../scripts/wine_env.sh"

audio=wine_env_no_audio
scale=100
display=wine_env_display
pictures=$WINE_ENV_ROOT/build/pictures
while :; do
    case ${1-} in
        --audio) audio=wine_env_audio; shift ;;
        --show) display=true; shift ;;
        --pictures) pictures=$2; shift 2 ;;
        --scale) scale=$2; shift 2 ;;
        *) break ;;
    esac
done

# Takes the picture for a line "@picture KIND NAME WIDTHxHEIGHT+LEFT+TOP" of the program, without the black margin.
take_picture() {
    local kind=$1 name=$2 rectangle=$3 shot=$pictures/$2 tries
    for tries in 1 2 3 4 5 6 7 8 9 10; do
        import -window root -crop "$rectangle" +repage "$shot.ppm"
        if [ "$kind" = moving ] || cmp -s "$shot.ppm" "$shot.last.ppm"; then
            break
        fi
        mv "$shot.ppm" "$shot.last.ppm"
    done
    [ -e "$shot.ppm" ] || mv "$shot.last.ppm" "$shot.ppm"
    convert "$shot.ppm" -bordercolor black -border 1 -trim +repage -strip "$shot.png"
    rm -f "$shot.ppm" "$shot.last.ppm"
    : >"$shot.taken"
}

$display || exit 1
if ! $audio; then
    echo "skipped 'the audio device did not start'"
    exit 77
fi
# The scale of the display is a setting of the whole Wine session, so every other scale has its own prefix.
[ "$scale" = 100 ] || WINE_ENV_PREFIX=$WINE_ENV_ROOT/build/wineprefix-scale-$scale
wine_env_wine || exit 1
if [ "$scale" != 100 ] && [ ! -e "$WINEPREFIX/.scaled" ]; then
    wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d $((96 * scale / 100)) /f 8>&- >/dev/null 2>&1 </dev/null
    touch "$WINEPREFIX/.scaled"
    wine_env_session
fi
# The desktop of a session may fail to reach the display; then no program in it can open a window.
for tries in 1 2 3; do
    wine "$(dirname "$1")/has_desktop.exe" 8>&- >/dev/null 2>&1 </dev/null && break
    wine_env_session
done
# A time zone other than UTC, in a form that the system understands and the C runtime of Windows misreads.
export TZ='<+0545>-5:45'
mkdir -p "$pictures"
export VANTREL_PICTURES="Z:$pictures"
if [ -n "${WINE_ENV_RECORDING-}" ]; then
    export VANTREL_RECORDING="Z:$WINE_ENV_RECORDING"
fi

wine "$@" 8>&- </dev/null | while IFS= read -r line; do
    line=${line%$'\r'}
    case $line in
        @picture\ *) take_picture ${line#@picture } ;;
        *) printf '%s\n' "$line" ;;
    esac
done
exit "${PIPESTATUS[0]}"
