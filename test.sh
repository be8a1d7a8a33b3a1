#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: on Linux with two compilers and under the sanitizers, on
# Windows under Wine. Usage: ./test.sh [PRESET ...]   (default: all of them)
set -euo pipefail
cd "$(dirname "$0")"

presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(linux linux-clang linux-asan linux-tsan windows windows-tests)
jobs=$(nproc)
started=$SECONDS

say() { printf '\n== %s\n' "$*"; }

say "Packages"
scripts/install-deps.sh test

say "Formatting"
git ls-files '*.cpp' '*.h' '*.hpp' | xargs clang-format-19 --dry-run --Werror
echo "all sources are formatted"

for preset in "${presets[@]}"; do
    step=$SECONDS
    say "$preset: build"
    cmake --preset "$preset" --log-level=NOTICE >/dev/null
    cmake --build --preset "$preset" -j "$jobs" -- --quiet
    echo "$preset: built in $((SECONDS - step)) s"
    step=$SECONDS
    say "$preset: test"
    ctest --preset "$preset" -j "$jobs" --output-on-failure --no-tests=error | tail -n 15
    echo "$preset: tested in $((SECONDS - step)) s"
done

say "Everything passed in $((SECONDS - started)) s"
