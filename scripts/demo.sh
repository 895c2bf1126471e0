#!/usr/bin/env bash
# The demo: installs what is missing, builds, and runs a short zet session (the
# catalogue, a few executions, a report among them), then derives the images of a
# synthetic polarization frame into demo-out/ and runs the example inspection program
# over four frames: a circle fitted to each part's rim, overlays in demo-out/run/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)" >/dev/null
zet=build/release/bin/zet
# The list is taken whole first: head closing a pipe early would end zet with SIGPIPE.
list=$($zet list)
echo "== zet list (first lines of $(wc -l <<<"$list")) =="
head -n 8 <<<"$list"
echo
echo "== zet describe PrintfNumInf =="
$zet describe PrintfNumInf
echo
echo "== zet exec =="
while IFS= read -r line; do
  echo "> $line"
  echo "$line" | $zet --angle-unit degrees exec
done <<'REQUESTS'
{"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1, 2, 3.5]}
{"instr": "Divide", "inputs": [1, 0], "outputs": [42]}
{"instr": "Sin", "inputs": [90]}
{"instr": "Cpk", "inputs": [10, 0, 4, 5, 6]}
{"instr": "NumToString", "params": {"Number of digits": 8, "Integer field padding": 1}, "inputs": [3.14159]}
{"instr": "PrintfNumInf", "inputs": ["%.2f + %.2f = %g", 1.5, 2.25, 3.75]}
{"instr": "FindStrNth", "inputs": ["abcabcx", "abc", 2]}
{"instr": "Remainder", "inputs": [7, 0]}
{"instr": "Ad"}
REQUESTS
echo
echo "== polarization images and the inspection program =="
bash examples/polar_demo.sh build/release demo-out
