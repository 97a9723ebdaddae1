#!/usr/bin/env bash
# Fails when a C++ source of the repository differs from what .clang-format makes of it.
# The formatter is pinned by name: another major version lays out some constructs differently,
# so an unversioned clang-format could fail a tree that is formatted correctly.
set -euo pipefail
cd "$(dirname "$0")/.."
formatter=clang-format-14
if ! command -v "$formatter" >/dev/null; then
    echo "check-format: $formatter not found; install the Debian package $formatter" \
         "(bash scripts/install-deps.sh)" >&2
    exit 1
fi
git ls-files '*.h' '*.cpp' | xargs "$formatter" --dry-run --Werror
