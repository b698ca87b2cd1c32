#!/usr/bin/env python3
"""Checks that dependencies point downwards: no include cycle among the library's files,
the platform layer includes nothing of the library, and only the library and the tests
include the platform layer. Prints each fault; exit status 1 when there is any."""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
include = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
faults = []


def includes(path):
    return include.findall(path.read_text(errors="replace"))


def sources(*folders):
    for folder in folders:
        yield from (p for p in (root / folder).rglob("*") if p.suffix in (".h", ".cpp"))


for path in sources("KelvoKit/platform"):
    for name in includes(path):
        if name.startswith("kelvo/") and not name.startswith("kelvo/platform/"):
            faults.append(f"{path.relative_to(root)}: the platform layer includes {name}")
for path in sources("kelvo", "KelvoMenuBar", "bench"):
    for name in includes(path):
        if name.startswith("kelvo/platform/"):
            faults.append(f"{path.relative_to(root)}: a front end includes {name}")

# One node per type of the library (its header and its source together): a type depends
# on another when either of its files includes the other's header.
headers = {}
for base in ("KelvoKit/include", "KelvoKit/platform/include"):
    for path in (root / base).rglob("*.h"):
        headers[str(path.relative_to(root / base))] = path
graph = {}
for name, path in headers.items():
    layer = "KelvoKit/platform/src" if name.startswith("kelvo/platform/") else "KelvoKit/src"
    source = root / layer / (path.stem + ".cpp")
    used = includes(path) + (includes(source) if source.exists() else [])
    graph[name] = sorted({n for n in used if n in headers and n != name})
state = {}


def visit(name, stack):
    state[name] = "open"
    for child in graph[name]:
        if state.get(child) == "open":
            faults.append("include cycle: " + " -> ".join(stack[stack.index(child):] + [child]))
        elif child not in state:
            visit(child, stack + [child])
    state[name] = "done"


for name in sorted(graph):
    if name not in state:
        visit(name, [name])
print("\n".join(faults))
sys.exit(1 if faults else 0)
