#!/bin/sh
# Runs clang-tidy over all C++ of the tree, over the files named, or with --newest N over the N files that were changed
# last; with --names in front it looks at names only, which takes a third of the time. Needs a configured build/ (cmake --preset default), or another one that BUILD names.
set -eu
cd "$(dirname "$0")/.."
build="${BUILD:-build}"
cmake --build "$build" --target tessimar_widgets_autogen >/dev/null
# The benchmarks, the fuzz targets and the plug-in "embedding" are part of a build only where they were asked for.
others='^benchmarks/|^fuzz/'
grep -q plugins/embedding "$build/compile_commands.json" || others="$others|^plugins/embedding/|/embedding-test"

# Names on standard input, each once, of which those remain that stand in the tree and belong to the build. A header is
# checked with the file that implements it.
source_files() {
  sed 's/\.h$/.cpp/' | awk '!seen[$0]++' | grep -vE "$others" | while read -r file; do
    if [ -f "$file" ]; then
      echo "$file"
    fi
  done
}

newest_files() {
  if [ "$(git rev-parse --is-shallow-repository)" = true ]; then
    # Without a history any file may be the newest: others with each commit.
    commit="$(git rev-parse HEAD)"
    git ls-files '*.cpp' | while read -r file; do
      echo "$(printf %s "$commit$file" | cksum | cut -d ' ' -f 1) $file"
    done | sort -n | cut -d ' ' -f 2-
  else
    git log --format= --name-only --diff-filter=AM -- '*.cpp' '*.h'
  fi
}

checks=
if [ "${1:-}" = --names ]; then
  checks='--checks=-*,readability-identifier-naming'
  shift
fi
if [ "${1:-}" = --newest ]; then
  # shellcheck disable=SC2046
  set -- $(newest_files | source_files | head -n "$2")
elif [ $# -eq 0 ]; then
  # shellcheck disable=SC2046
  set -- $(git ls-files '*.cpp' | source_files)
fi
[ $# -gt 0 ] || exit 0
printf '%s\n' "$@" | xargs -P "${JOBS:-$(nproc)}" -n 2 clang-tidy -p "$build" --quiet ${checks:+"$checks"}
