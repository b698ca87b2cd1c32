#!/usr/bin/env python3
"""Build a deterministic fake Linux developer home for the scan benchmark.

Usage: make_linux_home.py DEST --shared SHARED_DIR [--scale S] [--seed N]

The same shapes and about the same number of files as SHARED_DIR/bench/make_fake_home.py
(whose tree builders it reuses), laid out as tools keep them on Linux: the XDG cache,
data and config folders, ~/Android/Sdk, the Trash under ~/.local/share, Flatpak data
under ~/.var/app, and projects with Rust target, CMake, Python virtual-environment and
cache-tagged build folders beside the usual ones. Hard links as the tools make them: a
pnpm store whose files the projects' node_modules link to, cargo outputs linked up from
deps/. Every other project is a git repository whose sources are in its index (and one also
keeps scripts in a tracked build folder), so a scan reads real indexes. Needs git. Writes
DEST/../<name>.manifest.json.
"""
import argparse
import json
import os
import subprocess
import sys

CACHE_TAG = "Signature: 8a477f597d28d172789f06886806bc55\n# A cache directory tag.\n"


# Artefact folders a project's .gitignore leaves out of its index.
IGNORED = ["node_modules/", "target/", "build/", ".gradle/", ".venv/", "__pycache__/", "bin/", "obj/",
           "cmake-build-debug/", "tools/out/"]


def make_repository(proj, forced=()):
    """Puts the project's sources in the index of a repository of its own, as `git add` does,
    and the `forced` paths too although they are ignored. No git configuration is read."""
    with open(os.path.join(proj, ".gitignore"), "w") as f:
        f.write("\n".join(IGNORED) + "\n")
    env = {"PATH": os.environ.get("PATH", "/usr/bin:/bin"), "HOME": proj, "GIT_CONFIG_NOSYSTEM": "1"}
    for args in (["init", "-q"], ["add", "-A"]) + ((["add", "-f", "--"] + list(forced),) if forced else ()):
        subprocess.run(["git", "-C", proj] + args, env=env, check=True)


def load_maker(shared):
    sys.path.insert(0, os.path.join(shared, "bench"))
    from make_fake_home import Maker, write  # noqa: E402
    return Maker, write


