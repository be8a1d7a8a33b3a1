#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests, and says how long each step took.
#   ./test.sh              everything: on Linux with two compilers and under the sanitizers, on Windows under Wine, fuzzing
#   ./test.sh quick        while working: GCC's release build with the tests that do not take long, and the Windows DLL
#                          with its contract hosts
#   ./test.sh PRESET ...   all tests of these presets
set -euo pipefail
cd "$(dirname "$0")"

quick= everything=
presets=("$@")
if [ $# = 0 ]; then
    everything=yes
    presets=(linux linux-clang linux-asan linux-tsan windows windows-tests)
elif [ "$*" = quick ]; then
    quick=yes
    presets=(linux windows)
fi
jobs=$(nproc)
step=$SECONDS
times=()

say() { printf '\n== %s\n' "$*"; }

# What was done since the last call, for the table at the end.
done_with() {
    times+=("$(printf '%5d s  %s' $((SECONDS - step)) "$1")")
    echo "$1: $((SECONDS - step)) s"
    step=$SECONDS
}

# Prints what failed with its output, or in a few lines that nothing did and what was skipped.
run_tests() {
    local preset=$1 log=build/$1/test.log
    shift
    if ! ctest --preset "$preset" -j "$jobs" --output-on-failure --no-tests=error "$@" >"$log" 2>&1; then
        grep -vE '^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test +#.* Passed ' "$log"
        return 1
    fi
    grep -E '^[0-9]+% tests passed| \((Skipped|Disabled|Not Run)\)$' "$log"
    tr -d '\r' <"build/$preset/Testing/Temporary/LastTest.log" | grep -oE '^\[  SKIPPED \] [^0-9 ][^ ,]*' | sort -u || true
}

say "Packages"
scripts/install-deps.sh test
done_with "packages"

say "Formatting"
git ls-files '*.cpp' '*.h' '*.hpp' | xargs -P "$jobs" -n 40 clang-format-19 --dry-run --Werror
echo "all sources are formatted"
done_with "formatting"

# Configuring runs on one core: several at a time.
say "Configuring"
configured=("${presets[@]}")
[ -z "$everything" ] || configured+=(linux-fuzz)
printf '%s\n' "${configured[@]}" | xargs -P "$jobs" -I '{}' cmake --preset '{}' --log-level=NOTICE >/dev/null
done_with "configuring"

for preset in "${presets[@]}"; do
    say "$preset: build"
    # Under the thread sanitizer only what runs several threads says anything new.
    targets=(); [ "$preset" != linux-tsan ] || targets=(--target qxbc_thread_tests)
    cmake --build --preset "$preset" -j "$jobs" ${targets[@]+"${targets[@]}"} -- --quiet
    done_with "$preset: build"

    say "$preset: test"
    if [ "$preset" = linux-tsan ]; then
        build/linux-tsan/bin/qxbc_thread_tests --gtest_brief=1
    elif [ -n "$quick" ]; then
        run_tests "$preset" -E '^(valgrind|package_|fuzz_corpus|.*Exhaustive|StoreModelTest|.*_find_violations|Large/)'
    else
        run_tests "$preset"
    fi
    done_with "$preset: test"
done

if [ -n "$everything" ]; then
    say "Fuzzing: build"
    cmake --build --preset linux-fuzz -j "$jobs" -- --quiet
    done_with "fuzzing: build"
    say "Fuzzing for two minutes"
    scripts/fuzz.sh 2
    done_with "fuzzing"
fi

say "Everything passed in $SECONDS s"
printf '%s\n' "${times[@]}"
