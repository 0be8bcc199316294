#!/bin/sh
# Runs a box request on the engine of another commit and on the present one in turns and prints how
# the medians compare.
#   COMMIT  whose engine to compare with
#   ROUNDS  runs of each, 7 by default
set -eu
cd "$(dirname "$0")/.."
commit=${1:?usage: $0 COMMIT [ROUNDS]}
rounds=${2:-7}

# The other engine under the present benchmarks, so that both are measured alike.
other=build/bench-other
rm -rf "$other/source"
mkdir -p "$other/source"
git archive "$commit" | tar -x -C "$other/source"
rm -rf "$other/source/bench" "$other/source/samples"
cp -r bench samples "$other/source/"
cmake -S "$other/source" -B "$other/build" -G Ninja \
    -DSEGCORE_BENCH=ON -DSEGCORE_TESTS=OFF -DSEGCORE_CLI=OFF
cmake --build "$other/build" --target segcore-bench-profile
cmake --preset bench
cmake --build --preset bench --target segcore-bench-profile

rm -f "$other/before.csv" "$other/after.csv"
export SEGCORE_BENCH_COMMIT
for round in $(seq "$rounds"); do
    for size in --working '--megapixels 12'; do
        # shellcheck disable=SC2086 # one argument a word
        {
            SEGCORE_BENCH_COMMIT=$commit
            "$other/build/bench/segcore-bench-profile" $size --runs 1 --csv "$other/before.csv"
            SEGCORE_BENCH_COMMIT=present
            build/bench/bench/segcore-bench-profile $size --runs 1 --csv "$other/after.csv"
        } >/dev/null 2>>"$other/log"
    done
    echo "round $round of $rounds"
done
bench/report.py "$other/after.csv" --before "$other/before.csv"
