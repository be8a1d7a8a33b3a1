#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests, and says how long each step took.
#   ./test.sh              everything: on Linux with GCC, and with Clang under the sanitizers; on Windows under Wine; fuzzing
#   ./test.sh quick        while working: GCC's release build with the tests that do not take long, and the Windows DLL
#                          with its contract hosts
#   ./test.sh PRESET ...   all tests of these presets
#
# Presets are built one after the other and tested one after the other, but the next is built while one is tested: tests
# alone do not keep all cores busy. Where there is work for both, tests come first and fuzzing last.
set -euo pipefail
. "$(dirname "$0")/scripts/helpers.sh"
absolute_sample_data
cd "$(dirname "$0")"
note_foreign_folder

quick= everything=
presets=("$@")
if [ $# = 0 ]; then
    everything=yes
    presets=(linux windows windows-tool linux-fuzz windows-tests linux-asan linux-tsan)
elif [ "$*" = quick ]; then
    quick=yes
    presets=(linux windows)
fi
jobs=$(nproc)
threaded=(qxbc_thread_tests qxbc_lock_tests qxbc_tool_thread_tests) # what runs several threads

# Each step's time, for the table at the end, and what runs beside the tests, which ends with the script.
scratch=$(mktemp -d)
lanes=()
clean_up() {
    local lane
    for lane in ${lanes[@]+"${lanes[@]}"}; do
        kill -- "-$lane" 2>/dev/null || true
    done
    rm -rf "$scratch"
}
trap clean_up EXIT

# step NAME COMMAND...: runs a command, and notes when it began, how long it took and how long processors worked for it.
step() {
    local name=$1 began=$SECONDS status=0 took user system note=$scratch/step.$BASHPID TIMEFORMAT='%0U %0S'
    shift
    # In a shell of its own, lest the time of a lane that ends meanwhile is counted here.
    (time "$@" 1>&6 2>&7 6>&- 7>&-) 6>&1 7>&2 2>"$note" || status=$?
    [ "$status" = 0 ] || return "$status"
    took=$((SECONDS - began))
    read -r user system <"$note"
    printf '%5d s  %6d s  %5d s  %s\n' "$took" $((user + system)) "$began" "$name" >>"$scratch/times"
    echo "$name: $took s"
}

# lane COMMAND...: runs it beside the rest, in a process group of its own; sets "lane".
lane() {
    set -m
    "$@" &
    lane=$!
    set +m
    lanes+=("$lane")
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
    # One more than there are cores, since many wait now and then: for a lock, a signal, Wine, a browser.
    if ! patiently "testing $preset" ctest_into "$log" --preset "$preset" -j $((jobs + 1)) --output-on-failure \
        --no-tests=error --test-output-size-passed 65536 --output-junit "$PWD/build/$preset/junit.xml" "$@"; then
        grep -vE '^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test +#.* Passed ' "$log"
        return 1
    fi
    grep -E '^[0-9]+% tests passed' "$log" && scripts/skipped-tests.py "build/$preset/junit.xml"
}

test_preset() {
    if [ "$1" = linux-tsan ]; then
        local tests
        for tests in "${threaded[@]}"; do
            "build/linux-tsan/bin/$tests" --gtest_brief=1 || return
        done
    elif [ -n "$quick" ]; then
        run_tests "$1" -E '^(valgrind|package_|fuzz_corpus|.*Exhaustive|StoreModelTest|python[.]zarr|.*_find_violations|Large/)'
    else
        run_tests "$1"
    fi
}

check_formatting() { list_sources | xargs -P "$jobs" -n 40 clang-format-19 --dry-run --Werror; }

# Configures as well: that keeps one core busy, while the tests of the preset before it use the other. What the workbench
# for Windows is linked with may have to be built first.
build() {
    local targets=()
    cmake --preset "$1" --log-level=NOTICE >/dev/null || return
    # Under the thread sanitizer only what runs several threads says anything new.
    [ "$1" != linux-tsan ] || targets=(--target "${threaded[@]}")
    nice -n 5 cmake --build --preset "$1" -j "$jobs" ${targets[@]+"${targets[@]}"} -- --quiet
}

# Says in the pipe "built" which preset can be tested.
build_presets() {
    exec 8>"$scratch/built"
    local preset
    for preset in "$@"; do
        step "$preset: build" patiently "building $preset" build "$preset" || exit
        echo "$preset" >&8
    done
}

say "Packages"
level=test
[[ " ${presets[*]} " != *" linux-arm64 "* ]] || level=more
step "packages" scripts/install-deps.sh "$level"

# What was compiled before, here or in another checkout, is not compiled again.
if command -v ccache >/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
fi
if [[ " ${presets[*]} " == *" windows-tool "* ]]; then
    lane scripts/windows-libraries.sh >/dev/null
fi

if [[ " ${presets[*]} " == *" windows"* ]]; then # what Wine makes for its first program takes it half a minute
    lane scripts/run-wine.sh cmd /c exit >/dev/null 2>&1
fi

say "Building and testing"
lane step "formatting" check_formatting
formatting=$lane
mkfifo "$scratch/built"
lane build_presets "${presets[@]}"
building=$lane fuzzing=
exec 9<"$scratch/built"
while read -r preset <&9; do
    wait "$formatting"
    if [ -n "$everything" ] && [ "$preset" = linux-fuzz ]; then
        lane step "fuzzing" scripts/fuzz.sh 2 9<&-
        fuzzing=$lane
    else
        step "$preset: test" test_preset "$preset" 9<&- </dev/null
    fi
done
wait "$formatting"
wait "$building" # what went wrong it has said
[ -z "$fuzzing" ] || wait "$fuzzing"

say "Everything passed in $SECONDS s"
printf '%7s  %8s  %7s\n' took computed began
cat "$scratch/times"
