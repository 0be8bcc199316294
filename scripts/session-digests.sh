#!/bin/sh
# Prints a digest of everything that the named sessions deliver, a line an output: the mask after each
# step, the preview and the outline. Builds that keep to the same arithmetic print the same lines.
#   BUILD       a build folder with the command line and the tests' stopped clock
#   COMMAND...  what runs its programs, for an emulated processor
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
[ $# -gt 0 ] || { echo "usage: $0 BUILD [COMMAND...]" >&2; exit 2; }
build=$(cd "$1" && pwd)
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

clock=$build/tests/support/libsegcore_stopped_clock.so
if [ $# -gt 0 ]; then
    set -- "$@" -E LD_PRELOAD="$clock"
else
    set -- env LD_PRELOAD="$clock"
fi
for session in "$here"/samples/*.json "$here"/tests/sessions/*.json; do
    name=$(basename "$session" .json)
    mkdir "$work/$name"
    "$@" "$build/hosts/cli/segcore" replay "$session" --dump-steps "$work/$name" \
        --preview "$work/$name/preview.png" --json "$work/$name/outline.json" </dev/null
done
cd "$work"
sha256sum -- */* | sed 's/^\(.\{16\}\)[^ ]* /\1/'
