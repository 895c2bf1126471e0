#!/usr/bin/env bash
# Builds and tests everything: gcc release (with the install, Debian package and
# subproject tests), gcc with AddressSanitizer and UndefinedBehaviorSanitizer, and
# clang release; warnings are errors. Then the Python package's tests (pytest over
# the release build), the Windows builds tested under Wine (scripts/wine-test.sh),
# and the fuzzers run for a fixed number of inputs each (scripts/fuzz.sh --ci).
# The long exhaustive image check (ctest label
# "exhaustive") is left out; run it with
#   ctest --test-dir build/release -L exhaustive
set -uo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh || exit 1
jobs=$(nproc)
fail=0
mkdir -p build
for preset in release asan clang; do
  echo "== $preset =="
  start=$SECONDS
  log=build/$preset.log
  if ! { cmake --preset "$preset" -DZET_WERROR=ON && cmake --build --preset "$preset" -j "$jobs"; } >"$log" 2>&1; then
    grep -E -A5 "error|warning" "$log" | head -n 60
    tail -n 20 "$log"
    fail=1
    continue
  fi
  if ! ctest --preset "$preset" -j "$jobs" -LE exhaustive >"$log.test" 2>&1; then
    fail=1
    grep -E -B2 -A40 "\*\*\*Failed|Failure|ERROR: |runtime error" "$log.test" | head -n 200
  fi
  tail -n 3 "$log.test"
  echo "($preset: $((SECONDS - start)) s)"
done
# The Python package (built by the release preset when Python 3 dev, NumPy and pybind11
# are found) with the system's interpreter: pytest over tests/python, the wheel in a
# fresh venv and the Dask cluster included.
echo "== python =="
start=$SECONDS
if [ -d build/release/python/zetformula ]; then
  if ! PYTHONPATH=build/release/python ZET_BUILD_DIR=build/release \
      /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/python >build/python.log 2>&1; then
    fail=1
    grep -E -B5 -A30 "^(E |FAILED|ERROR)" build/python.log | head -n 200
  fi
  tail -n 1 build/python.log
else
  echo "build/release has no Python package (ZET_BUILD_PYTHON off)"
  fail=1
fi
echo "(python: $((SECONDS - start)) s)"
echo "== windows =="
start=$SECONDS
# Both Windows builds, and the 64-bit one's tests under Wine against the release build.
bash scripts/wine-test.sh build/release >build/windows.log 2>&1 || { fail=1; grep -E "FAILED|DIFFERS" build/windows.log | head -n 40; }
grep -E "agree|instructions|byte-identical|Windows stage" build/windows.log
echo "(windows: $((SECONDS - start)) s)"
echo "== fuzz =="
start=$SECONDS
bash scripts/fuzz.sh --ci || fail=1
echo "(fuzz: $((SECONDS - start)) s)"
echo "all presets and the fuzzers: $( [ $fail -eq 0 ] && echo passed || echo FAILED ) in $SECONDS s"
exit $fail
