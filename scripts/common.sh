# Sourced by the other scripts: their --help, the root of the project, one line per step, a clear end on failure.
set -euo pipefail

if [[ ${1:-} == --help ]]; then
    sed -n '2,/^[^#]/s/^# \?//p' "$0"
    exit
fi

cd "$(dirname "${BASH_SOURCE[0]}")/.."
log=$(mktemp) # what the last command of quietly printed
keep_log_of_failure() { (($?)) && [[ -s $log ]] || rm -f "$log"; }
trap keep_log_of_failure EXIT
trap 'echo "$(basename "$0"): failed (line $LINENO)" >&2' ERR

step() { echo "==> $*"; }
die() {
    trap - ERR
    echo "$(basename "$0"): $*" >&2
    exit 1
}

show_last_line() {
    local line
    while IFS= read -r line; do
        printf '\r\e[K%.79s' "$line"
    done
    printf '\r\e[K'
}

# capture COMMAND...: runs it with its output in $log; a terminal shows the line that it is at.
capture() {
    if [[ -t 1 ]]; then
        "$@" 2>&1 | tee "$log" | show_last_line
    else
        "$@" >"$log" 2>&1
    fi
}

# quietly COMMAND...: the same; shows the end of the output if that fails. A function joins its commands by "&&".
quietly() {
    capture "$@" || {
        tail -n 60 "$log" >&2
        die "failed: $* (whole output in $log)"
    }
}

as_root() { if ((EUID == 0)); then "$@"; else sudo "$@"; fi; }

# apt_get ARGUMENT...: waits up to ten minutes for another installation to end.
apt_get() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=600 "$@"; }

# apt-get does not wait for another update.
update_package_lists() {
    local try
    for try in {1..6}; do
        ! apt_get update || return 0
        sleep 10
    done
    return 1
}

# build_preset PRESET: configures and builds it.
build_preset() {
    step "building preset $1"
    quietly cmake --preset "$1"
    quietly cmake --build --preset "$1"
}
