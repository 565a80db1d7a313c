#!/usr/bin/env python3
"""Runs one script and two experiments over the sample collection and holds the SHA-256 of everything that comes out
against tests/same-answer/digests.txt.

Usage: check-same-answer.py ROOT BUILD [--remake] [--twice] [--locale NAME] [--simd LIBRARY LEVEL]
                            [--keep FOLDER]

  --remake   writes the list anew and says what changed
  --twice    runs everything a second time, in the folder where the first run left its files
  --locale   under this locale, made with localedef
  --simd     at this level of instructions, which the library forces upon the programs; at the level "plain" the
             libraries of the system that can do without vectors do so, too
  --keep     leaves everything in this new folder

Status 77 says that this could not be tried here.
"""

import argparse
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77
HEADING = """\
# SHA-256 of what the programs make of the sample collection, on the system of the next line.
# The list holds what the programs wrote themselves: it proves that answers are the same, not that they are right.
# tools/check-same-answer.py makes it anew and says what is left out.
"""

# Files that are not the same everywhere, and why.
LEFT_OUT = {
    "times.tsv": "how long it took",
    "record.json": "the version, and digests of the plug-ins as the compiler left them",
    "digest.txt": "the same, for the next start",
    "parts": "what a step hands to the next one, with the same in it",
}

# The libraries' own switches: what they do on a processor that has none of these instructions.
WITHOUT_INSTRUCTIONS = {
    "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX512F,-AVX2,-AVX,-FMA,-FMA4",
    "JSIMD_FORCENONE": "1",
    "PIXMAN_DISABLE": "ssse3 sse2 mmx fast",
    "QT_NO_CPU_FEATURE": "avx512f avx2 avx fma f16c sse4.2 sse4.1 ssse3",
}


class Skipped(Exception):
    pass


def system():
    """The libraries that decode, scale, paint and draw come with the system."""
    try:
        lines = dict(line.split("=", 1) for line in Path("/etc/os-release").read_text().splitlines() if "=" in line)
    except OSError:
        lines = {}
    return f"{lines.get('ID', 'unknown')} {lines.get('VERSION_ID', '')} {os.uname().machine}".replace('"', "")


def environment(arguments, folder):
    variables = {name: value for name, value in os.environ.items() if not name.startswith("LC_") and name != "LANGUAGE"}
    variables["LANG"] = variables["LC_ALL"] = "C"
    if arguments.locale:
        (folder / "locales").mkdir()
        made = subprocess.run(["localedef", "--no-archive", "-i", arguments.locale, "-f", "UTF-8",
                               folder / "locales" / f"{arguments.locale}.UTF-8"], check=False) \
            if shutil.which("localedef") else None
        if made is None or made.returncode > 1:
            raise Skipped(f"locale {arguments.locale} cannot be made here")
        variables["LANG"] = variables["LC_ALL"] = f"{arguments.locale}.UTF-8"
        variables["LOCPATH"] = str(folder / "locales")
        point = subprocess.run(["locale", "decimal_point"], check=True, text=True, stdout=subprocess.PIPE, env=variables)
        if point.stdout != ",\n":
            raise Skipped(f"locale {arguments.locale} is not in force")
    if arguments.simd:
        library, variables["SIMD_LEVEL"] = arguments.simd
        variables["LD_PRELOAD"] = str(Path(library).resolve())
        if variables["SIMD_LEVEL"] == "plain":
            variables.update(WITHOUT_INSTRUCTIONS)
    return variables


def run(command, output, folder, variables):
    """Keeps what a program says in files of its folder."""
    with open(folder / f"{output}.txt", "wb") as out, open(folder / f"{output}-errors.txt", "wb") as errors:
        status = subprocess.run(command, check=False, stdin=subprocess.DEVNULL, stdout=out, stderr=errors, cwd=folder,
                                env=variables).returncode
    if status == SKIPPED and "SIMD_LEVEL" in variables:
        raise Skipped(f"the processor or the build has no level {variables['SIMD_LEVEL']}")
    if status != 0:
        sys.exit(f"{' '.join(map(str, command))}: status {status}\n" + (folder / f"{output}-errors.txt").read_text())


def run_all(arguments, folder, variables):
    batch, experiment = (arguments.build / "bin" / name for name in ["tessimar-batch", "tessimar-experiment"])
    run([batch, "--seed", "1", "--pictures", "pictures", "--variables", "variables.tsv", "--segments", "segments.tsv",
         "--rankings", "rankings", "--runs", "runs", arguments.root / "tests" / "same-answer" / "script.txt"], "batch", folder, variables)
    run([experiment, "photos", "--truth", "tags", "--plugins", arguments.build / "plugins", "--out", "experiment"],
        "experiment", folder, variables)
    run([experiment, "new", "--classes", "--features", "hsv,lbp,hsv+lbp", "--concepts", "nearest,svm", "--out", "concepts"],
        "concepts", folder, variables)


def files_below(folder):
    return {path for path in folder.rglob("*") if path.is_file()}


def digests(folder, files):
    names = {path.relative_to(folder).as_posix(): path for path in files}
    return {name: hashlib.sha256(path.read_bytes()).hexdigest() for name, path in names.items()
            if not any(part in LEFT_OUT for part in name.split("/"))}


def compare(expected, found):
    names = sorted(expected.keys() | found.keys())
    return [f"  {name}: {'not in the list' if name not in expected else 'missing' if name not in found else 'differs'}"
            for name in names if expected.get(name) != found.get(name)]


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("root", type=lambda path: Path(path).resolve())
    parser.add_argument("build", type=lambda path: Path(path).resolve())
    parser.add_argument("--remake", action="store_true")
    parser.add_argument("--twice", action="store_true")
    parser.add_argument("--locale")
    parser.add_argument("--simd", nargs=2)
    parser.add_argument("--keep", type=lambda path: Path(path).resolve())
    arguments = parser.parse_args()
    if arguments.keep and arguments.keep.exists():
        parser.error(f"{arguments.keep} is there already")
    listed = arguments.root / "tests" / "same-answer" / "digests.txt"
    text = listed.read_text()
    if not arguments.remake and f"# {system()}\n" not in text:
        print(f"Skipped: the list is of another system than {system()}")
        return SKIPPED
    expected = {name: digest for digest, name in re.findall(r"^([0-9a-f]{64})  (.*)$", text, re.MULTILINE)}
    with tempfile.TemporaryDirectory() as scratch:
        folder = arguments.keep or Path(scratch) / "samples"
        try:
            variables = environment(arguments, Path(scratch))
            subprocess.run([arguments.root / "tools" / "lay-out-samples.sh", folder], check=True)
            given = files_below(folder)
            for picture in given:
                # FeatureStorage keeps the time.
                os.utime(picture, (1_000_000_000, 1_000_000_000))
            faults = []
            for _ in range(2 if arguments.twice else 1):
                run_all(arguments, folder, variables)
                found = digests(folder, files_below(folder) - given)
                faults += compare(expected, found)
        except Skipped as reason:
            print(f"Skipped: {reason}")
            return SKIPPED
    print("\n".join(faults) if faults else f"{len(found)} files are the same.")
    if arguments.remake and faults:
        lines = [f"{digest}  {name}\n" for name, digest in sorted(found.items())]
        listed.write_text(f"{HEADING}# {system()}\n" + "".join(lines))
        return 0
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
