#!/usr/bin/env bash
# The Windows stage: builds the libraries the Windows builds need (scripts/windeps.sh,
# reused when built), both Windows presets, and runs the 64-bit build under Wine:
#
#   scripts/wine-test.sh [LINUX_BUILD]     (LINUX_BUILD defaults to build/release)
#
# 1. windows-x86 and windows-x64 built with warnings as errors (the 32-bit build checks
#    the descriptor layout of a 32-bit process at compile time);
# 2. windows-x64's CTest under Wine: the test programs (among them zet.exe's golden
#    `zet exec` sessions and `zet run`, which writes its results and says that overlays
#    are not available), the plug-in's one export;
# 3. zet.exe: list shows 264 instructions, catalog is byte-identical to the Linux zet's;
# 4. the OS layer's differential table: osdiff on Linux against osdiff.exe under Wine;
# 5. the zip of each build (cpack).
# The 32-bit programs are not run: Wine's 32-bit half (wine32) needs the i386 packages
# of the system, whose versions the machines of this project cannot keep in step.
set -uo pipefail
cd "$(dirname "$0")/.."
linux=${1:-build/release}
jobs=$(nproc)
fail=0
start=$SECONDS
step() { echo "-- $* ($((SECONDS - start)) s)"; }
bad() { echo "FAILED: $*"; fail=1; }

for arch in i686 x86_64; do
  bash scripts/windeps.sh "$arch" || { bad "windeps $arch"; exit 1; }
done
for preset in windows-x86 windows-x64; do
  step "build $preset"
  log=build/$preset.log
  if ! { cmake --preset "$preset" -DZET_WERROR=ON && cmake --build --preset "$preset" -j "$jobs"; } \
      >"$log" 2>&1; then
    grep -E -A5 "error|warning" "$log" | head -n 60
    bad "build $preset"
  fi
done
[ $fail -eq 0 ] || exit 1

bin=build/windows-x64/bin
run() { scripts/wine-run.sh "$@"; }

step "ctest windows-x64 under Wine"
if ! ctest --preset windows-x64 -LE exhaustive >build/windows-x64.log.test 2>&1; then
  grep -E -B2 -A30 "\[  FAILED  \]|Failure|\*\*\*Failed" build/windows-x64.log.test | head -n 150
  bad "ctest windows-x64"
fi
tail -n 3 build/windows-x64.log.test

step "zet.exe"
zet=(run "$bin/zet.exe" --plugin "$bin/ZetFormulaLib.dll")
out=$("${zet[@]}" list) || bad "zet.exe list exit $?"
n=$(printf '%s\n' "$out" | grep -c .)
[ "$n" -eq 264 ] && echo "zet.exe list: $n instructions" || bad "zet.exe list shows $n lines"
"${zet[@]}" catalog >build/windows-x64/catalog.json || bad "zet.exe catalog exit $?"
if [ -x "$linux/bin/zet" ]; then
  "$linux/bin/zet" --plugin "$linux/bin/ZetFormulaLib.so" catalog >build/windows-x64/catalog.linux.json ||
    bad "linux zet catalog"
  cmp build/windows-x64/catalog.json build/windows-x64/catalog.linux.json &&
    echo "zet.exe catalog: byte-identical to Linux ($(wc -c <build/windows-x64/catalog.json) bytes)" ||
    bad "zet.exe catalog differs from Linux"
else
  echo "(no Linux build in $linux: catalogue not compared)"
fi

step "message boxes under Wine on Xvfb"
bash tests/win32/desktop_wine.sh "$bin" || bad "message boxes under Wine"

step "OS layer: Linux against Win32"
if [ -x "$linux/bin/osdiff" ]; then
  LC_ALL=C "$linux/bin/osdiff" build/windows-x64/osdiff.linux.txt || bad "osdiff (Linux)"
  run "$bin/osdiff.exe" build/windows-x64/osdiff.windows.txt || bad "osdiff.exe"
  python3 tests/osdiff/compare.py build/windows-x64/osdiff.linux.txt build/windows-x64/osdiff.windows.txt ||
    bad "differential table"
else
  echo "(no Linux build in $linux: no differential table)"
fi

step "zips"
for preset in windows-x86 windows-x64; do
  (cd "build/$preset" && cpack -G ZIP -B package >/dev/null) && ls "build/$preset/package/"*.zip ||
    bad "cpack $preset"
done
echo "Windows stage: $([ $fail -eq 0 ] && echo passed || echo FAILED) in $((SECONDS - start)) s"
exit $fail
