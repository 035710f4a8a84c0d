#!/usr/bin/env bash
# The report box of a fatal message for real: it appears, waits until somebody presses Return, and then the process
# aborts. Arguments: the emulator and the probe. Runs itself again inside a virtual display.
set -eu
[[ -n ${IN_DISPLAY:-} ]] || IN_DISPLAY=1 exec xvfb-run -a "$0" "$@"

rm -f fatal.log
"$1" "$2" --do fatal --null --logoutput fatal.log >/dev/null 2>&1 &
probe=$!
timeout 60 xdotool search --sync --name '^Olvex Fatal error$' >/dev/null
kill -0 $probe || { echo "the process did not wait for the box"; exit 1; }
xdotool key Return
status=0
wait $probe || status=$?
((status != 0)) || { echo "the process ended as if nothing had happened"; exit 1; }
grep -q ' | F | .*: the end$' fatal.log
