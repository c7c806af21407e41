#!/usr/bin/env bash
# Installs the Debian packages that building and testing need, those that are missing only.
set -euo pipefail

packages=(
    g++ cmake ninja-build pkg-config
    libavformat-dev libavcodec-dev libavutil-dev libcli11-dev nlohmann-json3-dev # the command
    libgtest-dev python3 abigail-tools doxygen dpkg-dev                          # the tests
    ffmpeg mkvtoolnix tshark                                                     # readers that are not ours
)

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "Not a Debian system; these must be there already: ${packages[*]}" >&2
    exit 0
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing ${missing[*]}"
root=()
[ "$(id -u)" -eq 0 ] || root=(sudo)
"${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
"${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
