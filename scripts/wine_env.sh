# Functions for scripts that run Windows programs on Linux, with a Wine prefix in build/, a private virtual display with a
# window manager, and a private audio device. wine_env_stop, which also runs at the end of the script, ends everything
# started here and affects no other session, display or prefix.
#
#   . scripts/wine_env.sh
#   wine_env_display            # a private virtual display with a window manager
#   wine_env_audio              # a null audio device; WINE_ENV_RECORDING has its output (raw, 8 bit, mono, 11025 Hz)
#   wine_env_no_audio           # or: no audio device
#   wine_env_wine               # exclusive use of a prefix, with Wine's services running
#   wine program.exe

WINE_ENV_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
WINE_ENV_PREFIX=${WINE_ENV_PREFIX:-}
WINE_ENV_PIDS=()
WINE_ENV_STARTED_WINE=
WINE_ENV_FOLDER=
WINE_ENV_LOG=/dev/null

# Wine needs a UTF-8 locale to create files with non-ASCII names; minimal systems set none.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8

# A folder for sockets, settings and logs of this run, removed at its end. It is in /tmp because the path of a socket has at
# most 107 characters.
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

# wine_env_wait SECONDS COMMAND...: waits until the command succeeds; fails if it does not within SECONDS.
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
    # Hides the user's settings from the window manager and the programs.
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
    # If run by root, the server prints a warning but works.
    pulseaudio -n --daemonize=no --use-pid-file=no --exit-idle-time=-1 --disable-shm=yes --realtime=no --high-priority=no \
        -L "module-null-sink sink_name=probe rate=44100" \
        -L "module-native-protocol-unix auth-anonymous=1 socket=$folder/native" >>"$WINE_ENV_LOG" 2>&1 </dev/null &
    WINE_ENV_PIDS+=($!)
    wine_env_wait 30 wine_env_has_sink || { echo "the audio device did not start" >&2; return 1; }
    export WINE_ENV_RECORDING=$WINE_ENV_FOLDER/recording.raw
    parec -d probe.monitor --format=u8 --rate=11025 --channels=1 --latency-msec=20 \
        >"$WINE_ENV_RECORDING" 2>>"$WINE_ENV_LOG" </dev/null &
    WINE_ENV_PIDS+=($!)
    wine_env_wait 30 test -s "$WINE_ENV_RECORDING" || { echo "recording the audio device did not start" >&2; return 1; }
}

wine_env_has_sink() {
    pactl list short sinks 2>/dev/null | grep -q probe
}

wine_env_no_audio() {
    wine_env_folder
    export PULSE_SERVER=unix:$WINE_ENV_FOLDER/no-audio ALSA_CONFIG_PATH=/dev/null
}

# Takes a prefix for this run, and makes it if necessary, without starting programs in it: that of WINE_ENV_PREFIX, or a
# free one of those for tests. Each run has a prefix of its own, because a session shares the clipboard, the focus and the
# sounds; others wait.
wine_env_prefix() {
    export WINEDEBUG=${WINEDEBUG:--all} WINEARCH=win64 WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
    mkdir -p "$WINE_ENV_ROOT/build"
    wine_env_lock_prefix
    export WINEPREFIX=$WINE_ENV_PREFIX
    # The prefix is made again when the function that makes it has changed.
    local recipe
    recipe=$(declare -f wine_env_make_prefix)
    if [ "$recipe" != "$(cat "$WINEPREFIX/.recipe" 2>/dev/null)" ]; then
        wine_env_make_prefix || return 1
        echo "$recipe" >"$WINEPREFIX/.recipe"
    fi
}

wine_env_lock_prefix() {
    local prefix number
    if [ -z "$WINE_ENV_PREFIX" ]; then
        # As many as ctest runs tests at once.
        for ((number = $(nproc); number > 0; number--)); do
            prefix=$WINE_ENV_ROOT/build/wineprefix-$number
            exec 8>"$prefix.lock"
            flock -n 8 && WINE_ENV_PREFIX=$prefix && return
        done
        WINE_ENV_PREFIX=$prefix
    fi
    exec 8>"$WINE_ENV_PREFIX.lock"
    flock 8
}

wine_env_wine() {
    wine_env_folder
    wine_env_prefix || return 1
    WINE_ENV_STARTED_WINE=yes
    wine_env_session
}

# Ends what runs in the prefix and starts Wine's services.
wine_env_session() {
    # Programs left over from a killed run use a display that no longer exists.
    wineserver -k 8>&- >/dev/null 2>&1 && wineserver -w 8>&- >/dev/null 2>&1
    # The first program of a session starts Wine's services. They keep inherited descriptors, so they must get neither
    # our output nor our lock.
    wineserver -p 8>&- >/dev/null 2>&1 </dev/null
    wine wineboot 8>&- >/dev/null 2>&1 </dev/null
}

wine_env_make_prefix() {
    rm -rf "$WINEPREFIX"
    wine wineboot -i 8>&- >>"$WINE_ENV_LOG" 2>&1 </dev/null || {
        echo "making the Wine prefix failed:" >&2
        tail -n 5 "$WINE_ENV_LOG" >&2
        return 1
    }
    # Without Wine's own fonts, captions have wrong glyphs and dialogs wrong sizes.
    local font
    for font in /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon; do
        cp -n "$font" "$WINEPREFIX/drive_c/windows/Fonts/"
    done
    # A crashed program must end, not wait for a message box to be closed.
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f 8>&- >>"$WINE_ENV_LOG" 2>&1 </dev/null
    wineserver -k 8>&-
    wineserver -w 8>&-
    # Wine links the user's folders to the current home folder; file dialogs are empty once that no longer exists.
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
