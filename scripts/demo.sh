#!/usr/bin/env bash
# From a fresh clone: installs what is missing, builds in release mode, installs into ./out
# and exports the built-in demo take to demo.fbx, printing the summary line.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset release
cmake --build --preset release
cmake --install build/release --prefix out >/dev/null
out/bin/zavo-fbx-export --demo demo.fbx
