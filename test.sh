#!/usr/bin/env bash
# Builds everything and runs every test. With --sanitize also under the address and undefined
# behaviour sanitizers, and under the thread sanitizer.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

presets=(dev)
case "${1-}" in
    "") ;;
    --sanitize) presets+=(asan tsan) ;;
    *)
        echo "usage: ./test.sh [--sanitize]" >&2
        exit 2
        ;;
esac

scripts/install-packages.sh
for preset in "${presets[@]}"; do
    cmake --preset "$preset"
    cmake --build --preset "$preset"
    ctest --preset "$preset" -j "$(nproc)"
done
