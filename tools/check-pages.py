#!/usr/bin/env python3
"""Holds an HTML manual against what a reader needs who has nothing but it: every link and picture leads to a file of the
manual or to another site, every fragment to a heading, and nothing sends the reader to the sources. The same words are
looked for in the man pages and in README, which lie beside the pages.

Usage: check-pages.py FOLDER
"""

import re
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

SOURCES_ONLY = ["./run", "./test", "workspace/", "benchmarks/", "docs/", "plugins/", "samples/", "sdk/", "tests/", "tools/"]


class Page(HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.targets, self.ids, self.text = [], set(), ""
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("href", "src"):
                self.targets.append(value)
            elif name == "id":
                self.ids.add(value)

    def handle_data(self, data):
        self.text += data


def check(folder):
    pages = {path: Page(path) for path in sorted(folder.rglob("*.html"))}
    faults = [] if pages else [f"{folder}: no pages"]
    for path, page in pages.items():
        for target in page.targets:
            parts = urlsplit(target)
            if parts.scheme:
                continue
            file = (path.parent / unquote(parts.path)).resolve() if parts.path else path
            if not file.is_file():
                faults.append(f"{path.name}: {target} leads nowhere")
            elif parts.fragment and parts.fragment not in {p.resolve(): q for p, q in pages.items()}[file.resolve()].ids:
                faults.append(f"{path.name}: {target} has no such heading")
    texts = {path: page.text for path, page in pages.items()}
    for path in [folder / "README", *sorted(folder.glob("*.[1-9]"))]:
        texts[path] = path.read_text(encoding="utf-8")
    for path, text in texts.items():
        for word in SOURCES_ONLY:
            if re.search(r"(?<![\w/.])" + re.escape(word), text):
                faults.append(f"{path.name}: {word} is not there for whoever installed the program")
    return faults


if __name__ == "__main__":
    found = check(Path(sys.argv[1]))
    print("\n".join(found) if found else "Every link leads somewhere.")
    sys.exit(1 if found else 0)
