# What the scripts in this folder share. It is sourced, not run.
# shellcheck shell=bash

set -euo pipefail

script_name=${0##*/}
cd "$(dirname "${BASH_SOURCE[0]}")/.."

step() {
    printf '== %s\n' "$*"
}

fail() {
    printf '%s: %s\n' "$script_name" "$*" >&2
    exit 1
}

# quietly COMMAND...: runs it, and shows what it printed only if it fails.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    if [ "$status" -ne 0 ]; then
        printf '%s: this failed with status %s: %s\n' "$script_name" "$status" "$*" >&2
        # Compilers bury the error under the lines around it; the last ones hold it.
        tail -n 200 "$log" >&2
    fi
    rm -f "$log"
    return "$status"
}

# configure PRESET WITH_TESTS: configures a preset's build folder where that is still to be done. A folder that is
# configured stays as it is, except that tests are added when they are asked for.
configure() {
    local preset=$1 with_tests=$2 cache=build/$1/CMakeCache.txt
    if [ -f "$cache" ] && { [ "$with_tests" = OFF ] || grep -q '^MORVANE_BUILD_TESTS:BOOL=ON' "$cache"; }; then
        return 0
    fi
    local arguments=("-DMORVANE_BUILD_TESTS=$with_tests")
    if [ ! -f "$cache" ]; then
        # A warning of a compiler that we do not know must stop the continuous integration, not somebody's first build.
        arguments+=("-DCMAKE_COMPILE_WARNING_AS_ERROR=$([ "${CI:-}" = true ] && echo ON || echo OFF)")
        if command -v ninja >/dev/null; then
            export CMAKE_GENERATOR=${CMAKE_GENERATOR:-Ninja}
        fi
    fi
    step "Configuring build/$preset"
    quietly cmake --preset "$preset" "${arguments[@]}"
}

# build PRESET [TARGET...]: builds what has changed.
build() {
    local preset=$1
    shift
    local arguments=()
    if [ $# -gt 0 ]; then
        arguments=(--target "$@")
    fi
    export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}
    step "Building build/$preset${*:+: $*}"
    quietly cmake --build --preset "$preset" "${arguments[@]}"
}
