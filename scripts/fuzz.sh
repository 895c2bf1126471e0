#!/usr/bin/env bash
# Builds the libFuzzer harnesses (preset fuzz: clang, ASan + UBSan) and runs them.
#
#   scripts/fuzz.sh                  # every harness for 5 minutes, one after the other
#   scripts/fuzz.sh png 3600         # one harness (pgm, png, request, format) for an hour
#   scripts/fuzz.sh --ci             # every harness for a fixed number of runs, fixed seed
#
# Harnesses: pgm and png (the image readers), request (zet's request runner with the
# plug-in), format (the formatter of user formats). Each starts from its seeds in
# fuzz/corpus/NAME; what it finds new goes to build/fuzz/corpus/NAME (not into the
# repository), a crashing input to build/fuzz/crash-*. To keep a crash as a seed
# once it is fixed, copy it into fuzz/corpus/NAME with a name that says what it was.
# Extra libFuzzer options go in FUZZ_OPTIONS (for example "-jobs=2 -workers=2").
set -euo pipefail
cd "$(dirname "$0")/.."
all=(pgm png request format)
# --ci: runs per harness, about a minute in all on an idle 2-core machine (the request
# runner, which reaches the most code, gets the largest share: 48000 runs of its long
# inputs take about 40 s).
declare -A ci_runs=([pgm]=800000 [png]=400000 [request]=48000 [format]=150000)

ci=0
names=("${all[@]}")
seconds=300
if [ "${1:-}" = "--ci" ]; then
  ci=1
elif [ $# -ge 1 ]; then
  names=("$1")
  seconds=${2:-300}
fi

mkdir -p build
if ! { cmake --preset fuzz -DZET_WERROR=ON && cmake --build --preset fuzz -j "$(nproc)"; } >build/fuzz.log 2>&1; then
  grep -E -A5 "error|warning" build/fuzz.log | head -n 60
  tail -n 20 build/fuzz.log
  exit 1
fi

bin=build/fuzz/bin
out=build/fuzz
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
fail=0
for name in "${names[@]}"; do
  [ -x "$bin/fuzz_$name" ] || { echo "no harness '$name' (one of: ${all[*]})" >&2; exit 2; }
  found="$out/corpus/$name"
  mkdir -p "$found"
  dict=()
  [ -f "fuzz/$name.dict" ] && dict=(-dict="fuzz/$name.dict")
  if [ $ci -eq 1 ]; then
    limit=(-runs="${ci_runs[$name]}" -seed=1)
    found=$(mktemp -d)  # CI keeps nothing
  else
    limit=(-max_total_time="$seconds")
  fi
  # Requests may be long (nesting depth, large arrays): libFuzzer's default stops at
  # 4096 bytes.
  len=()
  [ "$name" = request ] && len=(-max_len=262144)
  start=$(date +%s)
  # shellcheck disable=SC2086
  if "$bin/fuzz_$name" "${limit[@]}" "${len[@]}" "${dict[@]}" -artifact_prefix="$out/crash-$name-" \
       -timeout=10 -rss_limit_mb=4096 ${FUZZ_OPTIONS:-} "$found" "fuzz/corpus/$name" \
       >"$out/$name.log" 2>&1; then
    # The count is libFuzzer's final line ("Done N runs in S second(s)"): earlier lines
    # (a recommended dictionary, for one) may hold '#' and digits of their own.
    echo "fuzz $name: $(tail -n 1 "$out/$name.log" | grep -Eo '^Done [0-9]+' | grep -Eo '[0-9]+') runs," \
         "$(( $(date +%s) - start )) s, $(grep -Eo 'cov: [0-9]+' "$out/$name.log" | tail -n 1)"
  else
    fail=1
    echo "fuzz $name: FAILED (log: $out/$name.log)"
    grep -E -A30 "ERROR|runtime error|Test unit written|SUMMARY" "$out/$name.log" | head -n 60
  fi
  [ $ci -eq 1 ] && rm -rf "$found"
done
exit $fail
