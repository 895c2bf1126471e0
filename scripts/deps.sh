#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need (only the
# missing ones). Usage: scripts/deps.sh [--bench]  (--bench adds OpenCV for the
# image benchmark's comparison).
set -euo pipefail
pkgs=(cmake ninja-build g++ clang libomp-dev pkg-config binutils googletest libgtest-dev
      libbenchmark-dev libhwy-dev libpng-dev libssl-dev nlohmann-json3-dev libcli11-dev
      libspdlog-dev libeigen3-dev libcairo2-dev libpango1.0-dev)
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
