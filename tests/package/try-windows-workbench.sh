#!/usr/bin/env bash
# Whether an unpacked workbench for Windows works, with the library that lies beside it.
# Usage: tests/package/try-windows-workbench.sh qxbackground.exe SCRATCH
set -euo pipefail
wine=$(cd "$(dirname "$0")/../.." && pwd)/scripts/run-wine.sh
program=$(realpath "$1")
mkdir "$2/windows-workbench"
cd "$2/windows-workbench"
"$wine" "$program" simulate -o camera --width 20 --height 10 --frames 2 --lights 1 >/dev/null
"$wine" "$program" build c.qxb --key k --exposure 1 --intensity 100 camera/dark_1s.tif >/dev/null
"$wine" "$program" check c.qxb
