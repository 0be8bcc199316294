#!/bin/sh
# Installs what is missing, builds the command line and cuts the object out of a sample photograph:
# mask, cut-out and preview lie in demo-output/ afterwards.
set -eu
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release
cmake --build --preset release --target segcore

out=demo-output
mkdir -p "$out"
build/release/hosts/cli/segcore cut samples/coffee.png --passes 1 --box 70,14,486,390 \
    --mask "$out/mask.png" --cutout "$out/cutout.png" --preview "$out/preview.png" --stats
echo
echo "The cup, cut out of samples/coffee.png: $out/mask.png, $out/cutout.png, $out/preview.png"
