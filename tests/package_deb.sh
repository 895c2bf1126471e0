#!/usr/bin/env bash
# package_deb.sh BUILD_DIR
#
# Makes the Debian package of the build with CPack, checks what it holds, what it
# depends on and that apt-get could install it here (simulated: the test changes
# nothing on the machine), unpacks it into a scratch folder (dpkg-deb -x, as the
# package manager would place the files under /) and runs zet from there: the run
# paths and the plug-in's place must work from the package's own layout.
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cpack --config "$build/CPackConfig.cmake" -B "$work/out" >"$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log"; exit 1; }
debs=("$work"/out/*.deb)
[ ${#debs[@]} -eq 1 ] || { echo "expected one package, got: ${debs[*]}"; exit 1; }
deb=${debs[0]}

fail() { echo "package_deb: $*" >&2; exit 1; }
info=$(dpkg-deb --info "$deb")
grep -q '^ Package: zetformulalib$' <<<"$info" || fail "package name"
depends=$(sed -n 's/^ Depends: //p' <<<"$info")
for lib in libgomp1 libhwy1 libpng16-16 libssl3; do
  grep -q "$lib" <<<"$depends" || fail "Depends lacks $lib: $depends"
done
# The package manager would install it here: every dependency can be met.
if command -v apt-get >/dev/null; then
  apt-get install --simulate "$deb" >"$work/simulate.txt" 2>&1 ||
    { cat "$work/simulate.txt"; fail "apt-get cannot install the package"; }
  grep -q '^Inst zetformulalib ' "$work/simulate.txt" || { cat "$work/simulate.txt"; fail "apt-get would not install it"; }
fi
contents=$(dpkg-deb --contents "$deb" | awk '{print $6}')
for f in ./usr/bin/zet ./usr/lib/zet/ZetFormulaLib.so ./usr/lib/libzetplatform.so.1 \
         ./usr/lib/libzethost.so.1 ./usr/include/zet/InstrPlugin.h ./usr/include/zet/ZetHost.h \
         ./usr/lib/pkgconfig/zetformula.pc ./usr/lib/cmake/ZetFormulaLib/ZetFormulaLibConfig.cmake; do
  grep -qxF "$f" <<<"$contents" || fail "$f is not in the package"
done
grep -q '/LICENSE$' <<<"$contents" || fail "no LICENSE in the package"

root="$work/root"
dpkg-deb -x "$deb" "$root"
grep -q "Apache License" "$root"/usr/share/doc/*/LICENSE || fail "the LICENSE is not the Apache licence"
# From the unpacked tree alone: no build directory on the library path.
zet="$root/usr/bin/zet"
env -u LD_LIBRARY_PATH -u ZET_PLUGIN "$zet" list >"$work/list.txt" || fail "zet list exited with $?"
[ "$(wc -l <"$work/list.txt")" -gt 10 ] || fail "zet list printed $(wc -l <"$work/list.txt") lines"
head -n 1 "$work/list.txt" | grep -q _Zet_Numeric_Set_ || fail "unexpected first line: $(head -n 1 "$work/list.txt")"
out=$(echo '{"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1, 2, 3.5]}' | env -u LD_LIBRARY_PATH -u ZET_PLUGIN "$zet" exec) ||
  fail "zet exec exited with $?"
grep -q '"outputs":\[6.5\]' <<<"$out" || fail "zet exec answered $out"
# The pkg-config file of the package names the package's own tree.
PKG_CONFIG_PATH="$root/usr/lib/pkgconfig" pkg-config --variable=plugin zetformula >"$work/plugin.txt"
[ -f "$(cat "$work/plugin.txt")" ] || fail "pkg-config plugin path $(cat "$work/plugin.txt") does not exist"
echo "package_deb: $(basename "$deb") ($(du -k "$deb" | cut -f1) KiB), Depends: $depends"
