#!/usr/bin/env bash
# Builds the benchmarks, measures every container against a plain copy and against libavformat, and
# writes docs/performance.md. Takes about ten minutes. Arguments go to wrapton_compare: with any of
# them the report is only printed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

cmake --preset bench
cmake --build --preset bench

compare=build/bench/benchmarks/wrapton_compare
if (($# != 0)); then
    exec "$compare" "$@"
fi
report=$(mktemp)
trap 'rm -f "$report"' EXIT
cat benchmarks/performance-head.md >"$report"
"$compare" | tee -a "$report"
cat benchmarks/performance-tail.md >>"$report"
cp "$report" docs/performance.md
