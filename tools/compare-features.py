#!/usr/bin/env python3
"""Compares the features on the sample collection, and prints the table that stands in README.md and docs/descriptors.md.

Each photograph is once the query and taken out of its own ranking; what carries its tag is relevant. The measures are
those of tessimar-experiment, means over all queries:

  MAP             "ap"
  evaluateindex   "ap_ranks", which is what that command prints
  P@10            "p10"
  Time            of updatefeature for one photograph of the collection, decoding included, on the machine that made
                  the table

Usage: compare-features.py PROGRAMS DESCRIPTORS SAMPLES [--check FILE...]

PROGRAMS is the folder of the programs, DESCRIPTORS that of the libraries. With --check nothing is printed unless the
table in one of the files says something else; times are not compared.
"""

import ast
import csv
import os
import subprocess
import sys
import tempfile
from pathlib import Path

FEATURES = ("hsv", "lbp", "edgehistogram", "colorlayout", "correlogram", "phog", "gist", "tamura", "cedd", "moments")
MEASURES = {"ap": ".3f", "ap_ranks": ".4f", "p10": ".3f"}


def length_of(path):
    """The number of columns, which the head of a .npy file tells."""
    head = path.read_bytes()[8:]
    size = int.from_bytes(head[:2], "little")
    return ast.literal_eval(head[2 : 2 + size].decode())["shape"][1]


def measure(programs, descriptors, samples, folder):
    """The rows of the table without the times."""
    subprocess.run([programs / "tessimar-experiment", samples / "photos", "--truth", samples / "tags", "--plugins",
                    descriptors, "--features", ",".join(FEATURES), "--out", "result", "--quiet"],
                   cwd=folder, check=True)
    with open(folder / "result" / "summary.tsv", newline="", encoding="utf-8") as file:
        means = {(row["set"], row["measure"]): float(row["mean"])
                 for row in csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE) if not row["tag"]}
    return [[f'"{feature}"', str(length_of(folder / "result" / "features" / f"{feature}.npy")),
             *(format(means[feature, name], digits) for name, digits in MEASURES.items())] for feature in FEATURES]


def processor_time(programs, descriptors, folder, lines):
    """Runs the lines and returns the seconds that the processor was busy with them."""
    before = os.times()
    subprocess.run([programs / "tessimar-batch", "--plugins", descriptors], cwd=folder, input="\n".join(lines),
                   text=True, check=True, stdout=subprocess.DEVNULL)
    after = os.times()
    return after.children_user + after.children_system - before.children_user - before.children_system


def milliseconds(programs, descriptors, samples, folder, feature):
    """What one photograph takes: the difference of six passes over the collection and one."""
    update = f'updatefeature(db, "{feature}")'
    once = [f'db = loaddatabase("{samples / "photos"}")', update]
    again = [f'removefeature(db, "{feature}")', update]
    seconds = (processor_time(programs, descriptors, folder, [*once, *again * 5])
               - processor_time(programs, descriptors, folder, once))
    return 1000 * seconds / 5 / len(list((samples / "photos").glob("*.jpg")))


def stated_rows(path):
    """The rows of the table in a file, without the times."""
    rows = [[cell.strip() for cell in line.strip("|\n ").split("|")]
            for line in path.read_text(encoding="utf-8").splitlines() if line.startswith('| "')]
    return [row[:-1] for row in rows if len(row) == 6]


def main(programs, descriptors, samples, *options):
    places = [Path(name).resolve() for name in (programs, descriptors, samples)]
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        rows = measure(*places, folder)
        if not options:
            print("| Feature | Length | MAP | `evaluateindex` | P@10 | Time |\n|---|---|---|---|---|---|")
            for row in rows:
                time = milliseconds(*places, folder, row[0].strip('"'))
                print("| " + " | ".join([*row, f"{time:.2f} ms"]) + " |", flush=True)
    wrong = [file for file in options[1:] if stated_rows(Path(file)) != rows]
    if wrong:
        print("\n".join(f"The table of {file} is not what was found:" for file in wrong))
        print("\n".join("| " + " | ".join(row) + " |" for row in rows))
    return 1 if wrong else 0


if __name__ == "__main__":
    if len(sys.argv) < 4 or (len(sys.argv) > 4 and (sys.argv[4] != "--check" or len(sys.argv) == 5)):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
