#!/usr/bin/env bash
# Runs every benchmark of bench/ and prints the ratio table the README shows: each
# measured instruction beside its baseline of the same run (memcpy, the scalar
# definition, std::sort, OpenCV, the direct call), as CPU-time ratios of medians.
#
#   scripts/bench.sh [build dir, default build/release] [repetitions, default 5]
#
# Environment: ZET_BENCH_FILTER narrows the programs run (a regular expression on
# their names, e.g. 'polar|geometry'); ZET_BENCH_KEEP names a folder for the JSON
# results. Exits non-zero if a benchmark program fails. Thread speed-ups are ratios of
# wall time, which a machine shared with other work distorts: take them from an idle
# machine.
set -euo pipefail

build=${1:-build/release}
reps=${2:-5}
bin="$build/bin"
filter=${ZET_BENCH_FILTER:-.}
out=${ZET_BENCH_KEEP:-$(mktemp -d)}
mkdir -p "$out"

programs=(bench_polar bench_geometry bench_arrays bench_exec bench_system bench_text)
for p in "${programs[@]}"; do
  [[ $p =~ $filter ]] || continue
  if [[ ! -x $bin/$p ]]; then
    echo "bench.sh: $bin/$p is missing (build the release preset with benchmarks)" >&2
    exit 1
  fi
  echo "running $p ($reps repetitions)..." >&2
  "$bin/$p" --benchmark_repetitions="$reps" --benchmark_out="$out/$p.json" \
    --benchmark_out_format=json >"$out/$p.txt" 2>&1 ||
    { echo "bench.sh: $p failed; its output is in $out/$p.txt" >&2; exit 1; }
done

python3 - "$out" <<'EOF'
import json, os, statistics, sys

folder = sys.argv[1]
runs = {}  # name -> {"cpu": [...], "real": [...]} in nanoseconds
scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
for f in sorted(os.listdir(folder)):
    if not f.endswith(".json"):
        continue
    with open(os.path.join(folder, f)) as fh:
        data = json.load(fh)
    for b in data["benchmarks"]:
        if b.get("run_type") != "iteration" or b.get("error_occurred"):
            continue
        name = b["run_name"]
        k = scale[b.get("time_unit", "ns")]
        r = runs.setdefault(name, {"cpu": [], "real": []})
        r["cpu"].append(b["cpu_time"] * k)
        r["real"].append(b["real_time"] * k)

def med(name, kind="cpu"):
    r = runs.get(name)
    return statistics.median(r[kind]) if r and r[kind] else None

def fmt_time(ns):
    if ns is None:
        return "–"
    for unit, k in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if ns >= k:
            return f"{ns / k:.3g} {unit}"
    return f"{ns:.3g} ns"

# (section, label, measured, baseline, time kind, goal text, test on the ratio)
# ratio = measured / baseline, except "speed-up" rows: baseline / measured.
at_most = lambda g: (f"≤ {g}", lambda r: r <= g)
at_least = lambda g: (f"≥ {g}", lambda r: r >= g)
rows = []
types = {0: "0 I0", 1: "1 I45", 2: "2 I90", 3: "3 I135", 4: "4 DoLP", 5: "5 AoP", 6: "6 S0",
         7: "7 S1", 8: "8 S2", 9: "9 AoP to hue", 10: "10 hue and intensity"}
goals = {4: at_most(3), 5: at_most(5), 9: at_most(5), 10: at_most(6)}
for t, label in types.items():
    rows.append(("Polarization, 2448 x 2048 frame, 1 thread", f"type {label} / memcpy",
                 f"Fast/{t}/1", "Memcpy", "cpu", goals.get(t), False))
for t in (9, 10):
    rows.append(("Polarization, 2448 x 2048 frame, 1 thread", f"type {t}: 2 threads speed-up (wall)",
                 f"Fast/{t}/0", f"Fast/{t}/1", "real", at_least(1.9), True))
rows.append(("Polarization, 2448 x 2048 frame, 1 thread", "HSV step: OpenCV HSV2RGB_FULL / ours",
             "HsvToRgbFast/1", "HsvToRgbOpenCV/1", "cpu", at_least(2.5), True))
