#!/bin/sh
# Makes the pictures of README.md and docs/ anew, from samples/.
set -eu
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset doc-images
cmake --build --preset doc-images
mkdir -p docs/images
build/doc-images/docs/make-doc-images samples docs/images
