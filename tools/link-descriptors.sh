#!/bin/sh
# Lays links to the descriptors that were built into a folder, where the workbench loads them. What stands there already
# under their names is the user's and stays as it is.
# Usage: link-descriptors.sh BUILT FOLDER
set -eu
for library in "$1"/Feature*.so; do
  link="$2/$(basename "$library")"
  if [ ! -e "$link" ] && [ ! -L "$link" ]; then
    # Relative, so that the folders can move together.
    ln -sr "$library" "$link"
  fi
done
