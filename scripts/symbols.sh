#!/usr/bin/env bash
# The exported dynamic symbols of the project's libraries against the lists kept in
# tests/symbols/ (one demangled name a line, sorted), so that an export nobody meant
# fails CI.
#
#   scripts/symbols.sh check  BUILD_DIR    # the test: differences are printed, exit 1
#   scripts/symbols.sh update BUILD_DIR    # rewrite the lists from the built libraries
#
# When the API grows on purpose (a new ZET_PLATFORM_API or ZET_HOST_API class or
# function), build and run `scripts/symbols.sh update build/release`, read the diff of
# tests/symbols/ and commit it with the change. A library the build does not have (the
# host in a plug-in-only build) is skipped.
#
# Left out of the lists: weak copies of standard-library templates (std::, __gnu_cxx::),
# which every C++ library exports and whose set depends on the compiler's inlining,
# weak copies in zethost and the plug-in of the platform's own exports (typeinfo and
# vtables, emitted or not depending on the optimisation), and the sanitizers' symbols.
set -euo pipefail
mode=${1:-}
build=${2:-}
if [[ ( $mode != check && $mode != update ) || -z $build ]]; then
  echo "usage: $0 check|update BUILD_DIR" >&2
  exit 2
fi
lists=$(cd "$(dirname "$0")/../tests/symbols" && pwd)

# exports LIB [OWNER_LIST]: the library's API symbols, demangled and sorted. Weak
# symbols are matched by their mangled names: standard-library ones (_ZNSt..., also
# behind a return type once demangled) are left out, and so are weak copies of what
# OWNER_LIST, the list of the library that owns it, already holds (the typeinfo of a
# platform class that zethost's code also needs).
exports() {
  nm -D --defined-only -P "$1" |
    awk '$1 !~ /^(__(odr_)?asan|__ubsan|__sanitizer|__lsan|_init$|_fini$)/ &&
         !($2 ~ /^[WVu]$/ && $1 ~ /^_ZZ?(T[ISVT]|GV)?N?K?(St|9__gnu_cxx)/) { print $2, $1 }' |
    c++filt |
    awk -v owner="${2:-}" '
      BEGIN { if (owner != "") while ((getline line < owner) > 0) owned[line] = 1 }
      { weak = $1 ~ /^[WVu]$/; sub(/^[^ ]+ /, ""); if (!(weak && $0 in owned)) print }' |
    LC_ALL=C sort -u
}

status=0
found=0
for lib in libzetplatform.so libzethost.so ZetFormulaLib.so; do
  file="$build/bin/$lib"
  [[ -e $file ]] || continue
  found=$((found + 1))
  list="$lists/${lib%.so}.txt"
  owner=""
  [[ $lib != libzetplatform.so ]] && owner="$lists/libzetplatform.txt"
  if [[ $mode == update ]]; then
    exports "$file" "$owner" >"$list"
    echo "$list: $(wc -l <"$list") symbols"
  elif ! diff=$(diff -U0 "$list" <(exports "$file" "$owner")); then
    echo "$lib exports other symbols than $list ('+' exported, not listed; '-' listed, not exported):"
    grep -E '^[-+][^-+]' <<<"$diff" || true
    status=1
  fi
done
if [[ $found -eq 0 ]]; then
  echo "$0: no library in $build/bin" >&2
  exit 2
fi
[[ $status -eq 0 && $mode == check ]] && echo "exports match tests/symbols/"
exit $status
