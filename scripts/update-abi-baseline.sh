#!/usr/bin/env bash
# Keeps the binary interface of the library just built (preset dev) as the one to compare with.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

library=${1-build/dev/Src/libwrapton.so}
abidw --headers-dir Include --exported-interfaces-only --drop-private-types --no-corpus-path --no-comp-dir-path --short-locs \
    --out-file tests/abi/wrapton.abi "$library"
