#!/usr/bin/env bash
# Fuzzes for a number of minutes, all targets at the same time, on all cores. Usage: scripts/fuzz.sh MINUTES [TARGET ...]
# Where others want the cores as well it takes longer: each target gets the processor time that it would have had alone.
# Starts from fuzz/corpus and from what earlier runs found; prints how much was tried. Fails when something was found:
# the input is then in build/linux-fuzz/findings, and `build/linux-fuzz/bin/fuzz_TARGET FILE` shows what happens.
set -euo pipefail
cd "$(dirname "$0")/.."

minutes=${1:?usage: scripts/fuzz.sh MINUTES [TARGET ...]}
shift
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(calibration_file grouping operations)
preset=linux-fuzz
build=build/$preset
seconds=$(awk -v minutes="$minutes" 'BEGIN { printf "%d", minutes * 60 }')
instances=$(($(nproc) / ${#targets[@]}))
[ "$instances" -gt 0 ] || instances=1

cmake --preset "$preset" --log-level=NOTICE >/dev/null
cmake --build --preset "$preset" -j "$(nproc)" -- --quiet
mkdir -p "$build/findings" "$build/logs"

# Searching stacks and freed frames takes most of the time and the replays of the corpora do it.
export ASAN_OPTIONS=malloc_context_size=1:detect_stack_use_after_return=0:quarantine_size_mb=16
declare -A longest=([calibration_file]=4096 [grouping]=512 [operations]=1024)
declare -A dictionary=([calibration_file]=calibration.dict [grouping]=grouping.dict)

declare -A logs=()
pids=()
for target in "${targets[@]}"; do
    found=$build/corpus/$target
    mkdir -p "$found"
    options=(-max_len="${longest[$target]}" -timeout=30 -rss_limit_mb=4096 -print_final_stats=1)
    [ -z "${dictionary[$target]:-}" ] || options+=(-dict="fuzz/${dictionary[$target]}")
    for ((instance = 1; instance <= instances; ++instance)); do
        log=$build/logs/$target-$instance.log
        logs[$target]+=" $log"
        nice -n 10 "$build/bin/fuzz_$target" "${options[@]}" -artifact_prefix="$build/findings/$target-" \
            "$found" "fuzz/corpus/$target" >"$log" 2>&1 &
        pids+=($!)
    done
done
allowance=$((seconds * $(nproc) / ${#pids[@]})) # of processor time for each
[ "$allowance" -lt "$seconds" ] || allowance=$seconds
ticks=$(getconf CLK_TCK)
running=("${pids[@]}")
while [ ${#running[@]} -gt 0 ]; do
    left=()
    for pid in "${running[@]}"; do
        read -r -a stat 2>/dev/null <"/proc/$pid/stat" || continue # it has ended
        left+=("$pid")
        # Fields 14 and 15: the time in the program, and in the system for it. The signal has it end as if it were done.
        [ $(((stat[13] + stat[14]) / ticks)) -lt "$allowance" ] || kill -USR1 "$pid" 2>/dev/null || true
    done
    running=(${left[@]+"${left[@]}"})
    sleep 1
done
failed=0
for pid in "${pids[@]}"; do
    wait "$pid" || failed=1
done

printf '%-18s %12s %10s %10s %8s\n' target executions minutes exec/s corpus
total=0
for target in "${targets[@]}"; do
    # shellcheck disable=SC2086  # several logs
    executions=$(awk '/^stat::number_of_executed_units/ { n += $2 } END { print n + 0 }' ${logs[$target]})
    total=$((total + executions))
    printf '%-18s %12d %10.1f %10d %8d\n' "$target" "$executions" "$minutes" \
        $((executions / (seconds > 0 ? seconds : 1))) "$(find "$build/corpus/$target" -type f | wc -l)"
done
printf '%-18s %12d\n' all "$total"
if [ "$failed" -ne 0 ]; then
    for target in "${targets[@]}"; do
        # shellcheck disable=SC2086
        grep -hE 'does not hold|ERROR: |SUMMARY: |Test unit written' ${logs[$target]} || true
    done
    echo "something was found"
    exit 1
fi
