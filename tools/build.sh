# shellcheck shell=bash
# How run, test and .ci/run build a preset. To be sourced; finds the repository root from its own path.

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

# build_for_tests PRESET [CTEST ARGUMENT...]: of `-R NAME` only the programs that have such tests, or all when
# none is known by this name. A program that was never built cannot tell its tests: its sources do.
build_for_tests() {
    local preset=$1 folder=$tallyroom_root/build/$1 listed commands targets program
    shift
    listed=$(cd "$folder" && ctest --show-only=json-v1 "$@") || return
    commands=$(grep -oP '"name" : "\K[\w.]+' <<<"$listed" | sed 's/.*/add_test([=[&]=]/' |
        grep -hF -f - "$folder/tests/CTestTestfile.cmake") || true
    targets=$(grep -ohP "\"$folder/bin/\K[\w-]+(?=\")" <<<"$listed$commands" | sort -u) || true
    if [[ ${1:-} == -R ]]; then
        for program in Core App; do
            if [[ ! -e $folder/bin/tallyroom-${program,,}-tests ]] && tests_in "$program" | grep -qE -- "$2"; then
                targets+=" tallyroom-${program,,}-tests"
            fi
        done
    fi
    if [[ $# -eq 0 || -z $targets ]]; then
        build "$preset"
    else
        # shellcheck disable=SC2086 # one word a target
        build "$preset" --target $targets
    fi
}

# tests_in FOLDER: the names of the tests in the sources of tests/FOLDER.
tests_in() {
    cat "$tallyroom_root/tests/$1"/*.cpp | grep -ozP '\nTEST(_F|_P)?\(\K\w+,\s+\w+' | tr '\0' '\n' | sed 's/,\s*/./'
}

# run_tests PRESET [CTEST ARGUMENT...]: no test at all is a failure too.
run_tests() {
    local preset=$1
    shift
    (cd "$tallyroom_root" && ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error "$@")
}
