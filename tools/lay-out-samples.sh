#!/bin/sh
# Copies the sample collection into a folder, and sorts its photographs into folders by class: two of three into
# taught/CLASS/, the third into new/CLASS/. Files that stand there already are the user's and stay as they are.
# Usage: lay-out-samples.sh FOLDER
set -eu
samples="$(cd "$(dirname "$0")/../samples" && pwd)"
mkdir -p "$1"
cp -rn "$samples/." "$1"
cd "$1"
tail -n +2 "$samples/photos.tsv" | while IFS="$(printf '\t')" read -r file class rest; do
  count_name="count_$class"
  eval "number=\$(( \${$count_name:-0} + 1 )); $count_name=\$number"
  if [ $((number % 3)) -eq 0 ]; then
    folder="new/$class"
  else
    folder="taught/$class"
  fi
  mkdir -p "$folder"
  cp -n "$samples/photos/$file" "$folder/"
done
