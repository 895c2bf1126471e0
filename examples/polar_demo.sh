#!/bin/sh
# polar_demo.sh BUILD_DIR OUT_DIR
#
# Makes a synthetic polarization frame (polar_frame) and runs ProcessPolarizedImage
# through `zet exec` to write the derived images as PNG files to look at:
#   frame.pgm       the raw frame (2 x 2 blocks of 90/45 over 135/0 degrees)
#   s0.png          Stokes S0, the mean intensity: a left-to-right ramp
#   dolp.png        degree of linear polarization: dark centre, bright rim, grey outside
#   aop.png         angle of polarization as grey: one sweep around the centre
#   aop_hue.png     the angle as hue: a colour wheel
#   aop_hue_i.png   the angle as hue, the intensity as value: the wheel over the ramp
# The responses of zet go to OUT_DIR/responses.jsonl.
#
# Then it inspects four frames of parts of different sizes (OUT_DIR/frames, each with
# the rim points polar_frame drew) with the example program rim_check.json: a circle
# fitted to each part's rim, its diameter and circularity in OUT_DIR/run/results.jsonl
# and results.csv, and an overlay per frame, OUT_DIR/run/part_N.png: the fitted circle,
# the rim points it used, the rejected outliers and the measurements.
set -eu

if [ $# -ne 2 ]; then
  echo "usage: $0 BUILD_DIR OUT_DIR" >&2
  exit 2
fi
build=$1
out=$2
mkdir -p "$out"
out=$(cd "$out" && pwd)

"$build/bin/polar_frame" "$out/frame.pgm" 640 480

run() {  # run TYPE FILE: one request on the same instance
  printf '{"instr": "ProcessPolarizedImage", "instance": "cam", "params": [%s], ' "$1"
  printf '"inputs": [{"file": "%s/frame.pgm"}], "save": {"0": "%s/%s"}}\n' "$out" "$out" "$2"
}
{
  run 6 s0.png
  run 4 dolp.png
  run 5 aop.png
  run 9 aop_hue.png
  run 10 aop_hue_i.png
} | "$build/bin/zet" exec > "$out/responses.jsonl"

if grep -q -e '"error"' -e '"save_error"' -e '"status":3' "$out/responses.jsonl"; then
  echo "$0: zet reported a problem:" >&2
  cat "$out/responses.jsonl" >&2
  exit 1
fi
for f in s0 dolp aop aop_hue aop_hue_i; do
  [ -s "$out/$f.png" ] || { echo "$0: $out/$f.png was not written" >&2; exit 1; }
done
echo "wrote $out/{frame.pgm,s0.png,dolp.png,aop.png,aop_hue.png,aop_hue_i.png}"

examples=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$out/frames"
for seed in 1 2 3 4; do
  "$build/bin/polar_frame" "$out/frames/part_$seed.pgm" 1280 960 "$seed"
done
"$build/bin/zet" run "$examples/rim_check.json" "$out/frames" --out "$out/run" --csv
for seed in 1 2 3 4; do
  [ -s "$out/run/part_$seed.png" ] || { echo "$0: $out/run/part_$seed.png was not written" >&2; exit 1; }
done
echo "results:"
cat "$out/run/results.csv"
