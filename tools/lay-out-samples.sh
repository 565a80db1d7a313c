#!/bin/sh
# Copies the sample collection into a folder, and sorts its photographs into folders by class: two of three into
# taught/CLASS/, the third into new/CLASS/. With --links these are links to the folder's own photos/. Files that stand
# there already are the user's and stay as they are.
# Usage: lay-out-samples.sh [--links] FOLDER
set -eu
samples="$(cd "$(dirname "$0")/../samples" && pwd)"
links=""
if [ "$1" = --links ]; then
  links=yes
  shift
fi
mkdir -p "$1"
cp -rn "$samples/." "$1"
cd "$1"
tail -n +2 "$samples/photos.tsv" | while IFS="$(printf '\t')" read -r file class rest; do
  count_name="count_$class"
  eval "number=\$(( \${$count_name:-0} + 1 )); $count_name=\$number"
  # shellcheck disable=SC2154 # "number" is set by the line above
  if [ $((number % 3)) -eq 0 ]; then
    folder="new/$class"
  else
    folder="taught/$class"
  fi
  mkdir -p "$folder"
  if [ -n "$links" ]; then
    ln -s "../../photos/$file" "$folder/"
  else
    cp -n "$samples/photos/$file" "$folder/"
  fi
done
