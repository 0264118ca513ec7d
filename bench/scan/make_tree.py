#!/usr/bin/env python3
"""Builds a deterministic file tree for scanner benchmarks.

  make_tree.py balanced OUT   about 300,000 files in 24 top-level folders
  make_tree.py skewed OUT     the same number, 90% of them under one top-level folder
  make_tree.py shallow OUT    300,000 files, 20 per folder, 6 subfolders each: every
                              folder within the mapped depth (the worst case for the
                              size of the kept tree)
  make_tree.py flat OUT       300,000 files directly in OUT (an image data set, a mail
                              folder): every file is a top-level entry of the scan

The same arguments always give the same names, sizes and shape (a fixed seed). The
balanced and skewed trees follow the shape of a real home folder: most folders hold a
handful of files and a few hold hundreds (a heavy-tailed count), branching varies, and
nesting goes about twelve levels deep. Sizes are small (0 to 12 KB, a few larger files)
to keep each tree under 4 GB on disk: a walk costs per entry, not per byte.
"""
import os
import random
import sys

FILES = int(os.environ.get("VELDAN_BENCH_FILES", "300000"))
TOP_LEVEL = 24
MAX_DEPTH = 12


def size(rng):
    roll = rng.random()
    if roll < 0.10:
        return 0
    if roll < 0.995:
        return rng.randint(1, 12_000)
    return rng.randint(100_000, 2_000_000)


def write_files(rng, folder, count):
    for i in range(count):
        length = size(rng)
        fd = os.open(os.path.join(folder, f"file{i:03d}.dat"), os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
        if length:
            os.write(fd, b"v" * length)
        os.close(fd)


def files_here(rng):
    """Heavy-tailed: median about 8 files, one folder in twenty with over 100."""
    return min(int(rng.paretovariate(1.1) * 4), 1500)


def fill(rng, folder, files, depth):
    os.makedirs(folder, exist_ok=True)
    here = files if depth >= MAX_DEPTH else min(files, files_here(rng))
    write_files(rng, folder, here)
    rest = files - here
    if rest <= 0:
        return
    children = min(rng.choice((1, 2, 2, 3, 3, 4, 5, 8)), rest)
    weights = [rng.random() + 0.2 for _ in range(children)]
    total = sum(weights)
    shares = [int(rest * w / total) for w in weights]
    shares[0] += rest - sum(shares)
    for c, share in enumerate(shares):
        if share > 0:
            fill(rng, os.path.join(folder, f"dir{depth}_{c}"), share, depth + 1)


def fill_shallow(rng, folder, files, depth=0):
    os.makedirs(folder, exist_ok=True)
    here = min(files, 20)
    write_files(rng, folder, here)
    rest = files - here
    if rest <= 0:
        return
    children = min(6, max(1, rest // 20))
    for c in range(children):
        share = rest // children + (1 if c < rest % children else 0)
        fill_shallow(rng, os.path.join(folder, f"dir{depth}_{c}"), share, depth + 1)


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in ("balanced", "skewed", "shallow", "flat"):
        sys.exit(__doc__)
    kind, out = sys.argv[1], sys.argv[2]
    rng = random.Random(20261121)
    if kind == "flat":
        os.makedirs(out, exist_ok=True)
        write_files(rng, out, FILES)
        with open(os.path.join(out, ".complete"), "w") as done:
            done.write(f"{kind} {FILES}\n")
        return
    if kind in ("balanced", "shallow"):
        shares = [FILES // TOP_LEVEL] * TOP_LEVEL
    else:
        big = FILES * 9 // 10
        shares = [big] + [(FILES - big) // (TOP_LEVEL - 1)] * (TOP_LEVEL - 1)
    for index, share in enumerate(shares):
        if kind == "shallow":
            fill_shallow(rng, os.path.join(out, f"top{index:02d}"), share)
        else:
            fill(rng, os.path.join(out, f"top{index:02d}"), share, 1)
    with open(os.path.join(out, ".complete"), "w") as done:
        done.write(f"{kind} {FILES}\n")


if __name__ == "__main__":
    main()
