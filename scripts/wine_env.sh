# Sourced by scripts that run Windows programs on Linux: a Wine prefix below build/, a private virtual display with a
# window manager, and a private audio device. Everything started here is ended by wine_env_stop, which also runs when
# the script ends; nothing of another session, display or prefix is touched.
#
#   . scripts/wine_env.sh
#   wine_env_display            # a virtual display of its own, with a window manager
#   wine_env_audio              # a null audio device, whose output WINE_ENV_RECORDING records (raw, 8 bit, mono, 11025 Hz)
#   wine_env_no_audio           # or: no audio device at all
#   wine_env_wine               # the prefix, made and warmed up, for this script alone
#   wine program.exe

WINE_ENV_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
WINE_ENV_PREFIX=${WINE_ENV_PREFIX:-$WINE_ENV_ROOT/build/wineprefix}
WINE_ENV_PIDS=()
WINE_ENV_STARTED_WINE=
WINE_ENV_FOLDER=
WINE_ENV_LOG=/dev/null

# Without a locale of this kind Wine cannot make files with names beyond ASCII; a bare system has none set.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8

# A folder for sockets, settings and logs of this run, removed at its end. Below /tmp, because the path of a socket may
# not be longer than 107 characters.
wine_env_folder() {
    if [ -z "$WINE_ENV_FOLDER" ]; then
        WINE_ENV_FOLDER=$(mktemp -d "${TMPDIR:-/tmp}/vantrel-desktop.XXXXXX")
        WINE_ENV_LOG=$WINE_ENV_FOLDER/log
        : >"$WINE_ENV_LOG"
        mkdir -p "$WINE_ENV_FOLDER/home" "$WINE_ENV_FOLDER/runtime"
        chmod 700 "$WINE_ENV_FOLDER/runtime"
        trap wine_env_stop EXIT
        trap 'exit 130' INT
        trap 'exit 143' TERM HUP
    fi
}

# wine_env_wait SECONDS COMMAND...: waits until the command succeeds; false when it does not in time.
wine_env_wait() {
    local tries=$(($1 * 20))
    shift
    until "$@"; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.05
    done
}

wine_env_display() {
    wine_env_folder
    local number=$WINE_ENV_FOLDER/display
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$number" >>"$WINE_ENV_LOG" 2>&1 </dev/null &
    WINE_ENV_PIDS+=($!)
    if ! wine_env_wait 30 test -s "$number"; then
        echo "the virtual display did not start:" >&2
        cat "$WINE_ENV_LOG" >&2
        return 1
    fi
    export DISPLAY=:$(cat "$number")
    # The window manager and the programs find nothing of the user's own settings.
    export HOME=$WINE_ENV_FOLDER/home XDG_RUNTIME_DIR=$WINE_ENV_FOLDER/runtime
    export XDG_CONFIG_HOME=$HOME/.config XDG_CACHE_HOME=$HOME/.cache XDG_DATA_HOME=$HOME/.local/share
    unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS SESSION_MANAGER XAUTHORITY
    openbox --sm-disable >>"$WINE_ENV_LOG" 2>&1 </dev/null &
    WINE_ENV_PIDS+=($!)
    wine_env_wait 30 wine_env_has_window_manager || echo "no window manager: $(tail -n 3 "$WINE_ENV_LOG")" >&2
}

wine_env_has_window_manager() {
    xdotool get_desktop >/dev/null 2>&1
}

wine_env_audio() {
    wine_env_folder
    local folder=$WINE_ENV_FOLDER/pulse
    mkdir -p "$folder"
    export PULSE_RUNTIME_PATH=$folder PULSE_STATE_PATH=$folder PULSE_SERVER=unix:$folder/native
    # Run by root, the server says that it should not be, and works.
    pulseaudio -n --daemonize=no --use-pid-file=no --exit-idle-time=-1 --disable-shm=yes --realtime=no --high-priority=no \
        -L "module-null-sink sink_name=probe rate=44100" \
        -L "module-native-protocol-unix auth-anonymous=1 socket=$folder/native" >>"$WINE_ENV_LOG" 2>&1 </dev/null &
    WINE_ENV_PIDS+=($!)
    wine_env_wait 30 wine_env_has_sink || { echo "the audio device did not start" >&2; return 1; }
    export WINE_ENV_RECORDING=$WINE_ENV_FOLDER/recording.raw
    parec -d probe.monitor --format=u8 --rate=11025 --channels=1 --latency-msec=20 \
        >"$WINE_ENV_RECORDING" 2>>"$WINE_ENV_LOG" </dev/null &
    WINE_ENV_PIDS+=($!)
    wine_env_wait 30 test -s "$WINE_ENV_RECORDING" || { echo "the audio device is not recorded" >&2; return 1; }
}

