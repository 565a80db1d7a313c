#!/usr/bin/env python3
"""Runs every transcript of the documentation and holds the output against what stands there, letter for letter.

A transcript is a fenced block of the kind "console": lines that begin with "$ " are run by the shell, continued over
lines as long as they end in a backslash, and all others are what they print on both streams. "$ cat FILE" is the
exception: the file is made of the lines that follow. Or it is one of the kind "transcript": lines that begin with "> "
are given to tessimar-batch, and the whole block is what it prints. Each block begins in a fresh copy of the sample
collection.

Usage: check-transcripts.py ROOT PROGRAMS
"""

import difflib
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def read_blocks(path):
    """Yields (line number, kind, lines)."""
    lines = path.read_text(encoding="utf-8").splitlines()
    start = None
    for number, line in enumerate(lines):
        if start is None and (opening := re.fullmatch(r"```(console|transcript)", line)):
            start, kind = number + 1, opening[1]
        elif start is not None and line == "```":
            yield start + 1, kind, lines[start:number]
            start = None


def run(command, folder, programs, given=""):
    environment = {**os.environ, "PATH": f"{programs}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"}
    done = subprocess.run(command, cwd=folder, env=environment, input=given, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=300, check=False)
    return done.stdout


def run_console(lines, folder, programs):
    """What the block should read; "$?" is that of the command before."""
    commands, printed, position = [], [], 0
    while position < len(lines):
        command = lines[position]
        while command.endswith("\\") and position + 1 < len(lines):
            position += 1
            command += "\n" + lines[position]
        position += 1
        content = []
        while position < len(lines) and not lines[position].startswith("$ "):
            content.append(lines[position])
            position += 1
        commands.append((command, content))
    status = 0
    for command, content in commands:
        printed += command.split("\n")
        if (made := re.fullmatch(r"\$ cat ([\w.-]+)", command)) and not (folder / made[1]).exists():
            (folder / made[1]).write_text("\n".join(content) + "\n", encoding="utf-8")
            printed += content
            continue
        output = run(["sh", "-c", f"(exit {status})\n{command[2:]}\nstatus=$?; printf '\\n%d' $status"], folder, programs)
        output, _, status = output.rpartition("\n")
        printed += output.splitlines()
    return printed


def check(root, programs):
    with tempfile.TemporaryDirectory() as samples:
        subprocess.run([root / "tools" / "lay-out-samples.sh", samples], check=True)
        return check_pages(root, programs, samples)


def link_photographs(source, target):
    """Copies what a transcript may change; photographs are many, and only read."""
    (os.link if source.endswith(".jpg") else shutil.copy2)(source, target)


def check_pages(root, programs, samples):
    faults = []
    for path in sorted((root / "docs").glob("*.md")) + [root / "README.md"]:
        for number, kind, lines in read_blocks(path):
            with tempfile.TemporaryDirectory() as name:
                folder = Path(name)
                shutil.copytree(samples, folder, dirs_exist_ok=True, copy_function=link_photographs)
                if kind == "console":
                    printed = run_console(lines, folder, programs)
                else:
                    typed = "".join(line[2:] + "\n" for line in lines if line.startswith("> "))
                    printed = run(["tessimar-batch", "--seed", "1"], folder, programs, typed).splitlines()
            if printed != lines:
                difference = difflib.unified_diff(lines, printed, f"{path.name}:{number}", "printed", lineterm="", n=1)
                faults.append("\n".join(difference))
    return faults


if __name__ == "__main__":
    found = check(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve())
    print("\n".join(found) if found else "Every transcript comes back.")
    sys.exit(1 if found else 0)
