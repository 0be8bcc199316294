#!/bin/sh
# Builds the library, the command line and the tests for 32-bit ARM with Debian's cross compiler, runs
# every test under qemu's user emulation, the pinned results of whole sessions among them, and segments a
# photograph of twelve megapixels. Some twenty minutes on two cores.
#   BUILDS  folder for the packages and the builds, build/ by default
set -eu
cd "$(dirname "$0")/.."
mkdir -p "${1:-build}"
builds=$(cd "${1:-build}" && pwd)
sysroot=$builds/armhf-sysroot
run="qemu-arm -L $sysroot"

scripts/setup.sh --armhf
scripts/make-armhf-sysroot.sh "$sysroot"
cmake -S . -B "$builds/armhf" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/armhf.cmake -DSEGCORE_ARMHF_SYSROOT="$sysroot"
cmake --build "$builds/armhf"
# Left out: interrupts, which the emulator hands to any of a process's threads, also to one that blocks
# them, and the sweeps over failing allocations, which are thousands of sessions.
QEMU_SET_ENV=LD_PRELOAD=$builds/armhf/tests/support/libsegcore_stopped_clock.so \
    ctest --test-dir "$builds/armhf" -j "$(nproc)" --output-on-failure -E 'Interrupt|Sweeps'

echo "== twelve megapixels"
LC_ALL=C awk -v width=4000 -v height=3000 'BEGIN {
    printf "P6\n%d %d\n255\n", width, height
    for (y = 0; y < height; ++y) for (x = 0; x < width; ++x) {
        grain = (x * 7 + y * 13 + x * y) % 23
        if ((x - 2000) ^ 2 + (y - 1500) ^ 2 <= 900 ^ 2) printf "%c%c%c", 30 + grain, 60 + grain, 180 + grain
        else printf "%c%c%c", 200 + grain, 130 + grain, 40 + grain
    }
}' >"$builds/large.ppm"
$run -E LD_PRELOAD="$builds/armhf/tests/support/libsegcore_stopped_clock.so" \
    "$builds/armhf/hosts/cli/segcore" cut "$builds/large.ppm" --box 900,400,3100,2600 \
    --brush-remove 1000,500 1100,600 --undo --mask "$builds/large.png" --stats
