#!/bin/sh
# Installs what is missing, builds and runs every test. The last lines are ctest's summary.
#   PRESET   a preset of CMakePresets.json, `release` by default; others may need setup.sh --dev
set -eu
cd "$(dirname "$0")/.."
preset=${1:-release}

scripts/setup.sh --tests
cmake --preset "$preset"
cmake --build --preset "$preset"
exec ctest --preset "$preset" -j "$(nproc)"
