#!/bin/sh
# Runs clang-tidy over all C++ of a build, over the files named, or with --newest N over the N of its files that were
# changed last; with --names in front it looks at names only, which takes a third of the time. The build is build/, which
# has to be configured (cmake --preset default), or the one that BUILD names.
set -eu
cd "$(dirname "$0")/.."
build="${BUILD:-build}"
cmake --build "$build" --target tessimar_widgets_autogen >/dev/null
others='^$'

# Names on standard input, each once, of which those remain that the build compiles. A header is checked with the file
# that implements it.
source_files() {
  sed 's/\.h$/.cpp/' | awk '!seen[$0]++' | grep -vE "$others" | while read -r file; do
    if grep -qF "\"file\": \"$PWD/$file\"" "$build/compile_commands.json"; then
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
  # Named after its literature.
  others='^Sift/'
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
