#!/bin/sh
# Plants the faults of tests/mutants.txt one by one in a copy of the tree and checks that each is
# caught: by the pinned results of whole sessions, or else by the tests that the fault names. Ends
# with the faults that nothing catches, which are an error, as is a fault that changes nothing any
# more. Some seven minutes on two cores.
#   WORD  only the faults with this word in their name
set -eu
cd "$(dirname "$0")/.."
wanted=${1-}
copy=build/mutants/tree
build=build/mutants/build

scripts/setup.sh
mkdir -p "$copy"
# Times are kept, so a second run compiles only what changed since the first.
git ls-files -z --cached --others --exclude-standard |
    xargs -0 sh -c 'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' sh |
    tar --null -T - -c | tar -x -C "$copy"
faults=$PWD/tests/mutants.txt
# An interrupted run left its fault in the object file.
sed -n 's/^file: *//p' "$faults" | sort -u | (cd "$copy" && xargs touch)
# The tests load the library when they run, so a fault in it relinks nothing but the library.
cmake -S "$copy" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_LINK_DEPENDS_NO_SHARED=ON >/dev/null
cmake --build "$build" >build/mutants/log 2>&1 || { cat build/mutants/log; exit 1; }

# Digests, then the tests that the fault names. True when none of them sees the fault.
survives() { # TESTS
    "$build/tests/sessions/segcore-session-digests" tests/sessions/digests.txt \
        >build/mutants/log 2>&1 || return 1
    [ -n "$1" ] || return 0
    ctest --test-dir "$build" -R "$1" --no-tests=error -j "$(nproc)" >build/mutants/log 2>&1
}
survives "$(sed -n 's/^tests: *//p' "$faults" | sort -u | paste -sd '|')" ||
    { cat build/mutants/log; echo "the tests fail without any fault"; exit 1; }

caught=0
missed=
plant() { # NAME FILE EDIT TESTS
    cp -p "$copy/$2" build/mutants/original
    sed -E "$3" build/mutants/original >"$copy/$2"
    if cmp -s build/mutants/original "$copy/$2"; then
        missed="$missed
  $1: changes nothing in $2 any more"
    elif ! cmake --build "$build" >build/mutants/log 2>&1; then
        missed="$missed
  $1: does not compile, see build/mutants/log"
        cp build/mutants/log "build/mutants/log-$caught"
    elif survives "$4"; then
        missed="$missed
  $1: caught by nothing"
    else
        caught=$((caught + 1))
        echo "caught: $1"
    fi
    # With a new time, so that the object file is made again.
    cat build/mutants/original >"$copy/$2"
}

name= file= edit= tests=
# A blank line ends a fault; one more ends the last.
{ cat "$faults"; echo; } >build/mutants/faults
while IFS= read -r line; do
    case $line in
        '#'*) ;;
        'fault: '*) name=${line#fault: } ;;
        'file: '*) file=${line#file: } ;;
        'edit: '*) edit=${line#edit: } ;;
        'tests: '*) tests=${line#tests: } ;;
        '')
            case $name in
                *"$wanted"*) [ -z "$name" ] || plant "$name" "$file" "$edit" "$tests" ;;
            esac
            name= file= edit= tests=
            ;;
        *) echo "tests/mutants.txt: what is \"$line\"?"; exit 1 ;;
    esac
done <build/mutants/faults
echo "$caught faults caught"
[ -z "$missed" ] || { echo "not caught:$missed"; exit 1; }
