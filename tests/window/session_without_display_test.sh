#!/usr/bin/env bash
# A Wine session whose desktop did not reach the display is started again: without that, no test in it could open a window.
#
#   session_without_display_test.sh HAS_DESKTOP.exe
set -eu
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Hides the display from the first program that opens a window.
cat >"$folder/wine" <<END
#!/bin/sh
PATH=$PATH
case \$1 in
    *.exe) [ -e "$folder/hidden" ] || { touch "$folder/hidden" && export DISPLAY=; } ;;
esac
exec wine "\$@"
END
chmod +x "$folder/wine"
PATH=$folder:$PATH "$here/run_window_test.sh" "$1"
[ -e "$folder/hidden" ]
