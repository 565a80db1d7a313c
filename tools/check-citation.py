#!/usr/bin/env python3
"""Holds CITATION.cff against what the Citation File Format 1.2.0 asks for, as far as the file uses it, and its version and
date against the newest heading of CHANGELOG.md.

Usage: check-citation.py ROOT
"""

import re
import sys
from pathlib import Path

# What stands on the first level of the file, and what it has to look like.
TEXT = r"\S.*"
REQUIRED = {"cff-version": r"1\.2\.0", "message": TEXT, "title": TEXT, "authors": "", "version": TEXT,
            "date-released": r"\d{4}-\d\d-\d\d"}
OPTIONAL = {"type": r"software|dataset", "license": TEXT, "keywords": "", "abstract": TEXT, "url": TEXT,
            "repository-code": TEXT}


def check(root):
    text = (root / "CITATION.cff").read_text(encoding="utf-8")
    values = {}
    faults = []
    for number, line in enumerate(text.splitlines(), 1):
        if re.match(r"[ #]|$", line):
            continue
        field = re.fullmatch(r"([a-z-]+):(?: (.*))?", line)
        if not field:
            faults.append(f"line {number} is no 'key: value'")
        elif field[1] in values:
            faults.append(f"'{field[1]}' stands there twice")
        else:
            values[field[1]] = (field[2] or "").strip('"')
    known = {**REQUIRED, **OPTIONAL}
    faults += [f"'{key}' is missing" for key in REQUIRED if key not in values]
    faults += [f"'{key}' is no key of the format" for key in values if key not in known]
    faults += [f"'{key}' reads '{value}'" for key, value in values.items()
               if key in known and not re.fullmatch(known[key], value)]
    if not re.search(r"^authors:\n  - (name|family-names): \S", text, re.MULTILINE):
        faults.append("there is no author with a name")
    release = re.search(r"^## (\S+) \((.+)\)$", (root / "CHANGELOG.md").read_text(encoding="utf-8"), re.MULTILINE)
    stated = (values.get("version"), values.get("date-released"))
    if stated != (release[1], release[2]):
        faults.append(f"version and date are {stated}, and those of CHANGELOG.md {release[1], release[2]}")
    return faults


if __name__ == "__main__":
    found = check(Path(sys.argv[1]))
    print("\n".join("CITATION.cff: " + fault for fault in found) if found else "CITATION.cff can be cited.")
    sys.exit(1 if found else 0)
