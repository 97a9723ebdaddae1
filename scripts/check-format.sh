#!/usr/bin/env bash
# Fails when a C++ source of the repository differs from what .clang-format makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
