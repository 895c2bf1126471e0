#!/usr/bin/env bash
# Builds the wheel of the Python package zetformula, offline, into DIR:
#
#   scripts/wheel.sh DIR [BUILD_DIR]
#
# BUILD_DIR is a configured build tree to take the package from (build/release, say);
# without it the script configures build/wheel (Release, package only) itself. The
# wheel holds zetformula/ with the compiled module, libzethost and libzetplatform beside
# it (run paths $ORIGIN) and the plug-in in zetformula/zet/; the other libraries it
# needs (libpng, Pango, Cairo, OpenSSL, spdlog, OpenMP) are the system's packages, as
# NumPy is. Install it with
#   /usr/bin/python3 -m venv --system-site-packages ENV && ENV/bin/pip install DIR/zetformula-*.whl
# The interpreter is $PYTHON, default the system's /usr/bin/python3.
set -euo pipefail
if [[ $# -lt 1 || $# -gt 2 ]]; then
  echo "usage: $0 DIR [BUILD_DIR]" >&2
  exit 2
fi
root=$(cd "$(dirname "$0")/.." && pwd)
out=$1
build=${2:-$root/build/wheel}
py=${PYTHON:-/usr/bin/python3}
if [[ ! -f $build/CMakeCache.txt ]]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZET_BUILD_PYTHON=ON \
    -DZET_BUILD_TESTS=OFF -DZET_BUILD_BENCH=OFF -DZET_BUILD_EXAMPLES=OFF \
    -DPython3_EXECUTABLE="$py" >/dev/null
fi
cmake --build "$build" --target zetformula_py >/dev/null
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
cmake --install "$build" --component python --prefix "$stage" >/dev/null
mkdir -p "$out"
"$py" "$root/python/tools/wheel.py" "$stage" "$version" "$out"
