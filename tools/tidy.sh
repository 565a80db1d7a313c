#!/bin/sh
# Runs clang-tidy over all C++ of the tree, or over the files named. Needs a configured build/ (cmake --preset default).
set -eu
cd "$(dirname "$0")/.."
cmake --build --preset default --target tessimar_widgets_autogen >/dev/null
if [ $# -eq 0 ]; then
  # The plug-in "embedding" is part of that build only where it was asked for.
  others='^benchmarks/'
  grep -q plugins/embedding build/compile_commands.json || others="$others|^plugins/embedding/|/embedding-test"
  set -- $(git ls-files '*.cpp' | grep -vE "$others")
fi
printf '%s\n' "$@" | xargs -P "${JOBS:-$(nproc)}" -n 4 clang-tidy -p build --quiet
