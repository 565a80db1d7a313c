#!/usr/bin/env python3
"""Holds every include of the tree against the law of ARCHITECTURE.md.

A file includes what lies on a floor below it, or to its left on its own floor, that is in its own wing or in a wing
further left. Stricter rooms: the ground rooms include nothing but themselves; on floor 1 widgets may include values,
while language and values include neither of the others; on floor 3 no wing's commands include
another's. The wing plugins/ stands outside the house: what it includes
is its own or the interface in sdk/, and nobody includes it. Its tests may include the values.

The floors are read from the wings' CMakeLists.txt: target_sources(tessimar_values PRIVATE image-rgb.cpp) puts
image-rgb.cpp and image-rgb.h on the floor of the values. Tests may include their own floor, what lies below it, and
tests/support.

Libraries of others, differences of platforms, crossings between kinds of text, dialogs and the handling of events have
one door each, which it checks as well.

Usage: check-layers.py ROOT
"""

import re
import sys
from pathlib import Path

WINGS = ["images", "segmentation", "features", "classifiers", "retrieval", "concepts", "experiments", "gui",
         "engine"]
GROUND = ["base", "kernels", "sift"]
FLOORS = {"values": 1, "widgets": 1, "language": 1, "variables": 2, "commands": 3, "engine": 4}
SEEN_ON_FLOOR_1 = {"values": {"values"}, "widgets": {"widgets", "values"}, "language": {"language"}}
PROGRAMS = {"engine/main.cpp", "experiments/main.cpp", "experiments/command-line.h", "experiments/command-line.cpp", "batch"}
CODE = (".h", ".cpp")


def read_rooms(root):
    """Maps each file without its ending to its room: a library name without "tessimar_", or "test:" and such a name."""
    rooms = {}
    for cmake in sorted(root.glob("*/CMakeLists.txt")):
        text = re.sub(r"#.*", "", cmake.read_text())
        for target, files in re.findall(r"(?:target_sources|add_library)\(\s*(\w+)\s+(?:PRIVATE|STATIC)\s+([^)]*)\)", text):
            room = target.removeprefix("tessimar_")
            if room.endswith("_test"):
                room = "test:" + room.removesuffix("_test")
            for name in files.split():
                if name.endswith(CODE):
                    rooms[str((cmake.parent / name).relative_to(root).with_suffix(""))] = room
    return rooms


def may_include(includer, room, included, included_room):
    """True if a file in `room` may include a file in `included_room`."""
    if included_room in GROUND:
        return room not in GROUND or room == included_room
    if room in GROUND:
        return False
    floor, included_floor = FLOORS[room], FLOORS[included_room]
    if floor != included_floor:
        return floor > included_floor
    if floor == 1 and included_room not in SEEN_ON_FLOOR_1[room]:
        return False
    wing, included_wing = Path(includer).parts[0], Path(included).parts[0]
    if floor == 3 and wing != included_wing:
        return False
    return WINGS.index(wing) >= WINGS.index(included_wing)


def check_plugins(root, rooms):
    """The faults of the wing that knows nothing but the interface for plug-ins."""
    faults = []
    for path in sorted(p for p in (root / "plugins").rglob("*") if p.suffix in CODE):
        name = str(path.relative_to(root))
        for included in re.findall(r'^\s*#include "([^"]+)"', path.read_text(), re.MULTILINE):
            is_own = included.startswith("plugins/") or included == "sdk/feature-plugin.h"
            is_below_test = path.stem.endswith("-test") and rooms.get(str(Path(included).with_suffix(""))) == "values"
            if not is_own and not is_below_test:
                faults.append(f'{name} (plug-in) must not include "{included}"')
    return faults


