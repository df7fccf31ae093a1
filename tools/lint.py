#!/usr/bin/env python3
"""The project's own checks: includes run down the layers, and a few habits of style."""
import pathlib
import re
import subprocess
import sys

LAYERS = ["support", "state", "corelink", "coreapi", "services", "structure", "crystals", "volumes", "plots",
          "trajectory", "catalogue", "measures", "extraction", "reports", "transforms", "correlation", "pairs"]
# What stands beside the row of layers: the layers of the row that each may include up to, and which others.
BESIDE = {"shell": ("services", set()), "analysis": ("pairs", {"shell"}), "building": ("trajectory", {"shell"}),
          "main": ("pairs", {"shell", "analysis", "building"})}
DESK_MAY_INCLUDE = {"desk", "trajectory", "structure", "services", "coreapi", "corelink", "state", "support"}
INCLUDE = re.compile(r'^\s*#include "([^"]+)"', re.M)
HABITS = [
    (re.compile(r"\b(TODO|FIXME|XXX|HACK)\b"), "leftover mark"),
    (re.compile(r"[ \t]+$", re.M), "blanks at the end of a line"),
    (re.compile(r"\bgoto\b"), "goto"),
    (re.compile(r"\bhtonl|\bntohl|__builtin_bswap(?!.*big_endian)"), "byte order outside support/big_endian.h"),
]
BYTE_ORDER_HOME = "src/support/big_endian.h"


def sources():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "src", "tests", "bench", "fuzz"], check=True, capture_output=True, text=True)
    return [pathlib.Path(p) for p in listed.stdout.split() if p.endswith((".cpp", ".h", ".def")) and pathlib.Path(p).exists()]


def may_include(layer, other):
    if layer == "desk":
        return other in DESK_MAY_INCLUDE
    highest, others = BESIDE.get(layer, (layer, set()))
    if other == layer or other in others:
        return True
    return other in LAYERS and LAYERS.index(other) <= LAYERS.index(highest)


def layer_faults(path, text):
    layer = path.parts[1]
    for name in INCLUDE.findall(text):
        other = name.split("/")[0]
        if not pathlib.Path("src", name).exists():
            yield f'{path}: "{name}" is not a file of src/'
        elif not may_include(layer, other):
            yield f"{path}: {layer} may not include {name}"


def circles(graph):
    done, active = set(), []

    def visit(node):
        if node in active:
            return active[active.index(node):] + [node]
        if node in done:
            return None
        active.append(node)
        for following in graph.get(node, ()):
            found = visit(following)
            if found:
                return found
        active.pop()
        done.add(node)
        return None

    for node in list(graph):
        found = visit(node)
        if found:
            yield "includes run in a circle: " + " > ".join(found)
            return


def main():
    faults, graph = [], {}
    for path in sources():
        text = path.read_text()
        if path.parts[0] == "src":
            faults += layer_faults(path, text)
            graph[str(path.relative_to("src"))] = INCLUDE.findall(text)
        for pattern, meaning in HABITS:
            if meaning.startswith("byte order") and str(path) == BYTE_ORDER_HOME:
                continue
            match = pattern.search(text)
            if match:
                faults.append(f"{path}:{text.count(chr(10), 0, match.start()) + 1}: {meaning}")
        if path.suffix == ".h" and not text.startswith("#pragma once"):
            faults.append(f"{path}: a header begins with #pragma once")
    faults += circles(graph)
    table = subprocess.run([sys.executable, "tools/surface_cases.py", "--check"], capture_output=True, text=True)
    if table.returncode != 0:
        faults.append(table.stdout.strip() or table.stderr.strip())
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
