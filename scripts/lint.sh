#!/bin/sh
# Checks the C and C++ sources' formatting, and with --tidy also runs clang-tidy over them, against
# the release build's compile commands. --fix formats them instead.
set -eu
cd "$(dirname "$0")/.."

sources() {
    git ls-files -z -- '*.c' '*.h' '*.cpp'
}

case "${1-}" in
    '' | --tidy) sources | xargs -0 clang-format --dry-run -Werror ;;
    --fix) sources | xargs -0 clang-format -i ;;
    *) echo "usage: $0 [--tidy | --fix]" >&2; exit 2 ;;
esac
if [ "${1-}" = --tidy ]; then
    cmake --preset release >/dev/null
    # Only what the build compiles has compile commands.
    git ls-files -- 'core/*.cpp' 'hosts/*.cpp' |
        xargs -n 1 -P "$(nproc)" clang-tidy --quiet -p build/release
fi