# What may stand in few places only: a name for it, how it looks, and the files that may hold it.
DOORS = [
    ("FreeImage", r"#include <FreeImage", r"images/image-rgb\.cpp"),
    ("QLibrary", r"#include <QLibrary", r"features/plugin-exports\.cpp"),
    ("FANN", r"#include <\w*fann", r"classifiers/(classifier-neural-network|network-output)\.cpp"),
    ("libsvm", r"#include <svm\.h", r"classifiers/(classifier-svm|svm-decision)\.cpp|classifiers/svm-parameter-record\.h"),
    ("Highway", r"#include [<\"]hwy/", r"kernels/.*\.cpp|Sift/sift-conv\.cpp|plugins/.*-rows\.cpp"),
    ("FFTW", r"#include <fftw3", r"plugins/gist\.cpp"),
    ("OpenCV", r"#include <opencv2/", r"plugins/embedding/.*"),
    ("OpenSSL", r"#include <openssl/", r"experiments/digest\.cpp"),
    ("a platform's difference", r"\b_WIN32\b", r"base/.*|sdk/feature-plugin\.h"),
    ("a crossing to QString", r"\b(from|to)(StdString|Utf8|Local8Bit|Latin1)\b|\bqPrintable\b",
     # The others belong to the values, which see no widgets.
     r"gui/eight-bit-text\.cpp|features/plugin-exports\.cpp|experiments/(repaired-text|json|html)\.cpp"),
    ("a dialog that runs", r"\b[dD]ialog(\.|->)exec\(|\bbox(\.|->)exec\(", r"gui/dialog-runner\.cpp"),
    ("the handling of events", r"\bprocessEvents\b", r"gui/main-window\.cpp"),
]


def check_doors(root):
    """The faults of what enters elsewhere than by its door. Tests and benchmarks may go where they like."""
    faults = []
    files = (p for p in root.glob("*/**/*") if p.suffix in CODE and not p.stem.endswith("-test"))
    for path in sorted(files):
        name = str(path.relative_to(root))
        if re.match(r"(tests|fuzz|benchmarks|build[^/]*)/", name):
            continue
        # What a comment or a text says is no use of it.
        text = re.sub(r"//[^\n]*|/\*.*?\*/", "", path.read_text(), flags=re.DOTALL)
        for what, pattern, allowed in DOORS:
            if re.search(pattern, text) and not re.fullmatch(allowed, name):
                faults.append(f"{name}: {what} has its door elsewhere")
    return faults


def check(root):
    faults = check_doors(root)
    rooms = read_rooms(root)
    faults += check_plugins(root, rooms)
    folders = WINGS + ["base", "kernels", "Sift"]
    for path in sorted(p for folder in folders for p in (root / folder).glob("*") if p.suffix in CODE):
        name = str(path.relative_to(root))
        if name in PROGRAMS:
            continue
        room = rooms.get(str(Path(name).with_suffix("")))
        if room is None:
            # A header that only the tests of its room include, such as the kernels' reference.
            if path.parent.name in ("kernels", "Sift") and path.suffix == ".h":
                continue
            faults.append(f"{name}: no CMakeLists.txt names this file")
            continue
        is_test = room.startswith("test:")
        if is_test:
            room = room.removeprefix("test:")
        for included in re.findall(r'^\s*#include "([^"]+)"', path.read_text(), re.MULTILINE):
            if included.startswith("ui_") or (is_test and included.startswith("tests/support/")):
                continue
            included_room = rooms.get(str(Path(included).with_suffix("")))
            if included_room is None and Path(included).parts[0] == Path(name).parts[0] and room in GROUND:
                continue
            if included_room is None or included_room == "batch":
                faults.append(f'{name}: "{included}" stands on no floor')
            elif is_test and FLOORS.get(room, 0) == 3 == FLOORS.get(included_room, 0):
                continue
            elif not may_include(name, room, included, included_room):
                faults.append(f'{name} ({room}) must not include "{included}" ({included_room})')
    return faults


if __name__ == "__main__":
    found = check(Path(sys.argv[1]))
    print("\n".join(found) if found else "Every include keeps the law.")
    sys.exit(1 if found else 0)
