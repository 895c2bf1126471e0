#!/usr/bin/env bash
# Builds the libraries the Windows builds need and Debian ships no mingw-w64 package
# for (Highway, zlib, libpng, fmt, spdlog) from Debian's own source packages, with the
# mingw-w64 toolchain of one target, into a prefix under the build folder:
#
#   scripts/windeps.sh i686|x86_64 [ROOT]     (ROOT defaults to build/windeps)
#
# Sources are fetched once with `apt-get source` through a private apt state under
# ROOT/apt (a deb-src entry for bookworm on the same mirror as the system's entry; the
# system's own apt configuration is not touched) and unpacked into ROOT/src, shared by
# both targets. The prefix ROOT/<arch>/prefix is reused as it is when its stamp names
# the same source versions and the same version of this script, so a second run costs
# nothing. Header-only Eigen, nlohmann-json and CLI11 and GoogleTest's sources come from
# the system as they are and are not built here.
set -euo pipefail
cd "$(dirname "$0")/.."
arch=${1:?usage: scripts/windeps.sh i686|x86_64 [ROOT]}
case "$arch" in i686 | x86_64) ;; *) echo "unknown target $arch" >&2; exit 2 ;; esac
# Without ROOT the libraries are built once per machine: build/windeps, when it does not
# exist yet, becomes a link to a folder of the user's cache (ZET_WINDEPS_CACHE, by default
# ~/.cache/zetformulalib/windeps; set it empty to keep everything in build/windeps), so
# that another clone of the project finds them built. Paths are resolved to the real
# folder, so what the builds record stays valid from any clone; runs that share the
# folder take turns.
cache=${ZET_WINDEPS_CACHE-${XDG_CACHE_HOME:-${HOME:-}/.cache}/zetformulalib/windeps}
[ "$cache" = /.cache/zetformulalib/windeps ] && cache=""  # no home folder: no cache
if [ -z "${2:-}" ] && [ -n "$cache" ] && [ ! -e build/windeps ]; then
  mkdir -p "$cache" build && ln -sfn "$cache" build/windeps
fi
root=$(mkdir -p "${2:-build/windeps}" && cd "${2:-build/windeps}" && pwd -P)
exec 9>"$root/.lock"
flock 9
triple=$arch-w64-mingw32
prefix=$root/$arch/prefix
packages=(highway zlib libpng1.6 fmtlib spdlog)
toolchain=$PWD/cmake/toolchains/mingw-w64-$arch.cmake
jobs=$(nproc)

# ---- sources (shared by both targets) ----
apt_dir=$root/apt
apt_opts=(-o "Dir::Etc::SourceList=$apt_dir/sources.list" -o "Dir::Etc::SourceParts=/dev/null"
          -o "Dir::State::Lists=$apt_dir/lists" -o "Dir::Cache=$apt_dir/cache"
          -o "APT::Sandbox::User=root" -q)
