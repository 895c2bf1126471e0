#!/usr/bin/env bash
# Runs a Windows program under Wine, headless and quiet: the emulator of the Windows
# presets (CTest starts the test programs through it) and of scripts/wine-test.sh.
#
#   scripts/wine-run.sh PROGRAM.exe [ARGS...]
#
# The Wine prefix is ZET_WINEPREFIX, or build/wineprefix of this checkout; it is made
# once (wineboot) and then reused. Wine's own messages are off (WINEDEBUG=-all); no
# display is needed unless DISPLAY is set by the caller.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX=${ZET_WINEPREFIX:-$root/build/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
# English user locale: the date and time pictures' names come from it.
lang=${ZET_WINE_LANG:-en_US.UTF-8}
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  mkdir -p "$WINEPREFIX"
  (flock 9; [ -f "$WINEPREFIX/system.reg" ] || wineboot -i >/dev/null 2>&1; wineserver -w) 9>"$WINEPREFIX.lock"
fi
exec env LANG="$lang" LC_ALL="$lang" wine "$@"
