#!/bin/sh
# What the margin search changes: cuts the photographs of a folder without it and with it and prints
# a Markdown table: the region of the first case, what was cut off it, and the error of every case in
# percent, before and after. Builds the library twice, the second time from a copy in which the
# search is switched off.
#
#   bench/compare-margins.sh FOLDER [OPTION OF segcore-bench-margins...]
#
# BUILD=DIRECTORY keeps the builds for the next time.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
[ $# -gt 0 ] || { sed -n '2,9s/^#//p' "$0" >&2; exit 2; }

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
build=${BUILD:-$scratch}
mkdir -p "$build/off-tree"
tar -C "$root" --exclude=./build --exclude=./.git -cf - . | tar -C "$build/off-tree" -xf -
search=$build/off-tree/core/engine/margin_search.cpp
sed -i 's/^\(constexpr int kTries = \)[0-9]*;/\10;/' "$search"
grep -q '^constexpr int kTries = 0;' "$search" || { echo "the search's tries are gone" >&2; exit 1; }

# build NAME SOURCES
build() {
    {
        cmake -S "$2" -B "$build/$1" -DCMAKE_BUILD_TYPE=Release -DSEGCORE_BENCH=ON \
            -DSEGCORE_CLI=OFF -DSEGCORE_TESTS=OFF
        cmake --build "$build/$1" -j "$(nproc)" --target segcore-bench-margins
    } >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2; exit 1; }
}

build on "$root"
build off "$build/off-tree"
for kind in off on; do
    "$build/$kind/bench/segcore-bench-margins" "$@" 2>/dev/null >"$scratch/$kind"
done

awk '
    /^photograph/ { next }
    { key = $1 SUBSEP $2; split($4, size, /[x+]/) }
    FNR == NR { area[key] = size[1] * size[2]; error[key] = $3; outside[key] = $7; next }
    !($1 in row) {  # the region of the first case
        names[++photos] = $1
        cut = area[key] - size[1] * size[2]
        row[$1] = sprintf("| %s | %s | %d | %.1f %% | %s |", $1, $4, cut, 100 * cut / area[key],
                          NF > 4 ? $7 - outside[key] : "-")
    }
    !($2 in seen) { seen[$2]; cases = cases " " $2 " |"; rule = rule "---|" }
    { row[$1] = row[$1] " " (error[key] == $3 ? $3 : error[key] " → **" $3 "**") " |" }
    END {
        print "| photograph | region | pixels cut off | share | of the object |" cases
        print "|---|---|---:|---:|---:|" rule
        for (i = 1; i <= photos; ++i) print row[names[i]]
    }' "$scratch/off" "$scratch/on"
