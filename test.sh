#!/usr/bin/env bash
# Builds everything and runs every test. With --sanitize also under the address and undefined
# behaviour sanitizers, and under the thread sanitizer. With --ci, which has to end well within 20
# minutes on two cores, the latter runs tests that have threads only. With --threads these alone.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

presets=(dev)
threads_only=
case "${1-}" in
    "") ;;
    --sanitize) presets+=(asan tsan) ;;
    --ci)
        presets+=(asan tsan)
        threads_only=1
        ;;
    --threads)
        presets=(tsan)
        threads_only=1
        ;;
    *)
        echo "usage: ./test.sh [--sanitize | --ci | --threads]" >&2
        exit 2
        ;;
esac

scripts/install-packages.sh
for preset in "${presets[@]}"; do
    target=()
    tests=()
    if [ "$preset" = tsan ] && [ -n "$threads_only" ]; then
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
