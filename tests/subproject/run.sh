#!/usr/bin/env bash
# run.sh SOURCE_DIR WORK_DIR CMAKE
#
# Configures tests/subproject with ZetFormulaLib as an add_subdirectory and as a
# FetchContent subproject, each with the plug-in only and every package of the host
# (nlohmann-json, CLI11, libpng, OpenSSL), the tests and the benchmarks hidden, so a
# find_package of any of them fails the configure. Then builds and runs the consumer.
set -euo pipefail
src=$(cd "$1" && pwd)
work=$2
mkdir -p "$work"
cmake=${3:-cmake}
hidden=()
for p in nlohmann_json CLI11 PNG OpenSSL GTest benchmark OpenCV; do
  hidden+=("-DCMAKE_DISABLE_FIND_PACKAGE_$p=ON")
done
for via in subdirectory fetchcontent; do
  dir="$work/$via"
  rm -rf "$dir"
  if ! "$cmake" -S "$src/tests/subproject" -B "$dir" -G Ninja -DZET_SOURCE="$src" -DZET_VIA="$via" --no-warn-unused-cli \
      "${hidden[@]}" >"$work/$via.log" 2>&1; then
    cat "$work/$via.log"
    exit 1
  fi
  "$cmake" --build "$dir" --target consumer >>"$work/$via.log" 2>&1 || { cat "$work/$via.log"; exit 1; }
  out=$("$dir/consumer")
  [ "$out" = "1.00000e+06" ] || { echo "$via: consumer printed '$out'"; exit 1; }
  echo "$via: configured with the host's packages hidden; consumer built and ran"
done
