#!/usr/bin/env bash
# Runs every fuzz target side by side for a number of minutes (10), each from its kept inputs on. New
# inputs, logs and inputs that broke something are left in build/fuzz/findings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

minutes=${1-10}
if [[ $# -gt 1 || ! "$minutes" =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: ./fuzz.sh [minutes]" >&2
    exit 2
fi

cmake --preset fuzz
cmake --build --preset fuzz

# Work buffers of megabytes come and go; quarantine and stack traces for each would take all time.
export ASAN_OPTIONS="quarantine_size_mb=8:malloc_context_size=3:max_malloc_fill_size=0"
findings=build/fuzz/findings
targets=()
for corpus in fuzz/corpus/*/; do
    targets+=("$(basename "$corpus")")
done

processes=()
for target in "${targets[@]}"; do
    mkdir -p "$findings/$target"
    "build/fuzz/fuzz/${target}_fuzzer" -max_total_time=$((60 * minutes)) -max_len=4096 -len_control=20 \
        -timeout=25 -print_final_stats=1 -artifact_prefix="$findings/$target-" \
        "$findings/$target" "fuzz/corpus/$target" >"$findings/$target.log" 2>&1 &
    processes+=($!)
done

failed=0
for i in "${!targets[@]}"; do
    target=${targets[$i]}
    outcome=passed
    wait "${processes[$i]}" || outcome="FAILED, see $findings/$target.log"
    [[ "$outcome" == passed ]] || failed=1
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$findings/$target.log")
    cover=$(grep -o 'cov: [0-9]*' "$findings/$target.log" | tail -1)
    echo "$target: ${runs:-0} runs, ${cover#cov: } edges, $outcome"
done

exit "$failed"
