#!/usr/bin/env bash
# Packages real coded streams into every container, has ffprobe and ffmpeg read the files back, and
# prints what came of it. The files are in demo/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/install-packages.sh
cmake --preset release
cmake --build --preset release
WRAPTON=build/release/tools/wrapton/wrapton python3 -B scripts/demo.py demo