fetch_sources() {
  mkdir -p "$apt_dir/lists/partial" "$apt_dir/cache/archives/partial" "$root/src"
  local mirror
  mirror=$(grep -rhoE 'https?://[^ ]+/debian/?( |$)' /etc/apt/sources.list /etc/apt/sources.list.d/ 2>/dev/null |
           head -n1 | tr -d ' ' || true)
  echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] ${mirror:-http://deb.debian.org/debian} bookworm main" \
    >"$apt_dir/sources.list"
  apt-get "${apt_opts[@]}" update >/dev/null
  (cd "$root/src" && apt-get "${apt_opts[@]}" source --download-only "${packages[@]}" >/dev/null)
}
# The unpacked source folder of a package (its .dsc unpacked once).
source_dir() {
  local dsc
  dsc=$(ls "$root/src/$1"_*.dsc 2>/dev/null | head -n1)
  [ -n "$dsc" ] || { echo "no source of $1" >&2; return 1; }
  local dir=$root/src/$(basename "$dsc" .dsc)
  if [ ! -d "$dir" ]; then
    (cd "$root/src" && dpkg-source --no-check -x "$(basename "$dsc")" "$(basename "$dir")" >/dev/null)
  fi
  echo "$dir"
}
ls "$root/src/"*.dsc >/dev/null 2>&1 && [ "$(ls "$root/src/"*.dsc | wc -l)" -ge ${#packages[@]} ] || fetch_sources

# The prefix is reused while the sources, the compiler and the recipe stay the same:
# raise `recipe` when a build step below or the toolchain files' flags change.
recipe=2
stamp_text() {
  echo "recipe $recipe, $($triple-g++-posix -dumpfullversion 2>/dev/null)"
  ls "$root/src/"*.dsc | xargs -n1 basename
}
# nlohmann-json and CLI11 are the system's headers, used as they are; their own CMake
# packages would add all of /usr/include to the Windows compiles, so the prefix links to
# their folders alone and carries a small package file for each.
header_package() {  # NAME TARGET VERSION
  mkdir -p "$prefix/lib/cmake/$1"
  printf '%s\n' "if(NOT TARGET $2)" "  add_library($2 INTERFACE IMPORTED)" \
    "  set_target_properties($2 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES \"$prefix/include/system-headers\")" \
    "endif()" >"$prefix/lib/cmake/$1/$1Config.cmake"
  printf '%s\n' "set(PACKAGE_VERSION $3)" "set(PACKAGE_VERSION_COMPATIBLE TRUE)" \
    >"$prefix/lib/cmake/$1/$1ConfigVersion.cmake"
}
header_packages() {
  mkdir -p "$prefix/include/system-headers"
  ln -sfn /usr/include/nlohmann "$prefix/include/system-headers/nlohmann"
  ln -sfn /usr/include/CLI "$prefix/include/system-headers/CLI"
  header_package nlohmann_json nlohmann_json::nlohmann_json \
    "$(dpkg-query -W -f='${Version}' nlohmann-json3-dev | cut -d- -f1)"
  header_package CLI11 CLI11::CLI11 "$(dpkg-query -W -f='${Version}' libcli11-dev | cut -d- -f1)"
}
if [ -f "$prefix/.stamp" ] && [ "$(cat "$prefix/.stamp")" = "$(stamp_text)" ]; then
  header_packages
  echo "windeps $arch: up to date ($prefix)"
  exit 0
fi
rm -rf "$prefix" "$root/$arch/build"
mkdir -p "$prefix" "$root/$arch/build"
start=$SECONDS

# One CMake project: configure, build and install into the prefix, static libraries.
build() {
  local name=$1 src=$2
  shift 2
  echo "windeps $arch: $name"
  cmake -S "$src" -B "$root/$arch/build/$name" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_PREFIX_PATH="$prefix" \
    -DBUILD_SHARED_LIBS=OFF -DCMAKE_POSITION_INDEPENDENT_CODE=ON "$@" >"$root/$arch/build/$name.log" 2>&1 &&
    cmake --build "$root/$arch/build/$name" -j "$jobs" >>"$root/$arch/build/$name.log" 2>&1 &&
    cmake --install "$root/$arch/build/$name" >>"$root/$arch/build/$name.log" 2>&1 ||
    { tail -n 30 "$root/$arch/build/$name.log"; exit 1; }
}

# Debian's zlib source leaves out the Windows resource file that the DLL needs, so only
# the static library is built, and installed by hand.
zsrc=$(source_dir zlib)
zbuild=$root/$arch/build/zlib
echo "windeps $arch: zlib"
{ cmake -S "$zsrc" -B "$zbuild" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release &&
  cmake --build "$zbuild" --target zlibstatic -j "$jobs"; } >"$zbuild.log" 2>&1 || { tail -n 30 "$zbuild.log"; exit 1; }
mkdir -p "$prefix/include" "$prefix/lib"
cp "$zsrc/zlib.h" "$zbuild/zconf.h" "$prefix/include/"
cp "$zbuild/libzlibstatic.a" "$prefix/lib/libz.a"
build libpng "$(source_dir libpng1.6)" -DPNG_SHARED=OFF -DPNG_STATIC=ON -DPNG_TESTS=OFF \
  -DPNG_EXECUTABLES=OFF -DZLIB_ROOT="$prefix" -DZLIB_LIBRARY="$prefix/lib/libz.a" \
  -DZLIB_INCLUDE_DIR="$prefix/include"
# Highway keeps its runtime dispatch; its contrib holds the sort the arrays use (vqsort).
build highway "$(source_dir highway)" -DHWY_ENABLE_TESTS=OFF -DHWY_ENABLE_EXAMPLES=OFF \
  -DHWY_ENABLE_CONTRIB=ON -DHWY_ENABLE_INSTALL=ON -DHWY_WARNINGS_ARE_ERRORS=OFF \
  -DCMAKE_CXX_FLAGS="-Wa,-muse-unaligned-vector-move"
build fmt "$(source_dir fmtlib)" -DFMT_DOC=OFF -DFMT_TEST=OFF -DFMT_INSTALL=ON
build spdlog "$(source_dir spdlog)" -DSPDLOG_FMT_EXTERNAL=ON -DSPDLOG_BUILD_EXAMPLE=OFF \
  -DSPDLOG_BUILD_TESTS=OFF -DSPDLOG_BUILD_BENCH=OFF -DSPDLOG_INSTALL=ON

header_packages
stamp_text >"$prefix/.stamp"
echo "windeps $arch: built in $((SECONDS - start)) s into $prefix"
