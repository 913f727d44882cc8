#!/usr/bin/env bash
# Runs tests of the console program on its Windows build, with a temporary display and Wine prefix.
#
#   run_under_wine.sh TEST.py...
set -u
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/wine_env.sh"
wine_env_display && wine_env_no_audio && wine_env_wine || exit 1
status=0
for test in "$@"; do
    /usr/bin/python3 "$test" -v 8>&- </dev/null || status=1
done
exit $status
