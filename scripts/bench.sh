#!/bin/sh
# Builds and runs the benchmarks, records the run in bench/results/ and rewrites bench/README.md.
#   --quick    without grabCut on the full photograph and with fewer repetitions
#   FOLDER...  more photographs for the sessions, beside samples/
set -eu
cd "$(dirname "$0")/.."
repetitions=7
full_runs=5
if [ "${1-}" = --quick ]; then
    repetitions=3
    full_runs=0
    shift
fi

scripts/setup.sh --dev
cmake --preset bench
cmake --build --preset bench
programs=build/bench/bench

commit=$(git rev-parse --short HEAD)
if [ -n "$(git status --porcelain -- core CMakeLists.txt cmake)" ]; then
    commit="$commit-changed"
fi
export SEGCORE_BENCH_COMMIT="$commit"
results=bench/results/$(date -u +%Y-%m-%d)-$commit.csv
log=build/bench/bench.log
rm -f "$results"

folders=
for folder; do
    folders="$folders --photos $folder"
done

# The engine logs what it does on standard error.
run() {
    echo "== $*"
    "$@" 2>>"$log"
}
run "$programs/segcore-bench-profile" --working --runs 21 --csv "$results"
run "$programs/segcore-bench-profile" --megapixels 12 --runs "$repetitions" --csv "$results"
run "$programs/segcore-bench-stages" --csv "$results" --benchmark_repetitions="$repetitions" \
    --benchmark_min_time=0.1 --benchmark_report_aggregates_only=true
# shellcheck disable=SC2086 # one argument a word
run "$programs/segcore-bench-sessions" --csv "$results" $folders
run "$programs/segcore-bench-corrections" --csv "$results"
run "$programs/segcore-bench-matting" --benchmark_out_format=json \
    --benchmark_out="${results%.csv}-matting.json"
run "$programs/segcore-bench-peers" --csv "$results" --full-runs "$full_runs"
run "$programs/segcore-bench-block-max-flow" --csv "$results"
run bench/count_instructions.py "$programs/segcore-bench-profile" "$results" --working
run bench/count_instructions.py "$programs/segcore-bench-profile" "$results" --megapixels 12

plots=
if command -v gnuplot >/dev/null; then
    plots="--plots bench/results"
else
    echo "gnuplot is not installed: the plots stay as they were" >&2
fi
# shellcheck disable=SC2086
bench/report.py "$results" --readme bench/README.md $plots
echo "recorded in $results"
