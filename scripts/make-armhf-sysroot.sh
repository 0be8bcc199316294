#!/bin/sh
# Unpacks Debian's armhf packages that the library, the command line and the tests are built against.
#   FOLDER  where to; made anew unless it holds what this script would unpack
set -eu
folder=${1:?usage: $0 FOLDER}
packages=libc6-dev,libstdc++-12-dev,libopencv-core-dev,libopencv-imgproc-dev,libopencv-imgcodecs-dev
packages=$packages,libvips-dev,liblcms2-dev,libtiff-dev,libheif-dev,zlib1g-dev,android-liblog-dev,libcli11-dev
packages=$packages,nlohmann-json3-dev,libxxhash-dev,libeigen3-dev,libgtest-dev
suite=bookworm
[ "$(cat "$folder/packages" 2>/dev/null)" != "$suite $packages" ] || exit 0

# The main suite alone: the security suite's index for another architecture can be out of step.
# shellcheck disable=SC2016 # a field's name for apt-get
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Identifier: Packages' "Codename: $suite" \
    'Component: main' | head -n 1)
rm -rf "$folder"
mkdir -p "$(dirname "$folder")"
mmdebstrap --variant=extract --architectures=armhf --include="$packages" \
    "$suite" "$folder" "deb $mirror $suite main"

# What the packages' scripts do, which cannot run here.
lib=$folder/usr/lib/arm-linux-gnueabihf
ln -s blas/libblas.so.3 lapack/liblapack.so.3 android/liblog.so.0 "$lib"
echo "$suite $packages" >"$folder/packages"
