#!/usr/bin/env python3
"""Times `veldan scan --json` against du, gdu and ncdu on the same trees, warm cache,
side by side in one run, and prints medians, ratios and peak memory.

  compare.py VELDAN_BINARY WORK_FOLDER [ROUNDS]
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))


def tools(veldan, tree):
    listed = [
        ("veldan", [veldan, "scan", "--json", tree]),
        ("du", ["du", "-s", "-x", "-B1", tree]),
        ("gdu", ["gdu", "-n", "-p", "-x", tree]),
        ("ncdu", ["ncdu", "-x", "-0", "-o", "/dev/null", tree]),
    ]
    return [(name, argv) for name, argv in listed if shutil.which(argv[0]) or os.path.exists(argv[0])]


def run_once(argv, environment):
    """Wall seconds and peak resident kilobytes of one run, output discarded."""
    started = time.perf_counter()
    result = subprocess.run(["/usr/bin/time", "-f", "%M"] + argv, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, env=environment, check=False)
    wall = time.perf_counter() - started
    if result.returncode != 0:
        raise SystemExit(f"{argv[0]} failed: {result.stderr.decode(errors='replace')}")
    peak = int(result.stderr.decode().strip().splitlines()[-1])
    return wall, peak


def measure(veldan, tree, rounds, environment):
    listed = tools(veldan, tree)
    for _, argv in listed:  # warm the cache and every binary
        run_once(argv, environment)
    walls = {name: [] for name, _ in listed}
    peaks = {name: [] for name, _ in listed}
    for round_index in range(rounds):
        # Rotate the order so no tool always runs right after the same one.
        order = listed[round_index % len(listed):] + listed[:round_index % len(listed)]
        for name, argv in order:
            wall, peak = run_once(argv, environment)
            walls[name].append(wall)
            peaks[name].append(peak)
    return {name: (statistics.median(walls[name]), max(peaks[name])) for name in walls}


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    veldan, work = os.path.abspath(sys.argv[1]), sys.argv[2]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 7
    environment = dict(os.environ)
    scratch = tempfile.mkdtemp(prefix="veldan-bench-home-")
    for variable, sub in (("HOME", ""), ("XDG_CACHE_HOME", ".cache"), ("XDG_STATE_HOME", ".local/state"),
                          ("XDG_CONFIG_HOME", ".config"), ("XDG_DATA_HOME", ".local/share")):
        environment[variable] = os.path.join(scratch, sub)
    targets = {"balanced": (0.60, 0.45), "skewed": (0.95, None), "shallow": (None, None)}
    print(f"{rounds} rounds per tool, medians of wall time; peak resident memory is the largest seen")
    kinds = ("balanced", "skewed", "shallow") if os.environ.get("VELDAN_BENCH_SHALLOW") else ("balanced", "skewed")
    for kind in kinds:
        tree = os.path.join(work, kind)
        if not os.path.exists(os.path.join(tree, ".complete")):
            print(f"generating the {kind} tree in {tree} ...", flush=True)
            shutil.rmtree(tree, ignore_errors=True)
            subprocess.run([sys.executable, os.path.join(HERE, "make_tree.py"), kind, tree], check=True)
        results = measure(veldan, tree, rounds, environment)
        print(f"\n{kind} tree")
        for name, (wall, peak) in results.items():
            ratio = wall / results["veldan"][0] if name != "veldan" else 1.0
            print(f"  {name:7s} {wall * 1000:8.0f} ms   {peak / 1024:7.1f} MB peak   (veldan is {1 / ratio:4.2f}x its time)")
        du_target, gdu_target = targets[kind]
        veldan_wall = results["veldan"][0]
        if du_target is None:
            print(f"  (no target) veldan/du {veldan_wall / results['du'][0]:.2f}")
            continue
        print(f"  target: veldan/du <= {du_target}  measured {veldan_wall / results['du'][0]:.2f}")
        if gdu_target and "gdu" in results:
            print(f"  target: veldan/gdu <= {gdu_target}  measured {veldan_wall / results['gdu'][0]:.2f}")
        print(f"  target: peak memory < 40 MB  measured {results['veldan'][1] / 1024:.1f} MB")
    shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    main()
