#!/bin/sh
# check_install.sh BUILD_DIR: installs a build to a prefix of its own, builds the examples against it
# by find_package and by pkg-config, cuts a disc out of a picture with each of them, and holds the
# installed headers against their rule.
#   CC, CXX    compilers
#   SANITIZE   sanitizers that the build was made with, if any
#   CLI        ON: the command line has to be there, too, and to replay the sample sessions
set -eu
build=$1
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
: "${CC:=cc}" "${CXX:=c++}" "${CLI:=OFF}"
flags="-Wall -Wextra -Werror ${SANITIZE:+-fsanitize=$SANITIZE}"
# Leaks are looked for in the library's own tests; the examples leave their buffers to the system.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
# The installed tree has to do without help from the environment.
unset LD_LIBRARY_PATH CMAKE_PREFIX_PATH PKG_CONFIG_PATH

cmake --install "$build" --prefix "$prefix" >"$work/install.log"

# configure SOURCE BUILD [OPTION..]: a project that finds the library in the prefix.
configure() {
    source=$1 binary=$2
    shift 2
    CFLAGS="-std=c99 -pedantic $flags" CXXFLAGS="$flags" CC="$CC" CXX="$CXX" \
        cmake -G Ninja -S "$source" -B "$binary" -DCMAKE_PREFIX_PATH="$prefix" "$@"
}
# project SOURCE BUILD [OPTION..]: the same, built.
project() {
    { configure "$@" && cmake --build "$2"; } >"$work/project.log" 2>&1 ||
        { cat "$work/project.log"; exit 1; }
}

without_opencv="-DCMAKE_DISABLE_FIND_PACKAGE_OpenCV=ON -DCMAKE_DISABLE_FIND_PACKAGE_SegcoreOpenCV=ON"
# shellcheck disable=SC2086 # two options
project "$here" "$work/plain_c" -DEXAMPLES_IN_CPP=OFF $without_opencv
project "$here" "$work/examples"

engine=$here/../tests/exports/installed
project "$engine" "$work/engine"
"$work/engine/library_data"
# shellcheck disable=SC2086 # two options
if configure "$engine" "$work/hidden" $without_opencv >"$work/hidden.log" 2>&1; then
    echo "OpenCV is not hidden: the engine's headers were offered"
    exit 1
fi
grep -q SegcoreOpenCV "$work/hidden.log"

pc=$(find "$prefix" -name SegmentationCore.pc)
[ -n "$pc" ] || { echo "no pkg-config file installed"; exit 1; }
export PKG_CONFIG_PATH="${pc%/*}"
libdir=$(pkg-config --variable=libdir SegmentationCore)
# shellcheck disable=SC2046,SC2086 # lists of flags
$CC -std=c99 $flags "$here/cut_box.c" -o "$work/cut_box_pkgconfig" \
    $(pkg-config --cflags --libs SegmentationCore) -Wl,-rpath,"$libdir"
# A program that reads the library's data, with the compiler's own default of other code.
cat >"$work/reader.c" <<'END'
#include <segmentation_core.h>
extern float g_imageResizeFactor;
int main(void) {
    static uint32_t photo[640 * 480]; /* four times as large as the working image */
    setSourceImage(640, 480, photo);
    initSegmentationEngine(0);
    return g_imageResizeFactor > 1.9F ? 0 : 1;
}
END
# shellcheck disable=SC2046,SC2086 # lists of flags
$CC -std=c99 $flags "$work/reader.c" -o "$work/reader" \
    $(pkg-config --cflags --libs SegmentationCoreEngine) -Wl,-rpath,"$libdir"
"$work/reader"

# 80 x 60: a blue disc of radius 18 around (40, 30) on orange, both with some grain. The bytes stay
# within 1..255, which every awk can write.
LC_ALL=C awk 'BEGIN {
    printf "P6\n80 60\n255\n"
    for (y = 0; y < 60; ++y) for (x = 0; x < 80; ++x) {
        grain = (x * 7 + y * 13 + x * y) % 23
        if ((x - 40) ^ 2 + (y - 30) ^ 2 <= 18 ^ 2) printf "%c%c%c", 30 + grain, 60 + grain, 180 + grain
        else printf "%c%c%c", 200 + grain, 130 + grain, 40 + grain
    }
}' >"$work/disc.ppm"
# The mask that is right: 0 is not writable by every awk, so both are compared as text.
awk 'BEGIN { for (y = 0; y < 60; ++y) for (x = 0; x < 80; ++x)
    print (x - 40) ^ 2 + (y - 30) ^ 2 <= 18 ^ 2 ? 0 : 255 }' >"$work/right.txt"

# cut PROGRAM WRONG: at most so many of the mask's pixels may be wrong.
cut() {
    "$work/$1" "$work/disc.ppm" 14 6 66 54 "$work/mask.pgm"
    tail -c 4800 "$work/mask.pgm" | od -An -v -tu1 -w1 | tr -d ' ' >"$work/mask.txt"
    wrong=$(paste "$work/mask.txt" "$work/right.txt" | awk '$1 != $2' | wc -l)
    echo "$1: $wrong of 4800 pixels wrong"
    [ "$wrong" -le "$2" ]
    rm "$work/mask.pgm"
}
for program in plain_c/cut_box_c examples/cut_box_c cut_box_pkgconfig; do
    cut $program 48 # the disc's outline is 113 pixels long
done
cut plain_c/edit_session 48

"$work/examples/cut_box_cpp" "$work/disc.ppm" 14 6 66 54 "$work/cutout.png"
[ -s "$work/cutout.png" ]

# Each tells a person what it wants, and neither a missing file nor a strange box crashes it.
refused() {
    status=0
    "$@" >"$work/said.txt" 2>&1 || status=$?
    [ "$status" -eq 1 ] && [ -s "$work/said.txt" ] ||
        { echo "status $status: $*"; cat "$work/said.txt"; exit 1; }
}
for program in examples/cut_box_c examples/cut_box_cpp examples/edit_session; do
    refused "$work/$program"
    grep -q '^usage: ' "$work/said.txt"
    refused "$work/$program" "$work/no-such.ppm" 14 6 66 54 "$work/mask.pgm"
    refused "$work/$program" "$work/disc.ppm" 14 6 66 54 "$work/no-such-folder/mask.pgm"
done
for program in examples/cut_box_cpp examples/edit_session; do
    refused "$work/$program" "$work/disc.ppm" 80 60 99 99 "$work/mask.pgm"
done

if [ "$CLI" = ON ]; then
    for session in "$here"/../samples/*.json; do
        "$prefix/bin/segcore" replay "$session" --mask "$work/mask.png"
        [ -s "$work/mask.png" ]
        rm "$work/mask.png"
    done
fi
