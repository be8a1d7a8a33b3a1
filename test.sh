#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: on Linux with two compilers and under the sanitizers, on
# Windows under Wine. Usage: ./test.sh [PRESET ...]   (default: all of them)
set -euo pipefail
. "$(dirname "$0")/scripts/helpers.sh"
absolute_sample_data
cd "$(dirname "$0")"
note_foreign_folder

presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(linux linux-clang linux-asan linux-tsan windows windows-tests)
jobs=$(nproc)
started=$SECONDS

say "Packages"
scripts/install-deps.sh test

say "Formatting"
list_sources | xargs clang-format-19 --dry-run --Werror
echo "all sources are formatted"

for preset in "${presets[@]}"; do
    step=$SECONDS
    say "$preset: build"
    cmake --preset "$preset" --log-level=NOTICE >/dev/null
    # Under the thread sanitizer only what runs several threads says anything new.
    targets=(); [ "$preset" != linux-tsan ] || targets=(--target qxbc_thread_tests)
    patiently "building $preset" cmake --build --preset "$preset" -j "$jobs" ${targets[@]+"${targets[@]}"} -- --quiet
    echo "$preset: built in $((SECONDS - step)) s"
    step=$SECONDS
    say "$preset: test"
    if [ "$preset" = linux-tsan ]; then
        build/linux-tsan/bin/qxbc_thread_tests --gtest_brief=1
    else
        ctest --preset "$preset" -j "$jobs" --output-on-failure --no-tests=error --test-output-size-passed 65536 \
            --output-junit "$PWD/build/$preset/junit.xml" | tail -n 25
        scripts/skipped-tests.py "build/$preset/junit.xml"
    fi
    echo "$preset: tested in $((SECONDS - step)) s"
done

if [ $# = 0 ]; then
    say "Fuzzing for two minutes"
    scripts/fuzz.sh 2
fi

say "Everything passed in $((SECONDS - started)) s"
