#!/bin/sh
# Installs what the project needs to build and test itself and is not there yet (Debian 12).
#   --tests  also the shells whose completions are tested
#   --fuzz   also what the fuzzers need: clang with its run-time libraries
#   --dev    also everything that only contributors need: clang, clang-tidy, benchmarks, valgrind
#   --armhf  also what scripts/test-armhf.sh needs: cross compiler, emulator
set -eu

packages="build-essential cmake ninja-build pkg-config git clang-format
    libopencv-core-dev libopencv-imgproc-dev libopencv-imgcodecs-dev android-liblog-dev
    libvips-dev liblcms2-dev libtiff-dev libheif-dev zlib1g-dev libcli11-dev nlohmann-json3-dev
    libxxhash-dev libeigen3-dev libgtest-dev icc-profiles-free"
test_packages="zsh fish"
fuzz_packages="clang libclang-rt-dev llvm"
case "${1-}" in
    '') ;;
    --tests) packages="$packages $test_packages" ;;
    --fuzz) packages="$packages $fuzz_packages" ;;
    --dev)
        packages="$packages $test_packages $fuzz_packages
            clang-tidy libbenchmark-dev libboost-dev valgrind"
        ;;
    --armhf) packages="$packages crossbuild-essential-armhf qemu-user mmdebstrap" ;;
    *) echo "usage: $0 [--tests | --fuzz | --dev | --armhf]" >&2; exit 2 ;;
esac

if ! command -v dpkg-query >/dev/null; then
    echo "setup: no Debian packages on this system; install these by hand:" $packages >&2
    exit 0
fi

missing=
for package in $packages; do
    status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    if [ "$status" != "install ok installed" ]; then
        missing="$missing $package"
    fi
done
if [ -z "$missing" ]; then
    exit 0
fi

as_root=
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: as root, run: apt-get install$missing" >&2
        exit 1
    fi
    as_root=sudo
fi
echo "setup: installing$missing"
$as_root apt-get update -q
# shellcheck disable=SC2086 # one argument a package
$as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends $missing
