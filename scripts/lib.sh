# shellcheck shell=bash
# Sourced by the scripts of this folder, which are bash with "set -euo pipefail".

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# quietly WHAT COMMAND...: says what is done and how long it took; shows the command's output only
# when it fails, and then answers its exit status.
quietly() {
    local what=$1 log status=0 start=$SECONDS
    shift
    log=$(mktemp)
    printf '%s ... ' "$what"
    "$@" >"$log" 2>&1 </dev/null || status=$?
    if [ "$status" -eq 0 ]; then
        printf 'done (%d s)\n' $((SECONDS - start))
    else
        printf 'failed (status %d)\n' "$status"
        cat "$log"
    fi
    rm -f "$log"
    return "$status"
}

# The presets live in the source folder and CMake looks for them in the working directory.
configure_and_build() {
    local preset=$1
    shift
    (cd "$top" && cmake --preset "$preset" && cmake --build --preset "$preset" "$@")
}

# build_preset PRESET [BUILD OPTION...]
build_preset() {
    quietly "Building the $1 preset" configure_and_build "$@"
}
