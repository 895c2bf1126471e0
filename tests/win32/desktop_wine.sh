#!/usr/bin/env bash
# Message boxes and keys of zet.exe under Wine on a private Xvfb, answered and pressed
# with xdotool as the Linux desktop tests do. Skipped (exit 0) without Xvfb or xdotool.
# Keys are not tested here: Wine keeps the asynchronous key state from the input events
# its own windows receive, so a key held on the display while no Wine window has the
# focus (zet.exe has none) reads as up; GetAsyncKeyState itself is Windows' own call.
#   tests/win32/desktop_wine.sh BIN_DIR
set -uo pipefail
bin=$1
root=$(cd "$(dirname "$0")/../.." && pwd)
command -v Xvfb >/dev/null && command -v xdotool >/dev/null || { echo "no Xvfb or xdotool: skipped"; exit 0; }
display=:$((90 + RANDOM % 9))
Xvfb "$display" -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null' EXIT
export DISPLAY=$display
sleep 1
fail=0
zet() { "$root/scripts/wine-run.sh" "$bin/zet.exe" --plugin "$bin/ZetFormulaLib.dll" exec; }

# A box with Yes / No, a question icon and the second button as default: the key
# Return answers with the default button (No, 7); with the first as default, Yes (6).
for row in "0 6" "256 7"; do
  set -- $row
  title="wine box $1"
  out=$(mktemp)
  echo "{\"instr\": \"Message Box \", \"params\": [4, 32, $1], \"inputs\": [\"$title\", \"Answer?\"]}" |
    zet >"$out" &
  pid=$!
  window=$(timeout 60 xdotool search --sync --name "^Quorvix - $title\$" | head -n1)
  if [ -n "$window" ]; then
    sleep 0.5
    xdotool windowactivate --sync "$window" key Return 2>/dev/null || xdotool key Return
  fi
  timeout 30 tail --pid=$pid -f /dev/null
  if grep -q "\"outputs\":\[$2.0\]" "$out"; then
    echo "message box, default button $1: answered $2"
  else
    echo "FAILED: message box, default button $1: window '${window}', answer $(cat "$out")"
    fail=1
    kill $pid 2>/dev/null
  fi
  rm -f "$out"
done
exit $fail
