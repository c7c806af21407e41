#!/usr/bin/env bash
# Builds everything and runs every test. With --sanitize also under the address and undefined
# behaviour sanitizers, and under the thread sanitizer; with --sanitize-threads under the latter only
# the tests that have threads.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

presets=(dev)
threaded_only=
case "${1-}" in
    "") ;;
    --sanitize) presets+=(asan tsan) ;;
    --sanitize-threads)
        presets+=(asan tsan)
        threaded_only=1
        ;;
    *)
        echo "usage: ./test.sh [--sanitize | --sanitize-threads]" >&2
        exit 2
        ;;
esac

scripts/install-packages.sh
for preset in "${presets[@]}"; do
    target=()
    tests=()
    if [ "$preset" = tsan ] && [ -n "$threaded_only" ]; then
        target=(--target wrapton_tests_with_threads)
        tests=(-L threads)
    fi
    SECONDS=0
    cmake --preset "$preset"
    cmake --build --preset "$preset" "${target[@]}"
    built=$SECONDS
    ctest --preset "$preset" -j "$(nproc)" "${tests[@]}"
    echo "$preset: $built s for the build, $((SECONDS - built)) s for the tests"
done