for n in ("10000", "1000000"):
    rows.append(("Fits", f"line, {n} points, 20 % outliers / fitLine L2",
                 f"ZetLine/{n}/20", f"CvLineL2/{n}/20", "cpu", at_most(10), False))
for n in ("100", "10000", "1000000"):
    rows.append(("Fits", f"line, {n} points, 0 % / fitLine L2",
                 f"ZetLine/{n}/0", f"CvLineL2/{n}/0", "cpu", None, False))
for n in ("10000", "1000000"):
    rows.append(("Fits", f"circle, {n} points: 20 % outliers / 0 %",
                 f"ZetCircle/{n}/20", f"ZetCircle/{n}/0", "cpu", at_most(3) if n == "10000" else None, False))
rows += [
    ("Arrays", "Sort of 10^6 numbers: std::sort / ours", "BM_Sort", "BM_SortLoop", "cpu", at_least(5), True),
    ("Arrays", "IndexArray of 10^6: std::sort of indexes / ours", "BM_IndexArray", "BM_IndexArrayLoop", "cpu", at_least(5), True),
    ("Arrays", "point Sort of 10^6: std::sort / ours", "BM_PointSort", "BM_PointSortLoop", "cpu", None, True),
    ("Arrays", "CorrelateCircular 3600 x 3600: definition / ours", "BM_CorrelateCircular/3600", "BM_CorrelateCircularDefinition/3600", "cpu", None, True),
    ("Arrays", "CorrelateCircular 3600 x 360: definition / ours", "BM_CorrelateCircular/360", "BM_CorrelateCircularDefinition/360", "cpu", None, True),
    ("Arrays", "Smooth 10^6 x 10 / plain loop", "BM_Smooth", "BM_SmoothLoop", "cpu", None, False),
    ("Arrays", "Remove Isolated Outliers 10^5 / plain loop", "BM_RemoveOutliers", "BM_RemoveOutliersLoop", "cpu", None, False),
    ("Arrays", "Append to 10^6 / plain loop", "BM_Append", "BM_AppendLoop", "cpu", None, False),
    ("Host and text", "Add through the context / direct", "BM_AddThroughContext", "BM_AddDirect", "cpu", None, False),
    ("Host and text", "PrintfNumInf, 17 numbers / snprintf", "BM_PrintfNumInf17ThroughContext", "BM_Printf17Direct", "cpu", None, False),
    ("Host and text", "date picture / strftime", "BM_DatePicture", "BM_DateStrftime", "cpu", None, False),
    ("Host and text", "time picture / strftime", "BM_TimePicture", "BM_TimeStrftime", "cpu", None, False),
    ("Host and text", "Random / rand_r", "BM_Rand", "BM_RandR", "cpu", None, False),
    ("Host and text", "LenStr 10 MiB / direct", "BM_LenStr", "BM_LenStrDirect", "cpu", None, False),
    ("Host and text", "FindStr 10 MiB / direct", "BM_FindStr", "BM_FindStrDirect", "cpu", None, False),
    ("Host and text", "ReplaceStr 10 MiB / direct", "BM_ReplaceStr", "BM_ReplaceStrDirect", "cpu", None, False),
    ("Host and text", "CharToNum 10 MiB / direct", "BM_CharToNum", "BM_CharToNumDirect", "cpu", None, False),
]

section = None
failed = 0
for sec, label, mine, base, kind, goal, speedup in rows:
    a, b = med(mine, kind), med(base, kind)
    if a is None or b is None:
        continue
    if sec != section:
        section = sec
        print(f"\n{sec} (medians of the repetitions, {'CPU' if kind == 'cpu' else 'wall'} time)\n")
        print("| Benchmark | measured | baseline | ratio | goal | met |")
        print("|---|---|---|---|---|---|")
    ratio = b / a if speedup else a / b
    goal_text, met = ("", "") if goal is None else (goal[0], "yes" if goal[1](ratio) else "no")
    failed += met == "no"
    print(f"| {label} | {fmt_time(a)} | {fmt_time(b)} | {ratio:.2f} | {goal_text} | {met} |")
print(f"\n{failed} goal(s) not met in this run." if failed else "\nEvery goal met in this run.")
EOF
