# Sourced by the other scripts: the root of the project, one line per step, a clear end on failure.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
trap 'echo "$(basename "$0"): failed (line $LINENO)" >&2' ERR

step() { echo "==> $*"; }
die() {
    trap - ERR
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# build_preset PRESET: configures and builds it; shows the end of the output if that fails.
build_preset() {
    local log
    step "building preset $1"
    log=$(mktemp)
    if ! { cmake --preset "$1" && cmake --build --preset "$1"; } >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        die "preset $1 does not build (whole output in $log)"
    fi
    rm -f "$log"
}
