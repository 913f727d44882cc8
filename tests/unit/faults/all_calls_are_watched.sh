#!/usr/bin/env bash
# Fails, and names them, when the file layer makes calls of the system that the fault tests do not watch.
#
#   all_calls_are_watched.sh ARCHIVE_OF_THE_ROOM WATCHED_CALL...
set -eu
archive=$1
shift
# What does not touch a file: C++, the runtimes of compiler and sanitizers, memory, texts, waiting.
harmless='^(_.*|mem.*|str.*|wmem.*|abort|getcwd|nanosleep)$'
called=$(nm --undefined-only --format=just-symbols "$archive" | grep -v ':$' | sort -u | grep -Ev "$harmless")
missing=$(comm -23 <(echo "$called") <(printf '%s\n' "$@" | sort -u))
if [ -n "$missing" ]; then
    echo "Not watched:" $missing
    exit 1
fi
