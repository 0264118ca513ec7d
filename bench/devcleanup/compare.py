#!/usr/bin/env python3
"""Times `veldan dev --json` against the pipeline that finds the same folders by name and
measures each with du, on the same tree with the same warm cache, runs alternating, and
checks that both found the same folders with sizes that differ at most by each folder's
own blocks (du counts the folder itself, veldan what it holds).

  compare.py VELDAN_BINARY WORK_FOLDER [ROUNDS] [mixed|many]
"""
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
NAMES = ["node_modules", "target", ".venv", "venv", ".build", ".next"]


def pipeline(tree):
    names = " -o ".join(f"-name {name}" for name in NAMES)
    return ["sh", "-c", f"find '{tree}' \\( {names} \\) -prune -print0 | xargs -0 du -s -B1"]


def run_once(argv, environment):
    """Wall seconds, processor seconds (user and system, children included), peak resident
    kilobytes and output of one run."""
    started = time.perf_counter()
    result = subprocess.run(["/usr/bin/time", "-f", "%M %U %S"] + argv, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, env=environment, check=False)
    wall = time.perf_counter() - started
    if result.returncode != 0:
        raise SystemExit(f"{argv} failed: {result.stderr.decode(errors='replace')}")
    peak, user, system = result.stderr.decode().strip().splitlines()[-1].split()
    return wall, float(user) + float(system), int(peak), result.stdout


def veldan_sizes(output):
    return {os.fsencode(item["path"]): item["bytes"] for item in json.loads(output)["items"]}


def du_sizes(output):
    sizes = {}
    for line in output.splitlines():
        size, path = line.split(b"\t", 1)
        sizes[path] = int(size)
    return sizes


def check_same(veldan, du):
    if set(veldan) != set(du):
        only_v = sorted(set(veldan) - set(du))[:5]
        only_d = sorted(set(du) - set(veldan))[:5]
        raise SystemExit(f"different folders: veldan only {only_v}, du only {only_d}")
    worst = 0
    for path, bytes_du in du.items():
        own = os.lstat(path).st_blocks * 512
        difference = bytes_du - veldan[path]
        if not 0 <= difference <= own:
            raise SystemExit(f"{path}: du {bytes_du}, veldan {veldan[path]}, own blocks {own}")
        worst = max(worst, difference)
    return len(du), worst


def load():
    return " ".join(f"{value:.1f}" for value in os.getloadavg())


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    veldan, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 7
    kind = sys.argv[4] if len(sys.argv) > 4 else "mixed"
    tree = os.path.join(work, kind)
    if not os.path.exists(os.path.join(tree, ".complete")):
        print(f"generating the {kind} tree in {tree} ...", flush=True)
        shutil.rmtree(tree, ignore_errors=True)
        subprocess.run([sys.executable, os.path.join(HERE, "make_projects.py"), kind, tree],
                       check=True)
    entries = sum(len(dirs) + len(files) for _, dirs, files in os.walk(tree))
    environment = dict(os.environ)
    scratch = tempfile.mkdtemp(prefix="veldan-bench-home-")
    for variable, sub in (("HOME", ""), ("XDG_CACHE_HOME", ".cache"), ("XDG_STATE_HOME", ".local/state"),
                          ("XDG_CONFIG_HOME", ".config"), ("XDG_DATA_HOME", ".local/share")):
        environment[variable] = os.path.join(scratch, sub)
    tools = [("veldan", [veldan, "dev", "--json", tree]), ("find+du", pipeline(tree))]
    outputs = {name: run_once(argv, environment)[3] for name, argv in tools}  # warm the cache
    folders, worst = check_same(veldan_sizes(outputs["veldan"]), du_sizes(outputs["find+du"]))
    print(f"{kind} tree: {entries:,} entries, {folders} generated folders found by both; sizes "
          f"differ by at most {worst} bytes, each within the folder's own blocks")
    print(f"load average before: {load()}  ({os.cpu_count()} CPUs)")
    walls = {name: [] for name, _ in tools}
    cpus = {name: [] for name, _ in tools}
    peaks = {name: [] for name, _ in tools}
    for round_index in range(rounds):
        order = tools if round_index % 2 == 0 else list(reversed(tools))
        for name, argv in order:
            wall, cpu, peak, _ = run_once(argv, environment)
            walls[name].append(wall)
            cpus[name].append(cpu)
            peaks[name].append(peak)
    print(f"load average after:  {load()}")
    ratios = [v / p for v, p in zip(walls["veldan"], walls["find+du"])]
    for name in walls:
        print(f"  {name:8s} median {statistics.median(walls[name]) * 1000:7.0f} ms   "
              f"min {min(walls[name]) * 1000:7.0f} ms   processor {statistics.median(cpus[name]) * 1000:6.0f} ms   "
              f"peak {max(peaks[name]) / 1024:6.1f} MB")
    median_ratio = statistics.median(walls["veldan"]) / statistics.median(walls["find+du"])
    print(f"  veldan/pipeline: ratio of medians {median_ratio:.2f}, median of per-round ratios "
          f"{statistics.median(ratios):.2f} (target <= 0.6)")
    print(f"  processor time veldan/pipeline {statistics.median(cpus['veldan']) / statistics.median(cpus['find+du']):.2f} "
          f"(what parallel workers cannot win back on a machine without idle processors)")
    print(f"  veldan peak memory {max(peaks['veldan']) / 1024:.1f} MB (target < 30 MB)")
    shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    main()
