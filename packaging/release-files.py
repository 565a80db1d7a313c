#!/usr/bin/env python3
"""Makes the files of a release that follow from CHANGELOG.md and samples/photos.tsv.

Usage: release-files.py ROOT OUTPUT debian-changelog MAINTAINER
       release-files.py ROOT OUTPUT debian-copyright
       release-files.py ROOT OUTPUT metainfo HOMEPAGE
       release-files.py ROOT OUTPUT compress FILE

"compress" is gzip without a time stamp.
"""

import csv
import gzip
import re
import sys
from datetime import date
from pathlib import Path
from xml.sax.saxutils import escape

# The one file whose library is linked with something under the GPL.
GIST = """Comment:
 The library lib/tessimar/features/FeatureGist.so, which is made of this file, is
 linked with FFTW, which is under the GNU General Public License, version 2 or
 later. This source file is under the license above; the library, and whatever
 is passed on together with it as one work, is under the terms of that license.
 .
 On Debian systems its full text is in /usr/share/common-licenses/GPL-2.
"""

PUBLIC_DOMAIN = """License: public-domain
 In the public domain: dedicated to it by its author, made by an officer of a
 government that claims no copyright, or no longer protected. The page named in
 the comment says which.
"""

CC0 = """License: CC0-1.0
 To the extent possible under law, the author has waived all copyright and
 related or neighboring rights to this work.
 .
 On Debian systems the full text is in /usr/share/common-licenses/CC0-1.0.
"""


def read_releases(root):
    """Lists (version, date, [points]), newest first."""
    releases = []
    for line in (root / "CHANGELOG.md").read_text(encoding="utf-8").splitlines():
        heading = re.fullmatch(r"## (\d+(?:\.\d+)*) \((\d{4}-\d\d-\d\d)\)", line)
        if heading:
            releases.append((heading[1], date.fromisoformat(heading[2]), []))
        elif line.startswith("- "):
            releases[-1][2].append(line[2:])
        elif line.startswith("  ") and line.strip():
            releases[-1][2][-1] += " " + line.strip()
    return releases


def plain(point):
    return point.replace("`", "")


def wrap(text, first, others, width=78):
    lines = [first]
    for word in text.split():
        if len(lines[-1]) + 1 + len(word) > width and lines[-1].strip(" *"):
            lines.append(others)
        lines[-1] += ("" if lines[-1].endswith(" ") else " ") + word
    return "\n".join(lines)


def debian_changelog(root, maintainer):
    entries = []
    for version, day, points in read_releases(root):
        changes = "\n".join(wrap(plain(point), "  * ", "    ") for point in points)
        stamp = day.strftime("%a, %d %b %Y 12:00:00 +0000")
        entries.append(f"tessimar ({version}) bookworm; urgency=medium\n\n{changes}\n\n -- {maintainer}  {stamp}\n")
    return "\n".join(entries)


def debian_copyright(root):
    licence = (root / "LICENSE").read_text(encoding="utf-8").splitlines()
    holder = next(line for line in licence if line.startswith("Copyright"))
    body = licence[licence.index(holder) + 1 :]
    text = "\n".join(" " + (line or ".") for line in body).strip()
    text = text.removeprefix(".").strip()
    owner = holder.removeprefix("Copyright (c) ")
    parts = [
        "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\nUpstream-Name: Tessimar\n",
        f"Files: *\nCopyright: {owner}\nLicense: Expat\n",
        f"Files: plugins/gist.cpp\nCopyright: {owner}\nLicense: Expat\n{GIST}",
    ]
    with open(root / "samples" / "photos.tsv", encoding="utf-8", newline="") as table:
        for photo in csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE):
            name = {"CC0-1.0": "CC0-1.0", "Public Domain": "public-domain"}[photo["licence"]]
            parts.append(
                f"Files: samples/photos/{photo['file']}\nCopyright: {photo['author'] or 'unknown'}\nLicense: {name}\n"
                f"Comment: {photo['source']}\n"
            )
    return "\n".join(parts + [f"License: Expat\n {text}\n", CC0, PUBLIC_DOMAIN])


def metainfo(root, homepage):
    releases = []
    for version, day, points in read_releases(root):
        items = "".join(f"          <li>{escape(plain(point))}</li>\n" for point in points)
        releases.append(
            f'    <release version="{version}" date="{day}">\n      <description>\n        <ul>\n{items}'
            "        </ul>\n      </description>\n    </release>"
        )
    template = (root / "packaging" / "org.tessimar.Tessimar.metainfo.xml.in").read_text(encoding="utf-8")
    return template.replace("@PROJECT_HOMEPAGE_URL@", homepage).replace("@RELEASES@", "\n".join(releases))


def main():
    root, output, what, arguments = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3], sys.argv[4:]
    if what == "compress":
        result = gzip.compress(Path(*arguments).read_bytes(), 9, mtime=0)
    else:
        makers = {"debian-changelog": debian_changelog, "debian-copyright": debian_copyright, "metainfo": metainfo}
        result = makers[what](root, *arguments).encode()
    output.write_bytes(result)


if __name__ == "__main__":
    main()
