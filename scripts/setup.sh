# Functions for ./run, ./check and ./package: installing packages and building a preset.

SETUP_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# The packages of scripts/packages.txt that are not installed.
missing_packages() {
    local wanted installed
    wanted=$(grep -v '^#' "$SETUP_ROOT/scripts/packages.txt" | sort -u)
    # shellcheck disable=SC2086
    installed=$(dpkg-query -W -f='${db:Status-Abbrev}${Package}\n' $wanted 2>/dev/null | sed -n 's/^ii *//p' | sort -u)
    comm -23 <(echo "$wanted") <(echo "$installed")
}

install_packages() {
    local missing as_root=
    missing=$(missing_packages)
    [ -n "$missing" ] || return 0
    # shellcheck disable=SC2116,SC2086
    echo "Installing missing packages: $(echo $missing)"
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Only root or a user with sudo can install packages." >&2
            return 1
        fi
        as_root=sudo
    fi
    local log
    log=$(mktemp)
    # shellcheck disable=SC2086
    if ! apt_get install --yes --no-install-recommends $missing; then
        echo "Updating the package lists"
        if ! { apt_get update && apt_get install --yes --no-install-recommends $missing; }; then
            tail -n 20 "$log" >&2
            rm -f "$log"
            return 1
        fi
    fi
    rm -f "$log"
}

# Part of install_packages; uses its local variables.
apt_get() {
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get -q "$@" >"$log" 2>&1 </dev/null
}

# build_preset PRESET [TARGET...]: configures and builds; prints nothing unless that fails.
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
        build_quietly "$preset" "$@" 7>&-
    )
}

build_quietly() {
    local preset=$1 log=$SETUP_ROOT/build/$1.log
    shift
    cd "$SETUP_ROOT"
    {
        # A configured folder reconfigures itself when CMake files change.
        [ "build/$preset/build.ninja" -nt CMakePresets.json ] || cmake --preset "$preset" -Wno-dev
    } >"$log" 2>&1 </dev/null &&
        cmake --build --preset "$preset" ${1+--target "$@"} >>"$log" 2>&1 </dev/null || {
        echo "The build of \"$preset\" failed; end of the log:" >&2
        tail -n 40 "$log" >&2
        return 1
    }
}
