#!/bin/sh
# Runs a program for Windows under Wine, as CTest does for the windows preset.
#
#     scripts/wine.sh begin           creates the prefix if there is none, and starts the server that programs share
#     scripts/wine.sh end             ends that server
#     scripts/wine.sh PROGRAM ...     runs the program
#
# The prefix is ZV_WINEPREFIX, or build/windows/wine in this tree; the user's own prefix is not touched.
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
    # The server and the prefix's services outlive this script. They must not keep its pipes open: whoever waits for the
    # script would wait for them.
    # First the server, which then stays when no program runs: one that is just ending fails whoever comes at that moment.
    wineserver -p </dev/null >/dev/null 2>&1 || true # it is already running
    HOME=$WINEPREFIX "$wine" wineboot --init </dev/null >"$WINEPREFIX/boot.log" 2>&1
    ;;
end)
    wineserver -k || true # it has already ended
    ;;
*)
    exec "$wine" "$@"
    ;;
esac
