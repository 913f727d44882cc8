#!/usr/bin/env bash
# Runs the fuzzers; ./check --fuzz calls this.
#
#   fuzz.sh run SECONDS [TARGET...]   runs each target for SECONDS with two workers; fails if there is a finding
#   fuzz.sh merge [TARGET...]         adds to fuzz/corpus what the grown corpus covers beyond it
#   fuzz.sh coverage                  reports which lines and branches tests and fuzzers reach
#
# The grown corpus is in build/fuzz/corpus, findings are in build/fuzz/artifacts.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

all_targets=$(sed -n 's/^vantrel_fuzz_target(\([a-z0-9]*\).*/\1/p' fuzz/CMakeLists.txt)
grown=build/fuzz/corpus
artifacts=build/fuzz/artifacts
# The memory limit is low, because no size that a file claims may be allocated unchecked.
limits=(-timeout=60 -rss_limit_mb=1024 -malloc_limit_mb=64)
export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1:quarantine_size_mb=16
export UBSAN_OPTIONS=print_stacktrace=1

build() {
    echo "Building the fuzzers"
    build_preset native make_seeds
    build_preset fuzz fuzzers
    build/native/bin/make_seeds build/fuzz/seeds
}

# The maximum useful input length: a few sectors for raw images, less for the others.
longest_of() {
    case $1 in
    bin) echo 60000 ;;
    words) echo 600 ;;
    lz4) echo 1500 ;;
    facts | wav) echo 4096 ;;
    *) echo 12000 ;;
    esac
}

# Removes findings that do not recur: on a busy machine, inputs can seem slow or large that are not.
drop_unreproducible_findings() {
    local input
    for input in "$artifacts/$1"/{timeout,slow-unit,oom}-*; do
        if [ -e "$input" ] && build/fuzz/bin/fuzz_"$1" "${limits[@]}" "$input" >/dev/null 2>&1 </dev/null; then
            rm "$input"
        fi
    done
}

run_target() {
    local target=$1 seconds=$2 log=build/fuzz/fuzz_$1.log dictionary=() findings
    mkdir -p "$grown/$target" "$artifacts/$target" "fuzz/corpus/$target"
    rm -f "$artifacts/$target"/*
    [ ! -e "fuzz/$target.dict" ] || dictionary=(-dict="fuzz/$target.dict")
    build/fuzz/bin/fuzz_"$target" -fork=2 -max_total_time="$seconds" -max_len="$(longest_of "$target")" \
        "${limits[@]}" "${dictionary[@]}" -artifact_prefix="$artifacts/$target/" \
        "$grown/$target" "fuzz/corpus/$target" "build/fuzz/seeds/$target" >"$log" 2>&1 </dev/null || true
    drop_unreproducible_findings "$target"
    findings=$(find "$artifacts/$target" -type f | wc -l)
    # The last status line of a job is "#EXECUTIONS: cov: EDGES ft: FEATURES corp: INPUTS ...".
    awk -v target="$target" -v findings="$findings" '
        /^#[0-9]+: cov:/ { executions = substr($1, 2) + 0; edges = $3; features = $5; inputs = $7 }
        END {
            printf "%-12s %10d executions, %6d edges, %6d features, %5d inputs, %d findings\n",
                target, executions, edges, features, inputs, findings
            exit executions == 0 || findings > 0
        }' "$log" || {
        find "$artifacts/$target" -type f
        tail -n 5 "$log"
        return 1
    }
}

merge_target() {
    local target=$1 merged=build/fuzz/merged/$1
    rm -rf "$merged"
    mkdir -p "$merged" "fuzz/corpus/$target"
    # Inputs of findings have names with a '-' and are always kept.
    find "fuzz/corpus/$target" -type f -name '*-*' -exec cp {} "$merged" \;
    # Keeps the fewest inputs that reach every edge. Counting how often would keep ten times as many.
    build/fuzz/bin/fuzz_"$target" -set_cover_merge=1 -use_counters=0 -max_len="$(longest_of "$target")" "${limits[@]}" \
        "$merged" "fuzz/corpus/$target" "build/fuzz/seeds/$target" "$grown/$target" >build/fuzz/merge_"$target".log 2>&1
    rm -rf "fuzz/corpus/$target"
    mv "$merged" "fuzz/corpus/$target"
    echo "$target: $(find "fuzz/corpus/$target" -type f | wc -l) inputs, $(du -sb "fuzz/corpus/$target" | cut -f 1) bytes"
}

# Reports the lines and branches that unit and console tests reach, and those that seeds and corpora reach. Left out are
# tests that measure sizes or memory.
measure_coverage() {
    local target build=build/coverage
    build_preset native make_seeds
    build_preset coverage
    build/native/bin/make_seeds build/fuzz/seeds
    rm -rf "$build/profiles"
    export LLVM_PROFILE_FILE=$PWD/$build/profiles/%4m.profraw
    ctest --test-dir "$build" -E 'memory_limit|fuzz|oracle|lz4_size' -j "$(nproc)" >build/coverage_tests.log 2>&1 </dev/null ||
        echo "some tests failed; see build/coverage_tests.log" >&2
    scripts/coverage.py measure "$build" build/tests.json
    for target in $all_targets; do
        mkdir -p "$grown/$target"
        "$build/bin/fuzz_$target" "fuzz/corpus/$target" "build/fuzz/seeds/$target" "$grown/$target" \
            >build/fuzz/coverage_"$target".log 2>&1
    done
    scripts/coverage.py measure "$build" build/fuzzers.json
    scripts/coverage.py table build/tests.json build/fuzzers.json
    echo "Of the engine, the tests do not reach, and tests/uncovered does not name:"
    scripts/coverage.py missing build/tests.json operation pipeline files iso iml raw compress image
}

action=$1
shift
if [ "$action" = coverage ]; then
    measure_coverage
    exit
fi
status=0
if [ "$action" = run ]; then
    case ${1-} in
    '' | *[!0-9]*)
        echo "usage: ./check --fuzz SECONDS [TARGET...]" >&2
        exit 2
        ;;
    esac
    seconds=$1
    shift
fi
build
case $action in
run)
    for target in ${*:-$all_targets}; do
        run_target "${target#fuzz_}" "$seconds" || status=1
    done
    ;;
merge)
    for target in ${*:-$all_targets}; do
        merge_target "${target#fuzz_}"
    done
    ;;
esac
exit $status
