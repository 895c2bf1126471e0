#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need (only the
# missing ones): libclang-rt-dev for the fuzzers, dpkg-dev and file for CPack's
# Debian package. Usage: scripts/deps.sh [--bench]  (--bench adds OpenCV for the
# image and geometry benchmarks' comparisons).
set -euo pipefail
pkgs=(cmake ninja-build g++ clang libomp-dev pkg-config binutils googletest libgtest-dev
      libbenchmark-dev libhwy-dev libpng-dev libssl-dev nlohmann-json3-dev libcli11-dev
      libspdlog-dev libclang-rt-dev dpkg-dev file
      libeigen3-dev libcairo2-dev libpango1.0-dev
      # The OS layer: X11 key names to build; the desktop parts it opens at run time
      # (libX11, libcanberra, zenity) and the X server and key presser of its tests.
      x11proto-dev libx11-6 libcanberra0 zenity xvfb xdotool
      # The Python package and its tests: the system's Python, NumPy and pybind11,
      # scikit-image for the coins example, Dask for the cluster runner, venv and pip
      # for the wheel's test.
      python3-dev pybind11-dev python3-numpy python3-pytest python3-skimage python3-dask
      python3-distributed python3-venv python3-pip
      # The Windows builds (scripts/windeps.sh builds their libraries) and Wine to test them.
      g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix mingw-w64-tools wine wine64)
[ "${1:-}" = "--bench" ] && pkgs+=(libopencv-dev)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "installing: ${missing[*]}"
$sudo apt-get update -q >/dev/null
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null
