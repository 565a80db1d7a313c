#!/usr/bin/env python3
"""Compares the features on the sample collection, and prints the table that stands in README.md and docs/descriptors.md.

Each photograph is once the query and taken out of its own ranking; what is of its class is relevant. The script runs
tessimar-batch for the rankings and measures them itself:

  MAP             the mean over the queries of the average precision: the precisions at the ranks of the relevant ones,
                  summed, divided by their number
  evaluateindex   the same sums divided by the number of all ranks, as that command does
  P@10            the share of relevant ones among the first ten
  Time            of updatefeature for one photograph of the collection, decoding included, on the machine that made
                  the table

Usage: compare-features.py BATCH DESCRIPTORS SAMPLES [--check FILE...]

BATCH is the program tessimar-batch, DESCRIPTORS the folder of the libraries. With --check nothing is printed unless a
table in one of the files says something else; times are not compared.
"""

import csv
import os
import subprocess
import sys
import tempfile
from pathlib import Path

FEATURES = {"hsv": 256, "lbp": 256, "edgehistogram": 150, "colorlayout": 12, "correlogram": 256, "phog": 420,
            "gist": 512, "tamura": 512, "cedd": 144, "moments": 81}


def run(batch, folder, lines, *options):
    """Runs the lines and returns the processor time in seconds."""
    before = os.times()
    subprocess.run([batch, *options], cwd=folder, input="\n".join(lines), text=True, check=True,
                   stdout=subprocess.DEVNULL)
    after = os.times()
    return after.children_user + after.children_system - before.children_user - before.children_system


def measure(ranking, classes):
    """Average precision, the sum by all ranks, and precision at 10 of one ranking, the query not among it."""
    query, *others = ranking
    hits, total = 0, 0.0
    for rank, name in enumerate(others, 1):
        if classes[name] == classes[query]:
            hits += 1
            total += hits / rank
    return total / hits, total / len(others), sum(classes[name] == classes[query] for name in others[:10]) / 10


def compare(batch, folder, feature, classes, with_time):
    load = 'db = loaddatabase("photos")'
    update = f'updatefeature(db, "{feature}")'
    run(batch, folder, [load, update, f'savefeature(db, "{feature}")'])
    results = []
    # In small groups: the workbench lists all its variables after each line.
    for first in range(0, len(classes), 10):
        queries = list(classes)[first:first + 10]
        lines = [load, f'loadfeature(db, "{feature}")']
        for i, name in enumerate(queries):
            lines += [f'q = loadimage("photos/{name}")', f'updatefeature(q, "{feature}")', f"i{i} = searchimage(db, q)"]
        run(batch, folder, lines, "--rankings", "rankings")
        for i, query in enumerate(queries):
            rows = Path(folder, "rankings", f"i{i}.tsv").read_text().splitlines()[1:]
            names = [Path(row.split("\t")[3]).name for row in rows]
            names.remove(query)
            results.append(measure([query, *names], classes))
    means = [sum(column) / len(results) for column in zip(*results)]
    row = [f'"{feature}"', str(FEATURES[feature]), f"{means[0]:.3f}", f"{means[1]:.4f}", f"{means[2]:.3f}"]
    if with_time:
        again = [f'removefeature(db, "{feature}")', update]
        seconds = run(batch, folder, [load, update, *again * 5]) - run(batch, folder, [load, update])
        row.append(f"{1000 * seconds / 5 / len(classes):.2f} ms")
    return row


def table_rows(path):
    """The rows of the table in a file: the cells by the feature's name."""
    rows = [[cell.strip() for cell in line.strip("|\n ").split("|")] for line in path.read_text().splitlines()
            if line.startswith('| "')]
    return {row[0]: row for row in rows if len(row) == 6 and row[0].strip('"') in FEATURES}


def main(batch, descriptors, samples, *options):
    with open(Path(samples, "photos.tsv"), newline="", encoding="utf-8") as file:
        rows = csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE)
        classes = {row["file"]: row["tag"] for row in rows}
    files = [Path(name) for name in options[1:]]
    wrong = []
    with tempfile.TemporaryDirectory() as folder:
        for library in Path(descriptors).resolve().glob("Feature*.so"):
            Path(folder, library.name).symlink_to(library)
        Path(folder, "photos").symlink_to(Path(samples, "photos").resolve())
        if not files:
            print("| Feature | Length | MAP | `evaluateindex` | P@10 | Time |\n|---|---|---|---|---|---|")
        for feature in FEATURES:
            row = compare(os.path.abspath(batch), folder, feature, classes, not files)
            if not files:
                print("| " + " | ".join(row) + " |", flush=True)
            for file in files:
                stated = table_rows(file).get(row[0], [])[:5]
                if stated != row:
                    wrong.append(f"{file}: {row[0]} is stated as {stated} and found as {row}")
    print("\n".join(wrong), end="\n" if wrong else "")
    return 1 if wrong else 0


if __name__ == "__main__":
    if len(sys.argv) < 4 or (len(sys.argv) > 4 and (sys.argv[4] != "--check" or len(sys.argv) == 5)):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
