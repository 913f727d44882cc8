# Functions for ./run, ./check and ./package: installing packages and building a preset.

SETUP_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# install_packages LIST...: installs what is missing of the packages in scripts/packages/LIST.txt.
install_packages() {
    local missing as_root=
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            # shellcheck disable=SC2116,SC2086
            echo "Missing packages:" $missing
            echo "Only root or a user with sudo can install packages." >&2
            return 1
        fi
        as_root=sudo
    fi
    local log
    log=$(mktemp)
    # shellcheck disable=SC2086
    if ! install_missing $missing; then
        echo "Updating the package lists"
        if ! { apt_get update && install_missing $missing; }; then
            tail -n 20 "$log" >&2
            rm -f "$log"
            return 1
        fi
    fi
    rm -f "$log"
}

missing_packages() {
    local wanted installed
    wanted=$(cd "$SETUP_ROOT/scripts/packages" && cat "${@/%/.txt}" | grep -v '^#' | sort -u)
    # shellcheck disable=SC2086
    installed=$(dpkg-query -W -f='${db:Status-Abbrev}${Package}\n' $wanted 2>/dev/null | sed -n 's/^ii *//p' | sort -u)
    comm -23 <(echo "$wanted") <(echo "$installed")
}

# Parts of install_packages; they use its local variables.
install_missing() {
    apt_get install --assume-no --no-install-recommends "$@" || grep -q '^Need to get' "$log" || return 1
    echo "Installing $#" "packages and what they need: $*"
    sed -n 's/^Need to get \(.*\) of archives\.$/  \1 to download/p; s/^After this operation, \(.*\) will be used\.$/  \1/p' "$log"
    apt_get install --yes --no-install-recommends "$@"
}

apt_get() {
    $as_root env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get -q "$@" >"$log" 2>&1 </dev/null
}

# build_preset PRESET [TARGET...]: configures and builds. With targets, the folder need not be able to build tests. Shows
# how far it is if there is anything to build, and the end of the log if that fails.
build_preset() {
    local preset=$1
    shift
    mkdir -p "$SETUP_ROOT/build"
    if command -v ccache >/dev/null; then
        # Checkouts in different folders share the compiler cache.
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$SETUP_ROOT CCACHE_NOHASHDIR=1
        export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    fi
    (
        # Concurrent builds of a folder would interfere.
        exec 7>"$SETUP_ROOT/build/$preset.lock"
        flock 7
        cd "$SETUP_ROOT"
        log=build/$preset.log
        { configure "$preset" "$([ $# -eq 0 ] && echo ON || echo OFF)" >"$log" 2>&1 </dev/null &&
            NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" ${1+--target "$@"} 2>&1 </dev/null |
            tee -a "$log" | show_count "$preset"; } 7>&- || {
            echo "The build of \"$preset\" failed; end of the log:" >&2
            tail -n 40 "$log" >&2
            return 1
        }
    )
}

# configure PRESET ON|OFF: whether tests are wanted. A configured folder reconfigures itself when CMake files change, and
# keeps its tests.
configure() {
    local cache=build/$1/CMakeCache.txt
    [ "build/$1/build.ninja" -nt CMakePresets.json ] && { [ "$2" = OFF ] || grep -q '^VANTREL_TESTS:BOOL=ON' "$cache"; } ||
        cmake --preset "$1" -Wno-dev -D VANTREL_TESTS="$(grep -qs '^VANTREL_TESTS:BOOL=ON' "$cache" && echo ON || echo "$2")"
}

# show_count NAME: follows Ninja's output, in one line on a terminal, else with a line every ten seconds.
show_count() {
    local line said=-10 count= end=$'\n'
    [ -t 1 ] && end=$'\r'
    while IFS= read -r line; do
        [[ $line =~ ^\[([1-9][0-9]*)/([0-9]+)\]\  ]] || continue
        count="Building $1: ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]}"
        if [ -t 1 ] || [ $((SECONDS - said)) -ge 10 ] || [ "${BASH_REMATCH[1]}" = "${BASH_REMATCH[2]}" ]; then
            said=$SECONDS
            printf '%s%s' "$count" "$end"
        fi
    done
    [ "$end" = $'\n' ] || [ -z "$count" ] || echo
}
