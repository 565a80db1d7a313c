#!/usr/bin/env python3
"""tessimar-experiment's ranking beside NumPy and SciPy, each on one processor, and its peak memory.

Ranks every query over all pictures by three sets of two features of 256 numbers: distances and a stable sort on the
side of the libraries; distances, rankings, all measures and the files of a part on ours. Needs python3-scipy.

Usage: experiment-scipy.py PROGRAM [PICTURES [QUERIES]]
With fewer queries than pictures only memory is measured: the libraries would need it for all distances at once.
"""

import hashlib
import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import time

os.environ["OMP_NUM_THREADS"] = "1"
os.environ["OPENBLAS_NUM_THREADS"] = "1"
import numpy
from scipy.spatial.distance import cdist

LENGTH = 256


def make_experiment(home, program, features):
    """Empty pictures, and features as the step extract would leave them."""
    count = len(features["hsv"])
    photos = home / "photos"
    photos.mkdir()
    names = [f"im{i}.jpg" for i in range(1, count + 1)]
    for name in names:
        (photos / name).touch()
    (home / "out" / "features").mkdir(parents=True)
    empty = hashlib.sha256(b"").hexdigest()
    pictures = "".join(f"{name}\t{empty}\t\n" for name in names).encode()
    version = subprocess.run([program, "--version"], capture_output=True, text=True, check=True).stdout.strip()
    lines = [f"{name}\t{version}\n" for name in features] + [hashlib.sha256(pictures).hexdigest() + "\n"]
    (home / "out" / "features" / "pictures.txt").write_bytes(pictures)
    (home / "out" / "features" / "digest.txt").write_text("".join(lines))
    for name, rows in features.items():
        numpy.save(home / "out" / "features" / f"{name}.npy", rows)
    # Ten tags, each picture with one.
    (home / "truth.tsv").write_text("".join(f"{name}\tt{i % 10}\n" for i, name in enumerate(names)))
    return names


def rank_with_program(home, program, queries):
    (home / "queries.txt").write_text("\n".join(queries))
    begin = time.monotonic()
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run([program, "photos", "--truth", "truth.tsv", "--out", "out", "--step", "rank",
                    "--queries", "queries.txt"], cwd=home, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    processor = after.ru_utime + after.ru_stime - usage.ru_utime - usage.ru_stime
    return processor, time.monotonic() - begin, after.ru_maxrss * 1024


def rank_with_libraries(features):
    begin = time.process_time()
    distances = {name: cdist(rows, rows, "cityblock") for name, rows in features.items()}
    distances["hsv+lbp"] = distances["hsv"] + distances["lbp"]
    for matrix in distances.values():
        numpy.argsort(matrix, axis=1, kind="stable")
    return time.process_time() - begin


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 5000
    queries = int(sys.argv[3]) if len(sys.argv) > 3 else count
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    random = numpy.random.default_rng(1)
    features = {name: random.random((count, LENGTH)) / LENGTH for name in ("hsv", "lbp")}
    size = sum(rows.nbytes for rows in features.values())
    with tempfile.TemporaryDirectory() as directory:
        home = pathlib.Path(directory)
        names = make_experiment(home, program, features)
        if queries < count:
            features.clear()
        ours, wall, peak = rank_with_program(home, program, names[:queries])
        print(f"{queries} queries over {count} pictures: {ours:.2f} s of processor, {wall:.2f} s in all, "
              f"peak {peak / 2**20:.0f} MiB with {size / 2**20:.0f} MiB of features: "
              f"{(peak - size) / 2**20:.0f} MiB beyond them")
        if queries == count:
            theirs = rank_with_libraries(features)
            print(f"cdist and argsort: {theirs:.2f} s of processor; ours to theirs {ours / theirs:.3f}")


if __name__ == "__main__":
    main()