def build(maker, write):
    m, h = maker, maker.home
    m.content_cache(".npm/_cacache", 30000)
    m.flat_files(".cache/yarn", 12000)
    m.flat_files(".gradle/caches", 25000, dirs=400)
    m.flat_files(".gradle/wrapper/dists", 2000)
    m.flat_files(".m2/repository", 15000, dirs=600)
    m.counts[".cargo/registry"] = m.package_tree(os.path.join(h, ".cargo/registry/src"), m.n(120), 60)
    m.flat_files(".cargo/git", 3000)
    m.flat_files(".cache/pip", 8000)
    m.flat_files(".cache/uv", 6000)
    m.flat_files("go/pkg/mod", 14000, dirs=500)
    m.flat_files(".cache/go-build", 10000, dirs=256)
    m.flat_files(".cache/ccache", 10000, dirs=256)
    m.flat_files(".cache/Homebrew", 1500)
    m.flat_files(".cache/JetBrains/IntelliJIdea2024.1", 4000)
    m.flat_files(".cache/JetBrains/GoLand2023.3", 3000)
    m.flat_files(".config/Code/Cache", 500)
    m.flat_files(".config/Code/CachedData", 800)
    for v in ["25.2.9519653", "26.1.10909125", "27.0.12077973"]:
        m.flat_files("Android/Sdk/ndk/" + v, 3000)
    m.flat_files(".android/cache", 1200)
    m.flat_files(".pub-cache", 5000)
    m.flat_files(".local/share/Trash/files", 600)
    # Flatpak: one app installed, one removed (its data is a leftover for `kelvo prepare`).
    os.makedirs(os.path.join(h, ".local/share/flatpak/app/org.example.Kept/current"), exist_ok=True)
    m.flat_files(".var/app/org.example.Kept/data", 200)
    m.flat_files(".var/app/org.example.Gone/data", 200)

    # Projects under ~/workspace: node, Rust, CMake, gradle, Python, dotnet, cache-tagged.
    projects = os.path.join(h, "workspace")
    made = 0
    for p in range(m.n(60)):
        proj = os.path.join(projects, "team%d" % (p % 4), "app%03d" % p)
        write(os.path.join(proj, "src", "main.ts"), 2000, m.rnd)
        write(os.path.join(proj, "package.json"), 500, m.rnd)
        made += m.package_tree(os.path.join(proj, "node_modules"), 40, 25)
        if p % 3 == 0:
            out = "build" if p % 6 == 0 else "target"
            if out == "target":
                write(os.path.join(proj, "Cargo.toml"), 300, m.rnd)
            for f in range(m.n(300)):
                write(os.path.join(proj, out, "debug", "o%d.o" % f), m.size(), m.rnd)
            made += m.n(300)
            if out == "target":
                # cargo keeps its outputs under deps/ and links them up a level.
                for f in range(m.n(50)):
                    o = os.path.join(proj, out, "debug", "o%d.o" % f)
                    os.makedirs(os.path.join(proj, out, "debug", "deps"), exist_ok=True)
                    os.link(o, os.path.join(proj, out, "debug", "deps", "o%d.o" % f))
        if p % 4 == 0:
            for f in range(200):
                write(os.path.join(proj, ".gradle", "8.5", "f%d" % f), m.size(), m.rnd)
            made += 200
        if p % 5 == 0:
            write(os.path.join(proj, "pyproject.toml"), 400, m.rnd)
            for d in ["pkg_a", "pkg_b", "pkg_c"]:
                for f in range(20):
                    write(os.path.join(proj, d, "__pycache__", "m%d.cpython-311.pyc" % f), m.size(), m.rnd)
            for f in range(100):
                write(os.path.join(proj, ".venv", "lib", "site-packages", "p%d.py" % f), m.size(), m.rnd)
            write(os.path.join(proj, ".venv", "pyvenv.cfg"), 100, m.rnd)
            if p % 10 == 0:
                write(os.path.join(proj, "uv.lock"), 2000, m.rnd)
            made += 161
        if p % 6 == 0:
            write(os.path.join(proj, "App.csproj"), 800, m.rnd)
            for d in ["bin", "obj"]:
                for f in range(100):
                    write(os.path.join(proj, d, "Debug", "f%d.dll" % f), m.size(), m.rnd)
            made += 200
        if p % 7 == 0:
            # A "bin" without a .csproj beside it: not an artefact.
            write(os.path.join(proj, "bin", "tool.sh"), 100, m.rnd)
        if p % 8 == 0:
            write(os.path.join(proj, "CMakeLists.txt"), 300, m.rnd)
            for f in range(100):
                write(os.path.join(proj, "cmake-build-debug", "CMakeFiles", "f%d.o" % f), m.size(), m.rnd)
            tagged = os.path.join(proj, "tools", "out")
            os.makedirs(tagged, exist_ok=True)
            with open(os.path.join(tagged, "CACHEDIR.TAG"), "w") as f:
                f.write(CACHE_TAG)
            for f in range(50):
                write(os.path.join(tagged, "blob%d" % f), m.size(), m.rnd)
            made += 151
        if p % 10 == 7:
            # Scripts kept under build/ in the repository: source, never offered.
            write(os.path.join(proj, "build", "ci", "run.sh"), 300, m.rnd)
        if p % 2 == 1:
            make_repository(proj, ["build/ci/run.sh"] if p % 10 == 7 else [])
    m.counts["workspace"] = made

    # The marks each tool leaves at the top of its folder, without which Kelvo offers none.
    for mark in [".cache/yarn/v6", ".gradle/caches/modules-2", ".cargo/registry/index", ".cargo/git/db",
                 ".cache/pip/http", "go/pkg/mod/cache/download", ".pub-cache/hosted"]:
        os.makedirs(os.path.join(h, mark), exist_ok=True)
    marks = [".cache/uv/CACHEDIR.TAG", ".cache/go-build/README", ".cache/go-build/trim.txt"]
    marks += ["Android/Sdk/ndk/%s/source.properties" % v for v in ["25.2.9519653", "26.1.10909125", "27.0.12077973"]]
    for mark in marks:
        write(os.path.join(h, mark), 100, m.rnd)

    # pnpm: a content store, and projects whose node_modules are hard links into it.
    store = os.path.join(h, ".local/share/pnpm/store/v3/files")
    blobs = [os.path.join(store, "%02x" % (i % 256), "%06d" % i) for i in range(m.n(6000))]
    for blob in blobs:
        write(blob, m.size(), m.rnd)
    for p in range(m.n(12)):
        write(os.path.join(projects, "pnpm", "web%02d" % p, "package.json"), 500, m.rnd)
        modules = os.path.join(projects, "pnpm", "web%02d" % p, "node_modules", ".pnpm")
        for i in m.rnd.sample(range(len(blobs)), len(blobs) // 6):
            linked = os.path.join(modules, "pkg%d@1.0.0" % (i % 97), "node_modules", "pkg%d" % (i % 97), "f%d.js" % i)
            os.makedirs(os.path.dirname(linked), exist_ok=True)
            os.link(blobs[i], linked)
    m.counts[".local/share/pnpm/store"] = len(blobs)

    src = os.path.join(h, ".cache/pip/d000/item000000.bin")
    for i in range(50):
        os.link(src, os.path.join(h, ".cache/pip/d000/hardlink%02d.bin" % i))
    os.symlink("/usr", os.path.join(h, ".cache/yarn/link-to-usr"))
    os.symlink(os.path.join(h, "workspace"), os.path.join(h, ".gradle/caches/link-to-workspace"))
    locked = os.path.join(h, ".cache/Homebrew/locked")
    write(os.path.join(locked, "secret.bin"), 4096, m.rnd)
    os.chmod(locked, 0)
    write(os.path.join(h, ".android/avd/Pixel.avd/config.ini"), 500, m.rnd)
    write(os.path.join(h, "Documents/thesis.tex"), 5000, m.rnd)
    m.age_everything()


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("dest")
    ap.add_argument("--shared", required=True)
    ap.add_argument("--scale", type=float, default=1.0)
    ap.add_argument("--seed", type=int, default=7)
    a = ap.parse_args()
    if os.path.exists(a.dest):
        sys.exit("destination exists: " + a.dest)
    Maker, write = load_maker(a.shared)
    os.makedirs(a.dest)
    m = Maker(os.path.abspath(a.dest), a.scale, a.seed)
    build(m, write)
    manifest = os.path.abspath(a.dest).rstrip("/") + ".manifest.json"
    with open(manifest, "w") as f:
        json.dump(m.counts, f, indent=1, sort_keys=True)
    print("made", a.dest, "manifest", manifest)


if __name__ == "__main__":
    main()
