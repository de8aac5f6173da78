#!/usr/bin/env python3
"""Checks the includes of src/: they follow the layers, are written from src/, and make no cycle.

Prints one line per fault and exits with 1 if there is any; silent otherwise.
"""

import pathlib
import re
import sys

# What each folder may include besides itself.
ALLOWED = {
    "base": set(),
    "board": {"base"},
    "eval": {"base", "board"},
    "endgame": {"base", "board"},
    "search": {"base", "board", "eval", "endgame"},
    "tree": {"base", "board", "search"},
    "shell": {"base", "board", "eval", "endgame", "search", "tree"},
}

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def check(source):
    """Returns the faults of the tree below `source`, as lines of text."""
    faults = []
    graph = {}
    for path in sorted(p for p in source.rglob("*") if p.suffix in (".h", ".cpp")):
        name = path.relative_to(source).as_posix()
        folder = name.split("/")[0]
        if folder not in ALLOWED:
            faults.append(f"{name}: the folder {folder} is no layer")
            continue
        graph[name] = []
        for included in INCLUDE.findall(path.read_text(encoding="utf-8")):
            target = included.split("/")[0]
            if ".." in included.split("/"):
                faults.append(f'{name}: "{included}" must be written from src/')
            elif not (source / included).is_file():
                faults.append(f'{name}: "{included}" is no file of src/')
            elif target != folder and target not in ALLOWED[folder]:
                faults.append(f'{name}: {folder} may not include "{included}"')
            else:
                graph[name].append(included)
    return faults + cycles(graph)


def cycles(graph):
    """One fault for each include that leads back to a file which is still being read."""
    faults = []
    reading, done = [], set()

    def visit(name):
        if name in done:
            return
        if name in reading:
            faults.append("include cycle: " + " -> ".join(reading[reading.index(name):] + [name]))
            return
        reading.append(name)
        for included in graph.get(name, []):
            visit(included)
        reading.pop()
        done.add(name)

    for name in graph:
        visit(name)
    return faults


if __name__ == "__main__":
    found = check(pathlib.Path(__file__).resolve().parent.parent / "src")
    for fault in found:
        print(fault, file=sys.stderr)
    sys.exit(1 if found else 0)
