#!/bin/sh
# Share of one CPU core the radio tool uses while connected over TCP to the
# simulator at a given traffic rate, measured from /proc/PID/stat.
#
#   xvfb-run -a scripts/cpu-share.sh BUILD_DIR RATE [SECONDS] [PORT]
#
# RATE 0 leaves the tool unconnected: the baseline of an idle window.
# Prints: rate, seconds measured, CPU seconds used, share of one core.
set -eu
build=$1
rate=$2
seconds=${3:-60}
port=${4:-10144}
ticks=$(getconf CLK_TCK)

"$build/tools/varda-sim/varda-sim" --rate "$([ "$rate" = 0 ] && echo 1 || echo "$rate")" --seed 1 --modem-port "$port" \
    --gateway-port $((port + 1)) 2>/dev/null &
sim=$!
sleep 1
link="--link=tcp:127.0.0.1:$port"
[ "$rate" = 0 ] && link=""
"$build/src/varda-toolbox" $link >/dev/null 2>&1 &
tool=$!
trap 'kill $tool $sim 2>/dev/null' EXIT

cpu() { awk '{ print $14 + $15 }' "/proc/$tool/stat"; }
sleep 5 # start-up and the first packets are not counted
before=$(cpu)
sleep "$seconds"
after=$(cpu)
awk -v r="$rate" -v s="$seconds" -v b="$before" -v a="$after" -v t="$ticks" \
    'BEGIN { used = (a - b) / t; printf "rate %s: %d s, %.2f CPU s, %.2f %% of one core\n", r, s, used, 100 * used / s }'
