#!/usr/bin/env python3
"""Holds what --help of each program says against its page in docs/ and its completion for bash and zsh: all of them name
the same options. Completion for bash is tried in bash.

Usage: check-options.py ROOT PROGRAMS
"""

import re
import shlex
import subprocess
import sys
from pathlib import Path

OPTION = r"(?<![\w-])(--[a-z][a-z-]*|-[a-z])(?![\w-])"


def complete(script, words):
    """What bash offers for the last of the words."""
    function = re.search(r"-F (\w+) ", script.read_text())[1]
    program = f". {shlex.quote(str(script))}; COMP_WORDS=({shlex.join(words)}); COMP_CWORD={len(words) - 1}; {function}; "
    done = subprocess.run(["bash", "-c", program + 'printf "%s\\n" "${COMPREPLY[@]}"'], check=True, text=True,
                          stdout=subprocess.PIPE, cwd=script.parent)
    return set(done.stdout.split())


def check(root, programs):
    faults = []
    completions = root / "packaging" / "completions"
    for page in sorted((root / "docs").glob("tessimar*.md")):
        name = page.stem
        usage = subprocess.run([programs / name, "--help"], check=True, text=True, stdout=subprocess.PIPE).stdout
        expected = set(re.findall(OPTION, "\n".join(re.findall(r"^  (-.{0,17})", usage, re.MULTILINE))))
        section = page.read_text().partition("## Options")[2].partition("\n## ")[0]
        zsh = re.sub(r"\[[^]]*\]", "", (completions / f"_{name}").read_text().partition("_arguments")[2])
        zsh = re.sub(r"-s \\|'1:.*|_files -/|\(- \*\)", "", zsh).replace("=", " ")
        zsh = re.sub(r"[{},'*:]", " ", zsh)
        found = {
            page.name: set(re.findall(OPTION, "\n".join(re.findall(r"^`-.*$", section, re.MULTILINE)))),
            f"_{name}": set(re.findall(OPTION, zsh)),
            f"{name}.bash": complete(completions / f"{name}.bash", [name, "-"]),
        }
        for where, options in found.items():
            if options != expected:
                faults.append(f"{where}: {sorted(options)}, but --help has {sorted(expected)}")
        offered = complete(completions / f"{name}.bash", [name, f"_{name}"])
        if f"_{name}" not in offered:
            faults.append(f"{name}.bash: offers {sorted(offered)} for the files _{name}*")
    return faults


if __name__ == "__main__":
    found = check(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve())
    print("\n".join(found) if found else "Every option is told everywhere.")
    sys.exit(1 if found else 0)
