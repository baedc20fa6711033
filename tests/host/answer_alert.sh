#!/bin/sh
# Runs a command that shows one alert, on the display at hand, and answers the alert with a click on its button.
#
#   answer_alert.sh PICTURE COMMAND...
#
# Saves the screen with the alert as PICTURE. Prints the title and the size of the alert on standard error, and ends with
# the command's exit status, or with 99 when no alert came within 20 seconds.
set -u
picture=$1
shift

"$@" &
command=$!

# The alert is the one window of the program that is larger than an icon.
find_alert() {
    xwininfo -root -tree | sed -n 's/^ *\(0x[0-9a-f]*\) "\(.*\)": ("installer-host[^"]*" .*  \([0-9]\{3,\}\)x\([0-9]\{3,\}\)+.*/\1 \3 \4 \2/p'
}

tries=200
while alert=$(find_alert) && [ -z "$alert" ]; do
    tries=$((tries - 1))
    if [ "$tries" = 0 ] || ! kill -0 "$command" 2>/dev/null; then
        echo "answer_alert.sh: no alert came" >&2
        exit 99
    fi
    sleep 0.1
done
sleep 1 # to draw itself
import -window root "$picture"
echo "alert: $alert" >&2

# The only button stands in the lower right corner. On a busy machine the alert may not listen yet: try again.
set -- $alert
while kill -0 "$command" 2>/dev/null; do
    xdotool mousemove --window "$1" $(($2 - 45)) $(($3 - 22)) mousedown 1 sleep 0.2 mouseup 1 2>/dev/null
    sleep 0.5
done
wait "$command"
