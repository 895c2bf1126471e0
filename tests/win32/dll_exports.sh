#!/usr/bin/env bash
# A DLL's export table holds exactly the names given.
#   tests/win32/dll_exports.sh OBJDUMP DLL NAME...
set -euo pipefail
objdump=$1 dll=$2
shift 2
# objdump -p prints the export table as "[Ordinal/Name Pointer] Table" followed by
# lines "\t[   0] Name" up to a blank line.
actual=$("$objdump" -p "$dll" | awk '/\[Ordinal\/Name Pointer\] Table/{on=1; next} on && NF==0{on=0} on{print $NF}' | sort)
expected=$(printf '%s\n' "$@" | sort)
if [ "$actual" != "$expected" ]; then
  echo "exports of $dll:"; echo "$actual"; echo "expected:"; echo "$expected"
  exit 1
fi
echo "$dll exports: $(echo $actual)"
