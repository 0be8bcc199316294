#!/bin/sh
# Runs the fuzzers of the host calls, of session files and of picture files side by side, under the
# address and undefined-behaviour sanitizers, starting from fuzz/corpus/. New inputs are kept in
# build/fuzz/corpus/, findings as build/fuzz/findings/FUZZER-*. Ends with a line for each fuzzer, and
# with an error after a finding.
#   MINUTES   how long; 1 by default
# To run a finding again: build/fuzz/fuzz/segcore-fuzz-FUZZER FINDING
set -eu
cd "$(dirname "$0")/.."
minutes=${1:-1}

scripts/setup.sh --fuzz
cmake --preset fuzz
cmake --build --preset fuzz

fuzz() { # FUZZER LONGEST_INPUT [OPTION...]
    name=$1
    longest=$2
    shift 2
    corpus=build/fuzz/corpus/$name
    mkdir -p "$corpus" build/fuzz/findings
    build/fuzz/fuzz/segcore-fuzz-"$name" -max_total_time=$((minutes * 60)) -timeout=60 \
        -rss_limit_mb=3000 -len_control=0 -max_len="$longest" -print_final_stats=1 \
        -artifact_prefix=build/fuzz/findings/"$name"- "$@" \
        "$corpus" fuzz/corpus/"$name" >build/fuzz/"$name".log 2>&1
}
fuzz host-calls 600 &
calls=$!
fuzz session-files 3000 -dict=fuzz/session-files.dict &
files=$!
fuzz picture-files 4000 &
pictures=$!

status=0
wait "$calls" || status=1
wait "$files" || status=1
wait "$pictures" || status=1
for name in host-calls session-files picture-files; do
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' build/fuzz/"$name".log)
    echo "$name: ${executions:-?} executions, log in build/fuzz/$name.log"
done
if [ "$status" -ne 0 ]; then
    grep -hE 'broken promise|ERROR|SUMMARY' build/fuzz/*.log >&2 || true
    echo "findings in build/fuzz/findings/" >&2
fi
exit "$status"
