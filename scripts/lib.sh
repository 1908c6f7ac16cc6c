# What the scripts share. To be sourced: each script then stands in the project's root.
# shellcheck shell=bash

set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "$*"
    exit 1
}

# How many things to do at once.
jobs_at_once() { getconf _NPROCESSORS_ONLN; }

# tests_at_once PRESET: most tests wait for another process most of the time, unless a
# sanitizer keeps the processors busy.
tests_at_once() {
    case $1 in
        asan | tsan) echo $((3 * $(jobs_at_once) / 2)) ;;
        *) echo $((3 * $(jobs_at_once))) ;;
    esac
}

# tool NAME: the command of that name in the version our settings are written for, else in
# the version there is.
tool() {
    command -v "$1-14" || command -v "$1" || fail "$1 is missing: scripts/bootstrap --checks"
}

# newest NAME: the newest numbered command of that name, clang-19 for clang; 19 or later.
newest() {
    local found
    found=$(compgen -c "$1-" | grep -x -- "$1-[0-9]*" | sort -V | tail -1)
    [ "${found##*-}" -ge 19 ] 2>/dev/null ||
        fail "$1 19 or later is missing: scripts/bootstrap --checks"
    echo "$found"
}

# prepare_tests PRESET: installs what its tests need. What is to be there soon is compiled by Clang,
# which takes half of GCC's time, unless the user has chosen; on a Mac it is anyway.
prepare_tests() {
    if [ "$1" != quick ]; then
        scripts/bootstrap
        return
    fi
    scripts/bootstrap --tests
    if [ "$(uname)" != Darwin ] && [ -z "${CXX-}" ]; then
        CC=$(newest clang)
        CXX=$(newest clang++)
        export CC CXX
    fi
}

# build PRESET [TARGET…]: configures and builds; all targets if none is named.
build() {
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --parallel "$(jobs_at_once)" ${1:+--target "$@"}
}

# Tracked sources that match any of the patterns, one a line. The folder may belong to
# somebody else than the one who runs this, as it does in many containers.
tracked() { git -c safe.directory='*' ls-files -- "$@"; }
