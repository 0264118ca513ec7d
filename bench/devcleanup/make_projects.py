#!/usr/bin/env python3
"""Builds a deterministic tree of developer projects for the generated-folder benchmark.

  make_projects.py mixed OUT   about 300 projects of every kind, about 400,000 entries
  make_projects.py many OUT    100,000 small projects, each with one dependency folder

Every generated folder carries its marker (package.json, Cargo.toml, pyvenv.cfg,
Package.swift), so a search by name alone (find) and by name and marker (veldan) must
find the same folders. Projects also hold sources and a .git folder, which veldan skips
and find walks. The same arguments always give the same tree (a fixed seed).
"""
import os
import random
import sys

PROJECTS = int(os.environ.get("VELDAN_BENCH_PROJECTS", "300"))
MANY = int(os.environ.get("VELDAN_BENCH_MANY", "100000"))


def write(path, rng, empty_share=0.3):
    length = 0 if rng.random() < empty_share else rng.randint(1, 6000)
    fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    if length:
        os.write(fd, b"d" * length)
    os.close(fd)


def files(rng, folder, count, prefix="f"):
    os.makedirs(folder, exist_ok=True)
    for i in range(count):
        write(os.path.join(folder, f"{prefix}{i:03d}.js"), rng)


def package_tree(rng, folder, packages, depth=0):
    """A node_modules-like tree: packages with lib folders, now and then their own
    nested node_modules."""
    os.makedirs(folder, exist_ok=True)
    for p in range(packages):
        package = os.path.join(folder, f"pkg{p:03d}")
        files(rng, package, rng.randint(2, 8))
        write(os.path.join(package, "package.json"), rng, 0)
        files(rng, os.path.join(package, "lib"), rng.randint(3, 14))
        if depth < 2 and rng.random() < 0.12:
            package_tree(rng, os.path.join(package, "node_modules"), rng.randint(1, 4), depth + 1)


def sources(rng, project):
    files(rng, os.path.join(project, "src"), rng.randint(5, 25))
    files(rng, os.path.join(project, "src", "components"), rng.randint(0, 15))
    git = os.path.join(project, ".git", "objects")
    for shard in range(rng.randint(2, 6)):
        files(rng, os.path.join(git, f"{shard:02x}"), rng.randint(2, 8), "o")


def node(rng, project, scale):
    write(os.path.join(project, "package.json"), rng, 0)
    package_tree(rng, os.path.join(project, "node_modules"), int(scale * rng.randint(40, 90)))


def next_app(rng, project, scale):
    node(rng, project, scale * 0.8)
    for part in ("server/chunks", "static/chunks", "cache/webpack"):
        files(rng, os.path.join(project, ".next", part), rng.randint(20, 80))


def rust(rng, project, scale):
    write(os.path.join(project, "Cargo.toml"), rng, 0)
    target = os.path.join(project, "target", "debug")
    files(rng, os.path.join(target, "deps"), int(scale * rng.randint(200, 600)), "d")
    for crate in range(int(scale * rng.randint(20, 60))):
        files(rng, os.path.join(target, "build", f"crate{crate:03d}", "out"), rng.randint(1, 6))
    files(rng, os.path.join(target, "incremental", "s1"), int(scale * rng.randint(50, 200)), "i")


def python(rng, project, scale):
    write(os.path.join(project, "pyproject.toml"), rng, 0)
    venv = os.path.join(project, rng.choice(("venv", ".venv")))
    os.makedirs(venv, exist_ok=True)
    write(os.path.join(venv, "pyvenv.cfg"), rng, 0)
    files(rng, os.path.join(venv, "bin"), 12)
    site = os.path.join(venv, "lib", "python3.11", "site-packages")
    for p in range(int(scale * rng.randint(20, 60))):
        package = os.path.join(site, f"mod{p:03d}")
        files(rng, package, rng.randint(3, 20), "m")
        files(rng, os.path.join(package, "__pycache__"), rng.randint(2, 10), "c")


def swift(rng, project, scale):
    write(os.path.join(project, "Package.swift"), rng, 0)
    build = os.path.join(project, ".build", "debug")
    for module in range(int(scale * rng.randint(20, 60))):
        files(rng, os.path.join(build, f"Module{module:03d}.build"), rng.randint(5, 20), "o")
    files(rng, os.path.join(project, ".build", "checkouts", "dep"), int(scale * 80))


KINDS = [(node, 0.40), (rust, 0.20), (python, 0.15), (next_app, 0.15), (swift, 0.10)]


def mixed(out):
    rng = random.Random(15)
    for index in range(PROJECTS):
        roll, kind = rng.random(), KINDS[-1][0]
        for candidate, share in KINDS:
            if roll < share:
                kind = candidate
                break
            roll -= share
        group = os.path.join(out, f"group{index % 12:02d}", f"team{index % 5}")
        project = os.path.join(group, f"project{index:03d}")
        sources(rng, project)
        kind(rng, project, 1.12)


def many(out):
    rng = random.Random(100)
    for index in range(MANY):
        project = os.path.join(out, f"g{index // 1000:03d}", f"p{index % 1000:03d}")
        os.makedirs(os.path.join(project, "node_modules", "dep"), exist_ok=True)
        write(os.path.join(project, "package.json"), rng, 0)
        write(os.path.join(project, "node_modules", "dep", "index.js"), rng)


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in ("mixed", "many"):
        sys.exit(__doc__)
    out = sys.argv[2]
    os.makedirs(out, exist_ok=True)
    (mixed if sys.argv[1] == "mixed" else many)(out)
    open(os.path.join(out, ".complete"), "w").close()


if __name__ == "__main__":
    main()
