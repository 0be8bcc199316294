#!/bin/sh
# Builds the library with g++ and clang at -O0, -O2 and -O3, with and without assertions, and checks that
# every build gives the pinned results of whole sessions. Some ten minutes on two cores.
#   BUILDS  folder for the builds, build/compare by default
set -eu
cd "$(dirname "$0")/.."
builds=${1:-build/compare}

scripts/setup.sh --dev
# The sessions are built once: they look for the library where LD_LIBRARY_PATH says.
cmake -S . -B "$builds/host" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$builds/host" --target segcore-session-digests

different=
for compiler in g++ clang++; do
    for level in -O0 -O2 -O3; do
        for checks in -D_GLIBCXX_ASSERTIONS -DNDEBUG; do
            build=$builds/$compiler$level$checks
            cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
                -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS_RELEASE="$level $checks" \
                -DSEGCORE_CLI=OFF -DSEGCORE_TESTS=OFF >/dev/null
            cmake --build "$build" --target SegmentationCore >"$build/log" ||
                { cat "$build/log"; exit 1; }
            if LD_LIBRARY_PATH=$build/core "$builds/host/tests/sessions/segcore-session-digests" \
                tests/sessions/digests.txt; then
                echo "$compiler $level $checks: the same"
            else
                different="$different $compiler$level$checks"
            fi
        done
    done
done
[ -z "$different" ] || { echo "different:$different"; exit 1; }
