#!/bin/sh
# Runs a program for Windows under Wine, as CTest does for the windows preset.
#
#     scripts/wine.sh begin           makes the prefix, if there is none, and starts the server that programs share
#     scripts/wine.sh end             ends that server
#     scripts/wine.sh PROGRAM ...     runs the program
#
# The prefix is ZV_WINEPREFIX, or build/windows/wine of this tree; the user's own is not touched.
set -eu

WINEPREFIX=${ZV_WINEPREFIX:-$(cd "$(dirname "$0")/.." && pwd)/build/windows/wine}
WINEDEBUG=${WINEDEBUG:--all}
WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
LC_ALL=C.UTF-8
unset DISPLAY TMPDIR
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES LC_ALL
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine=wine

case ${1:-} in
begin)
    mkdir -p "$WINEPREFIX"
    # The server and the prefix's services outlive this script, so they must not hold the pipes of whoever waits for
    # it.
    HOME=$WINEPREFIX "$wine" wineboot --init </dev/null >"$WINEPREFIX/boot.log" 2>&1
    wineserver -p </dev/null >/dev/null 2>&1 || true # it runs already
    ;;
end)
    wineserver -k || true # it has gone by itself
    ;;
*)
    exec "$wine" "$@"
    ;;
esac
