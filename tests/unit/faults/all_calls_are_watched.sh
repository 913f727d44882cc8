#!/usr/bin/env bash
# Fails, and names the calls, if the file layer makes system calls that the fault tests do not watch.
#
#   all_calls_are_watched.sh NM ARCHIVE_OF_THE_ROOM WATCHED_CALL...
set -eu
nm=$1 archive=$2
shift 2
# Calls that do not access files: C++, the runtimes of compiler and sanitizers, memory, strings, waiting, errors.
harmless='_[^_].*|__[^i].*|bcmp|mem.*|str.*|wmem.*|wcslen|crc32_combine.*|crc32_z|abort|atexit|getcwd|nanosleep'
harmless+='|__imp_(GetLastError|SetLastError|FormatMessageW|GetCurrentDirectoryW|GetCurrentProcess|GetFullPathNameW|SetConsoleOutputCP|_errno)'
# Calls whose failure loses no data: permissions, dates, links, the console.
harmless+='|fchmod|ioctl|isatty|realpath|utimensat'
harmless+='|__imp_(GetConsoleScreenBufferInfo|GetStdHandle|SetFileTime|_isatty|_setmode)'
called=$("$nm" --undefined-only --format=just-symbols "$archive" | grep -v ':$' | sort -u | grep -Evx "$harmless")
missing=$(comm -23 <(echo "$called") <(printf '%s\n' "$@" | sort -u))
if [ -n "$missing" ]; then
    echo "Not watched:" $missing
    exit 1
fi
