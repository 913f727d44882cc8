#!/usr/bin/env bash
# Runs the fuzzers; ./check --fuzz calls this.
#
#   fuzz.sh run SECONDS [TARGET...]   each target for so long with two workers; non-zero when there is a finding
#   fuzz.sh merge [TARGET...]         takes what the grown corpus covers beyond fuzz/corpus into fuzz/corpus
#   fuzz.sh coverage                  which lines of every room seeds and both corpora reach
#
# The grown corpus lies in build/fuzz/corpus, findings in build/fuzz/artifacts.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

all_targets=$(sed -n 's/^vantrel_fuzz_target(\([a-z]*\).*/\1/p' fuzz/CMakeLists.txt)
grown=build/fuzz/corpus
artifacts=build/fuzz/artifacts
# Memory is checked far below what a machine has: nothing here may take it by a claim.
limits=(-timeout=60 -rss_limit_mb=1024 -malloc_limit_mb=64)
export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1:quarantine_size_mb=16
export UBSAN_OPTIONS=print_stacktrace=1

build() {
    echo "Building the fuzzers"
    build_preset native make_seeds
    build_preset fuzz fuzzers
    build/native/bin/make_seeds build/fuzz/seeds
}

# The longest input that makes sense: a few sectors for raw images, less for the rest.
longest_of() {
    case $1 in
    bin) echo 60000 ;;
    words) echo 600 ;;
    wav) echo 4096 ;;
    *) echo 12000 ;;
    esac
}

# A machine that was busy, or stopped the fuzzer for a while, lets inputs seem slow that are not.
drop_chance_findings() {
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
    drop_chance_findings "$target"
    findings=$(find "$artifacts/$target" -type f | wc -l)
    # The last line of a job tells "#EXECUTIONS: cov: EDGES ft: FEATURES corp: INPUTS ...".
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
    # What was named by hand stays: the inputs of findings.
    find "fuzz/corpus/$target" -type f -name '*-*' -exec cp {} "$merged" \;
    # The fewest inputs that reach every edge; how often an edge is passed would keep ten times as many.
    build/fuzz/bin/fuzz_"$target" -set_cover_merge=1 -use_counters=0 -max_len="$(longest_of "$target")" "${limits[@]}" \
        "$merged" "fuzz/corpus/$target" "build/fuzz/seeds/$target" "$grown/$target" >build/fuzz/merge_"$target".log 2>&1
    rm -rf "fuzz/corpus/$target"
    mv "$merged" "fuzz/corpus/$target"
    echo "$target: $(find "fuzz/corpus/$target" -type f | wc -l) inputs, $(du -sb "fuzz/corpus/$target" | cut -f 1) bytes"
}

# The lines of every room that seeds and corpora reach.
measure_coverage() {
    local target build=build/coverage
    build_preset native make_seeds
    build_preset coverage fuzzers
    build/native/bin/make_seeds build/fuzz/seeds
    find "$build" -name '*.gcda' -delete
    for target in $all_targets; do
        mkdir -p "$grown/$target"
        "$build/bin/fuzz_$target" "fuzz/corpus/$target" "build/fuzz/seeds/$target" "$grown/$target" \
            >build/fuzz/coverage_"$target".log 2>&1
    done
    scripts/coverage.py "$build" operation files pieces iso iml raw compress image console app
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
