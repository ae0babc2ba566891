# shellcheck shell=bash
# How run, test and .ci/run build a preset. To be sourced; knows the house by its own place.

tallyroom_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# configure PRESET [CMAKE ARGUMENT...]: says something only when it fails. A configured folder is left to
# ninja, which notices changed lists of sources by itself.
configure() {
    local preset=$1 folder=$tallyroom_root/build/$1 log
    shift
    if [[ -e $folder/build.ninja && $folder/build.ninja -nt $tallyroom_root/CMakePresets.json && $# -eq 0 ]]; then
        return
    fi
    log=$(mktemp)
    if ! cmake -S "$tallyroom_root" --preset "$preset" "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

# build PRESET [ARGUMENT OF cmake --build...]: on a terminal one line of progress, elsewhere failures only.
build() {
    local preset=$1 quiet=(-- --quiet)
    shift
    if [[ -t 1 ]]; then
        quiet=()
    fi
    cmake --build "$tallyroom_root/build/$preset" "$@" "${quiet[@]}"
}

# run_tests PRESET [CTEST ARGUMENT...]: no test at all is a failure too.
run_tests() {
    local preset=$1
    shift
    (cd "$tallyroom_root" && ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error "$@")
}
