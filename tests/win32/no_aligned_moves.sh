#!/usr/bin/env bash
# GCC for Windows keeps the stack 16-byte aligned only, so an aligned move of a 32- or
# 64-byte vector to or from a stack slot can fault. The Windows builds assemble every
# aligned vector move as its unaligned form (-Wa,-muse-unaligned-vector-move); this
# checks the result: no aligned vector move is left in the given objects.
#   tests/win32/no_aligned_moves.sh OBJDUMP OBJECT...
set -euo pipefail
objdump=$1
shift
found=$("$objdump" -d --no-show-raw-insn "$@" | grep -cE '\svmov(aps|apd|dqa|dqa32|dqa64)\s' || true)
vector=$("$objdump" -d --no-show-raw-insn "$@" | grep -cE '\svmov(ups|upd|dqu|dqu8|dqu16|dqu32|dqu64)\s.*%[yz]mm' || true)
echo "aligned vector moves: $found; unaligned moves of 32/64-byte registers: $vector"
[ "$found" -eq 0 ] && [ "$vector" -gt 0 ]
