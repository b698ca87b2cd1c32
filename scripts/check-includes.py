#!/usr/bin/env python3
"""Checks that dependencies point downwards: no include cycle among the library's files,
the platform layer includes nothing of the library, and only the library and the tests
include the platform layer, and the library's domain folders depend only on their own and
lower ones (DOMAINS, lowest first). Prints each fault; exit status 1 when there is any."""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
include = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
faults = []
DOMAINS = ["vocabulary", "config", "sizing", "safety", "catalog", "scan", "execution", "prepare", "service", "schedule", "app"]


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
# on another when either of its files includes the other's header. Public headers are
# "kelvo/Name.h", the others "<domain>/Name.h" beside their sources.
headers = {}
for base in ("KelvoKit/include", "KelvoKit/platform/include", "KelvoKit/src"):
    for path in (root / base).rglob("*.h"):
        headers[str(path.relative_to(root / base))] = path
sources = {p.stem: p for p in (root / "KelvoKit/src").glob("*/*.cpp")}
for stray in (root / "KelvoKit/src").glob("*.*"):
    faults.append(f"{stray.relative_to(root)}: outside every domain folder")
graph = {}
domain = {}
for name, path in headers.items():
    if name.startswith("kelvo/platform/"):
        source = root / "KelvoKit/platform/src" / (path.stem + ".cpp")
    else:
        source = sources.get(path.stem, root / "none")
        folder = (source if source.exists() else path).parent.name
        if folder in DOMAINS:
            domain[name] = folder
    used = includes(path) + (includes(source) if source.exists() else [])
    graph[name] = sorted({n for n in used if n in headers and n != name})
for name, children in graph.items():
    for child in children:
        if name in domain and child in domain and DOMAINS.index(domain[child]) > DOMAINS.index(domain[name]):
            faults.append(f"{name} ({domain[name]}) includes {child} of the higher domain {domain[child]}")
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
