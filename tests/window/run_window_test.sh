#!/usr/bin/env bash
# Runs a Windows program that drives the window: with a display, a Wine prefix and, when asked, an audio device of its
# own, all of which end with it. Pictures that the program asks for are kept.
#
#   run_window_test.sh [--audio] [--show] [--pictures FOLDER] PROGRAM.exe [ARGUMENT...]
#
# --show uses the display that is there, so that somebody can watch.
set -u
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/../../scripts/wine_env.sh"

audio=wine_env_no_audio
display=wine_env_display
pictures=$WINE_ENV_ROOT/build/pictures
while :; do
    case ${1-} in
        --audio) audio=wine_env_audio; shift ;;
        --show) display=true; shift ;;
        --pictures) pictures=$2; shift 2 ;;
        *) break ;;
    esac
done

# Serves one line "@picture NAME LEFT TOP WIDTH HEIGHT" of the program. The title bar and the borders are the window
# manager's and stand outside of the rectangle.
take_picture() {
    local name=$1 left=$2 top=$3 width=$4 height=$5 border=1 title=22
    import -window root -crop "$((width + 2 * border))x$((height + title + border))+$((left - border))+$((top - title))" \
        +repage "$pictures/$name.png"
    : >"$pictures/$name.taken"
}

$display || exit 1
$audio || exit 1
wine_env_wine || exit 1
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
