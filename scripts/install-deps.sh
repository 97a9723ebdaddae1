#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need. Does nothing slow when all
# of them are present already.
set -euo pipefail

packages=(cmake ninja-build g++ clang-format-14 qt6-base-dev zlib1g-dev libgtest-dev libgmock-dev
          libbenchmark-dev libassimp-dev libdeflate-dev pkg-config clang-14 libfuzzer-14-dev
          libclang-rt-14-dev valgrind)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

echo "Installing: ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
"${sudo_cmd[@]}" apt-get update
DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
