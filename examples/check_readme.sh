#!/bin/sh
# check_readme.sh README: the README's C and C++ programs are the example files, to the byte.
set -eu
readme=$1
here=$(dirname "$0")

for language in c cpp; do
    awk -v open="\`\`\`$language" '$0 == open { inside = 1; next } /^```/ { inside = 0 } inside' \
        "$readme" | diff -u "$here/cut_box.$language" -
done
