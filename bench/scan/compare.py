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
    """Wall seconds, peak resident kilobytes and processor seconds (user and system) of
    one run, output discarded."""
    started = time.perf_counter()
    result = subprocess.run(["/usr/bin/time", "-f", "%M %U %S"] + argv, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, env=environment, check=False)
    wall = time.perf_counter() - started
    if result.returncode != 0:
        raise SystemExit(f"{argv[0]} failed: {result.stderr.decode(errors='replace')}")
    peak, user, system = result.stderr.decode().strip().splitlines()[-1].split()
    return wall, int(peak), float(user) + float(system)


def measure(veldan, tree, rounds, environment):
    """Per tool: median wall seconds, largest peak kilobytes, median processor seconds."""
    listed = tools(veldan, tree)
    for _, argv in listed:  # warm the cache and every binary
        run_once(argv, environment)
    runs = {name: [] for name, _ in listed}
    for round_index in range(rounds):
        # Rotate the order so no tool always runs right after the same one.
        order = listed[round_index % len(listed):] + listed[:round_index % len(listed)]
        for name, argv in order:
            runs[name].append(run_once(argv, environment))
    return {name: (statistics.median(run[0] for run in runs[name]), max(run[1] for run in runs[name]),
                   statistics.median(run[2] for run in runs[name])) for name in runs}


TARGETS = {  # largest veldan/du ratio of wall time
    "balanced": 0.60,
    "skewed": 0.90,
    "flat": 1.00,
    "shallow": None,
}
PEAK_TARGET_MB = 30


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
    kinds = ["balanced", "skewed", "flat"]
    if os.environ.get("VELDAN_BENCH_SHALLOW"):
        kinds.append("shallow")
    rows = []
    load_before = os.getloadavg()
    for kind in kinds:
        tree = os.path.join(work, kind)
        if not os.path.exists(os.path.join(tree, ".complete")):
            print(f"generating the {kind} tree in {tree} ...", flush=True)
            shutil.rmtree(tree, ignore_errors=True)
            subprocess.run([sys.executable, os.path.join(HERE, "make_tree.py"), kind, tree], check=True)
        rows.append((kind, measure(veldan, tree, rounds, environment)))
    load_after = os.getloadavg()
    shutil.rmtree(scratch, ignore_errors=True)

    print(f"{rounds} rounds per tool, tools alternating; medians of wall time, largest peak memory,")
    print("medians of processor time (user and system; on a busy machine it compares best)")
    print(f"load average before {load_before[0]:.1f}, after {load_after[0]:.1f} "
          f"({os.cpu_count()} cores)")
    names = [name for name in ("veldan", "du", "gdu", "ncdu") if name in rows[0][1]]
    header = "tree      " + "".join(f"{name:>9s}" for name in names)
    header += "".join(f"{name + '/du':>11s}" for name in names if name != "du")
    header += "   veldan peak   target   cpu veldan/du"
    print(header)
    missed = []
    for kind, results in rows:
        du = results["du"][0]
        line = f"{kind:10s}" + "".join(f"{results[name][0] * 1000:7.0f}ms" for name in names)
        line += "".join(f"{results[name][0] / du:11.2f}" for name in names if name != "du")
        peak = results["veldan"][1] / 1024
        target = TARGETS.get(kind)
        line += f"   {peak:8.1f} MB   " + (f"<= {target:.2f}" if target else "     -")
        line += f"   {results['veldan'][2]:.2f}s/{results['du'][2]:.2f}s"
        print(line)
        if target and results["veldan"][0] / du > target:
            missed.append(f"{kind}: veldan/du {results['veldan'][0] / du:.2f} > {target:.2f}")
        if peak >= PEAK_TARGET_MB:
            missed.append(f"{kind}: peak memory {peak:.1f} MB >= {PEAK_TARGET_MB} MB")
    for miss in missed:
        print("target missed: " + miss)


if __name__ == "__main__":
    main()
