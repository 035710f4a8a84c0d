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
