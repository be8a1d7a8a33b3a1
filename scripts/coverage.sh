#!/usr/bin/env bash
# Tells which lines and branches of src/ the native tests do not reach. Prints; fails for nothing but a broken build.
# Branches that only an exception takes are left out, since every call that may throw would count as one, and those of
# lines whose branches are the compiler's own: the null test of delete, the kind of exception of a catch, and the like.
# Usage: scripts/coverage.sh
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/coverage

if ! command -v gcovr >/dev/null; then
    sudo=; [ "$(id -u)" = 0 ] || sudo=sudo
    $sudo apt-get install -y --no-install-recommends gcovr >/dev/null
fi

cmake --preset linux-coverage --log-level=NOTICE >/dev/null
cmake --build --preset linux-coverage -j "$(nproc)" -- --quiet
find "$build" -name '*.gcda' -delete
# Not the consumers of the installed library (they build it again), nor what times things or tries every pixel value.
ctest --preset linux-coverage -j "$(nproc)" -E 'package|scaling|valgrind|Exhaustive' | tail -n 15 ||
    echo "Tests failed: the figures below may be too low."

report() { gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-branches-by-pattern '.*(\bnew\b|\bdelete\b|\bcatch\b|make_unique|emplace_back|push_back|dynamic_cast).*' "$@" "$build"; }
report --json "$build/coverage.json"
combine() { gcovr --root . --filter 'src/' --add-tracefile "$build/coverage.json" "$@"; }
printf '\n== Lines\n'
combine --txt -
printf '\n== Branches\n'
combine --txt - --branches
printf '\n== Summary\n'
combine --print-summary | tail -n 3
