#!/usr/bin/env bash
# Usage: scripts/screenshots.sh [BUILD_DIR]
# Takes the screenshots of the main window's tabs in docs/img/ under Xvfb,
# with the simulator playing the modem on a free port of 127.0.0.1, and of
# the link status label in each state (link-*.png).
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build}"
cmake --build "$build" --target mainwindow_screenshots link_status_screenshots varda-sim -j 2 >/dev/null

port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
"$build/tools/varda-sim/varda-sim" --roles modem --modem-port "$port" --stations 4 --rate 20 --seed 7 \
  2>"$build/screenshots-sim.log" &
sim=$!
trap 'kill $sim 2>/dev/null; wait $sim 2>/dev/null || true' EXIT

for _ in $(seq 50); do
  (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && break
  sleep 0.1
done

mkdir -p "$root/docs/img"
xvfb-run -a -s "-screen 0 1280x1024x24" \
  "$build/tests/mainwindow_screenshots" "$port" "$root/docs/img"
xvfb-run -a -s "-screen 0 1280x1024x24" "$build/tests/link_status_screenshots" "$root/docs/img"
