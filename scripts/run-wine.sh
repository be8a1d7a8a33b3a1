#!/usr/bin/env bash
# Runs a Windows program under Wine: scripts/run-wine.sh program.exe [arguments...]
# WINEPREFIX is respected; otherwise a prefix of its own is kept under build/, so that nobody's Wine is touched.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix}
export WINEDEBUG=${WINEDEBUG:--all}
# No offers to install .NET or a browser engine, and no debugger: under a server that has just started, a program that
# crashes into the debugger ends with 0.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree=;mshtml=;winedbg.exe=}
mkdir -p "$WINEPREFIX"

# The first program of a session creates the prefix and starts Wine's own services, which takes seconds. Do that once,
# in one process, with its streams closed: services that hold on to a test's output would keep the test from ending.
# The server then stays for a minute after the last program.
(
    flock 9
    if wineserver -p60 9>&-; then # fails when it is running already
        wine wineboot 9>&-
    fi
) 9>"$WINEPREFIX/.start-lock" </dev/null >/dev/null 2>&1

# Tests of exhausted memory need memory to have an end.
[ -z "${WINE_ADDRESS_SPACE_MB:-}" ] || ulimit -v $((WINE_ADDRESS_SPACE_MB * 1024))

exec wine "$@"
