#!/bin/sh
# until-logged.sh TEXT LOG PROGRAM...: runs the program until its log holds the text, and then ends it as the system would.
# With EMULATED it may not notice: there are no such signals on Windows.
text=$1 log=$2
shift 2
"$@" --logoutput "$log" &
tries=300
until grep -qF "$text" "$log" || [ $tries = 0 ]; do
    tries=$((tries - 1))
    sleep 0.1
done
kill -TERM $! && { wait $! || [ -n "$EMULATED" ]; } && grep -qF "$text" "$log"
