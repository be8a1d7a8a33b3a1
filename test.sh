#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests, and says how long each step took.
#   ./test.sh              everything: on Linux with GCC, and with Clang under the sanitizers; on Windows under Wine; fuzzing
#   ./test.sh quick        while working: GCC's release build with the tests that do not take long, and the Windows DLL
#                          with its contract hosts
#   ./test.sh PRESET ...   all tests of these presets
set -euo pipefail
. "$(dirname "$0")/scripts/helpers.sh"
absolute_sample_data
cd "$(dirname "$0")"
note_foreign_folder

quick= everything=
presets=("$@")
if [ $# = 0 ]; then
    everything=yes
    presets=(linux linux-asan linux-tsan windows windows-tests windows-tool)
elif [ "$*" = quick ]; then
    quick=yes
    presets=(linux windows)
fi
jobs=$(nproc)
step=$SECONDS
times=()


# What was done since the last call, for the table at the end.
done_with() {
    times+=("$(printf '%5d s  %s' $((SECONDS - step)) "$1")")
    echo "$1: $((SECONDS - step)) s"
    step=$SECONDS
}

ctest_into() {
    local log=$1
    shift
    ctest "$@" >"$log" 2>&1
}

# Prints what failed with its output, or in a few lines that nothing did, and what was skipped and why.
run_tests() {
    local preset=$1 log=build/$1/test.log
    shift
    if ! patiently "testing $preset" ctest_into "$log" --preset "$preset" -j "$jobs" --output-on-failure \
        --no-tests=error --test-output-size-passed 65536 --output-junit "$PWD/build/$preset/junit.xml" "$@"; then
        grep -vE '^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test +#.* Passed ' "$log"
        return 1
    fi
    grep -E '^[0-9]+% tests passed' "$log"
    scripts/skipped-tests.py "build/$preset/junit.xml"
}

say "Packages"
level=test
[[ " ${presets[*]} " != *" linux-arm64 "* ]] || level=more
scripts/install-deps.sh "$level"
done_with "packages"

# What was compiled before, here or in another checkout, is not compiled again.
if command -v ccache >/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
fi

say "Formatting"
list_sources | xargs -P "$jobs" -n 40 clang-format-19 --dry-run --Werror
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
    targets=(); [ "$preset" != linux-tsan ] || targets=(--target qxbc_thread_tests qxbc_lock_tests)
    patiently "building $preset" cmake --build --preset "$preset" -j "$jobs" ${targets[@]+"${targets[@]}"} -- --quiet
    done_with "$preset: build"

    say "$preset: test"
    if [ "$preset" = linux-tsan ]; then
        build/linux-tsan/bin/qxbc_thread_tests --gtest_brief=1
        build/linux-tsan/bin/qxbc_lock_tests --gtest_brief=1
    elif [ -n "$quick" ]; then
        run_tests "$preset" -E '^(valgrind|package_|fuzz_corpus|.*Exhaustive|StoreModelTest|python[.]zarr|.*_find_violations|Large/)'
    else
        run_tests "$preset"
    fi
    done_with "$preset: test"
done

if [ -n "$everything" ]; then
    say "Fuzzing: build"
    patiently "building linux-fuzz" cmake --build --preset linux-fuzz -j "$jobs" -- --quiet
    done_with "fuzzing: build"
    say "Fuzzing for two minutes"
    scripts/fuzz.sh 2
    done_with "fuzzing"
fi

say "Everything passed in $SECONDS s"
printf '%s\n' "${times[@]}"
