#!/usr/bin/env bash
# Installs the build tree into a scratch prefix, builds the out-of-tree host of
# examples/embed against it (CMake package), checks that the pkg-config file finds
# the tree wherever it is (installed with --prefix, then moved), and runs it.
set -euo pipefail
build=$1; src=$2
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$src/examples/embed" -B "$work/embed" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="${EMBED_CXX_FLAGS:-}" >/dev/null
cmake --build "$work/embed" >/dev/null
pc="$work/prefix/lib/pkgconfig/zetformula.pc"
if grep -n '=/' "$pc"; then echo "absolute path in $pc" >&2; exit 1; fi
test -f "$work/prefix/share/doc/ZetFormulaLib/LICENSE"
mv "$work/prefix" "$work/moved"
flags=$(PKG_CONFIG_PATH="$work/moved/lib/pkgconfig" pkg-config --cflags --libs zetformula)
grep -q -- "-I$work/moved/[a-z./]*include" <<<"$flags" || { echo "pkg-config: $flags" >&2; exit 1; }
grep -q -- -lzetplatform <<<"$flags"
test -f "$(PKG_CONFIG_PATH="$work/moved/lib/pkgconfig" pkg-config --variable=plugin zetformula)"
mv "$work/moved" "$work/prefix"
test -x "$work/prefix/bin/zet"
# (into a file: a pipe closed early would end zet with SIGPIPE under pipefail)
"$work/prefix/bin/zet" list >"$work/list.txt"
head -n 1 "$work/list.txt" | grep -q _Zet_Numeric_Set_
out=$(LD_LIBRARY_PATH="$work/prefix/lib" "$work/embed/embed_host")
echo "$out"
grep -q "Add -> status 0, sum 6.5" <<<"$out"
grep -q "report: level 2, Numeric: Divide: Division by zero" <<<"$out"
grep -q "Divide -> status 3" <<<"$out"
