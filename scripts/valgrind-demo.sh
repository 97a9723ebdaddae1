#!/usr/bin/env bash
# Exports a short demo take under valgrind's memcheck and fails on any memory error or
# definite leak. Uses the given preset's build (default: default), building it if needed.
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"

bash scripts/install-deps.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --target zavo-fbx-export fbxexporter

out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT
valgrind --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite \
    --show-leak-kinds=definite --quiet \
    "build/$preset/tools/zavo-fbx-export/zavo-fbx-export" --quiet --deterministic \
    --demo-frames 120 --demo "$out/demo.fbx"
test -s "$out/demo.fbx"
echo "valgrind: demo export clean"
