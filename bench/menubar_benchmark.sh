#!/usr/bin/env bash
# Figures of the desktop application under Xvfb with openbox and trayer, on a copy of the
# fake home (the clean removes its preselection): start to tray icon (aim <= 300 ms),
# click to panel painted (<= 100 ms), worst event-loop lateness during scan and clean
# (<= 50 ms), resident memory when idle after a scan (<= 60 MB), idle CPU (0 %).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/lib.sh"

build=${KELVO_BUILD_DIR:-$repo_dir/build}
cmake -S "$repo_dir" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target kelvo-menubar-bench >&2
home=$(fake_home)
scratch=$(mktemp -d)
pids=()
cleanup() { for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done; rm -rf "$scratch"; }
trap cleanup EXIT

cp -a "$home" "$scratch/home"
mkdir -p "$scratch/home/.config/kelvo" "$scratch/tmp"
[ -f "$scratch/home/.config/kelvo/config.json" ] || echo '{}' >"$scratch/home/.config/kelvo/config.json"

Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$scratch/display" 2>/dev/null &
pids+=($!)
while [ ! -s "$scratch/display" ]; do sleep 0.05; done
export DISPLAY=":$(cat "$scratch/display")"
openbox --sm-disable >/dev/null 2>&1 &
pids+=($!)
trayer --edge top --align right --widthtype request --height 24 >/dev/null 2>&1 &
pids+=($!)
sleep 1  # the tray host must own its selection before the application asks for it

HOME="$scratch/home" TMPDIR="$scratch/tmp" LANG=C QT_QPA_PLATFORM=xcb "$build/bench/menubar/kelvo-menubar-bench" \
  | tee "$scratch/figures"
awk '
  $1 == "start_to_icon" && $2 > 300 { bad = 1 }
  $1 == "click_to_panel_painted" && $2 > 100 { bad = 1 }
  $1 ~ /lateness/ && $2 > 50 { bad = 1 }
  $1 == "idle_rss_after_scan" && $2 > 60 { bad = 1 }
  END { exit bad }' "$scratch/figures" && echo "all within targets" || { echo "a target is missed"; exit 1; }
