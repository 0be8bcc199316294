#!/bin/sh
# What the session library asks of others: no files, signals, image formats, processes or log, and of
# the core nothing but the calls of the public header.
#   NM       of the compiler
#   ARCHIVE  the session library
#   CORE     the core's shared library
#   HEADER   the public one
set -eu
[ $# = 4 ] || { echo "usage: $0 NM ARCHIVE CORE HEADER" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$1" -u "$2" | sed -n 's/^ *U //p' | sort -u >"$work/asked"
"$1" -uC "$2" | sed -n 's/^ *U //p' | sort -u >"$work/readable"
"$1" -D --defined-only "$3" | sed 's/.* //; s/@.*//' | sort -u >"$work/core"
grep -oE '\b[A-Za-z_]+\(' "$4" | tr -d '(' | sort -u >"$work/header"

# The lists themselves have to be what they are taken for.
for call in setSourceImage processSegment cutOutImage; do
    for list in asked core header; do
        grep -qx "$call" "$work/$list" || { echo "$call is missing in $list" >&2; exit 1; }
    done
done

bad=$(
    comm -12 "$work/asked" "$work/core" | comm -23 - "$work/header"
    grep -E 'cv::(imread|imwrite|imdecode|imencode|VideoCapture)|std::filesystem|basic_[io]?f(stream|ilebuf)' \
        "$work/readable" || true
    grep -xE '(sig[a-z]+|signal|raise|kill|pthread_(kill|sigmask)|f?open(64|at)?|freopen(64)?|read|write|pread|pwrite|f?stat(64)?|mkdir|unlink|rename|mkstemp|dup2?|poll|select|fork|exec[a-z]*|system|popen|getrusage|getenv|__android_log_[a-z_]+)' \
        "$work/asked" || true
)
[ -z "$bad" ] || { printf 'hosts/session/ must not need:\n%s\n' "$bad" >&2; exit 1; }
