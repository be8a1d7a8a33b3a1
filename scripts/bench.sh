#!/usr/bin/env bash
# Measures the library against the literal algorithms, OpenCV and the memory limit, and writes docs/performance.md with
# its picture. Takes some minutes; wants an otherwise idle machine. Usage: scripts/bench.sh [ROUNDS]
set -euo pipefail
cd "$(dirname "$0")/.."
rounds=${1:-15}
scripts/install-deps.sh test
cmake --preset linux --log-level=NOTICE >/dev/null
cmake --build --preset linux --target qxbc_compare qxbc_scaling -- --quiet
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
root=$PWD
cd "$scratch"
# One core, the last one: the first one takes most interrupts.
core=$(($(nproc) - 1))
taskset -c "$core" "$root/build/linux/bin/qxbc_compare" --rounds "$rounds" --json compare.json
taskset -c "$core" "$root/build/linux/bin/qxbc_scaling" | tee scaling.txt
python3 "$root/scripts/report-performance.py" compare.json scaling.txt "$root/docs"
