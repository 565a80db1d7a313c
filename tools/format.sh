#!/bin/sh
# Formats all C++ and C of the tree; with --check only says what is not formatted, and fails if anything is not.
set -eu
cd "$(dirname "$0")/.."
mode="-i"
if [ "${1:-}" = --check ]; then
  mode="--dry-run --Werror"
fi
# shellcheck disable=SC2086
git ls-files -z --cached --others --exclude-standard '*.h' '*.cpp' '*.c' | xargs -0 clang-format $mode