wine_env_has_sink() {
    pactl list short sinks 2>/dev/null | grep -q probe
}

wine_env_no_audio() {
    wine_env_folder
    export PULSE_SERVER=unix:$WINE_ENV_FOLDER/no-audio ALSA_CONFIG_PATH=/dev/null
}

# The prefix, without anything running in it. WINE_ENV_PREFIX names another one than that of the tests.
wine_env_prefix() {
    export WINEPREFIX=$WINE_ENV_PREFIX WINEDEBUG=${WINEDEBUG:--all} WINEARCH=win64
    export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
    mkdir -p "$(dirname "$WINEPREFIX")"
    exec 8>"$WINEPREFIX.lock"
    flock 8
    # Made anew whenever the way to make it has changed.
    local recipe
    recipe=$(declare -f wine_env_make_prefix)
    if [ "$recipe" != "$(cat "$WINEPREFIX/.recipe" 2>/dev/null)" ]; then
        wine_env_make_prefix || return 1
        echo "$recipe" >"$WINEPREFIX/.recipe"
    fi
    flock -u 8
}

wine_env_wine() {
    wine_env_folder
    wine_env_prefix || return 1
    # One run at a time has the prefix; the next one waits.
    flock 8
    WINE_ENV_STARTED_WINE=yes
    # What a run that was killed has left behind knows a display that is gone.
    wineserver -k 8>&- >/dev/null 2>&1 && wineserver -w 8>&- >/dev/null 2>&1
    # The first programs of a session start Wine's services, which keep what they inherit: neither our output nor
    # our lock. Whatever runs afterwards finds them running.
    wineserver -p 8>&- >/dev/null 2>&1 </dev/null
    wine wineboot 8>&- >/dev/null 2>&1 </dev/null
}

wine_env_make_prefix() {
    rm -rf "$WINEPREFIX"
    wine wineboot -i 8>&- >>"$WINE_ENV_LOG" 2>&1 </dev/null || {
        echo "no Wine prefix could be made:" >&2
        tail -n 5 "$WINE_ENV_LOG" >&2
        return 1
    }
    # Without Wine's own fonts captions show wrong glyphs and dialogs get other sizes.
    local font
    for font in /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon; do
        cp -n "$font" "$WINEPREFIX/drive_c/windows/Fonts/"
    done
    # A crashed program ends instead of waiting for somebody to close a box.
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f 8>&- >>"$WINE_ENV_LOG" 2>&1 </dev/null
    wineserver -k 8>&-
    wineserver -w 8>&-
    # Wine links the user's folders to the home of the moment; file dialogs show nothing once that is gone.
    local link
    for link in "$WINEPREFIX"/drive_c/users/*/*; do
        if [ -L "$link" ]; then
            rm "$link"
            mkdir "$link"
        fi
    done
}

wine_env_stop() {
    local status=$?
    trap - EXIT INT TERM HUP
    if [ -n "$WINE_ENV_STARTED_WINE" ]; then
        wineserver -k >/dev/null 2>&1
        wineserver -w >/dev/null 2>&1
        WINE_ENV_STARTED_WINE=
    fi
    local index
    for ((index = ${#WINE_ENV_PIDS[@]} - 1; index >= 0; index--)); do
        kill "${WINE_ENV_PIDS[index]}" 2>/dev/null
        wait "${WINE_ENV_PIDS[index]}" 2>/dev/null
    done
    WINE_ENV_PIDS=()
    if [ -n "$WINE_ENV_FOLDER" ]; then
        rm -rf "$WINE_ENV_FOLDER"
        WINE_ENV_FOLDER=
    fi
    return $status
}
