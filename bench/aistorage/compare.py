#!/usr/bin/env python3
"""Times `veldan ai --json` against `du -s -B1` over the same catalogue locations, warm
cache, alternating runs, and prints medians, the ratio and the machine's load.

  compare.py VELDAN_BINARY HOME [ROUNDS]
"""
import json
import os
import statistics
import subprocess
import sys
import time


def environment(home):
    env = {k: v for k, v in os.environ.items()
           if k not in ("OLLAMA_MODELS", "HF_HOME", "GEMINI_CLI_HOME")}
    env.update(HOME=home, XDG_CONFIG_HOME=home + "/.config", XDG_CACHE_HOME=home + "/.cache",
               XDG_DATA_HOME=home + "/.local/share", XDG_STATE_HOME=home + "/.local/state")
    return env


def timed(argv, env):
    started = time.perf_counter()
    result = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=env)
    wall = time.perf_counter() - started
    if result.returncode != 0:
        raise SystemExit(f"{argv[0]} failed: {result.stderr.decode(errors='replace')}")
    return wall, result.stdout


def load():
    with open("/proc/loadavg") as f:
        return " ".join(f.read().split()[:3])


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    veldan, home = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 9
    env = environment(home)
    _, out = timed([veldan, "ai", "--json"], env)
    document = json.loads(out)
    paths = [loc["path"] for group in document["groups"] for loc in group["locations"]
             if loc["status"] == "measured"]
    veldan_bytes = document["bytes"]
    tools = {"veldan": [veldan, "ai", "--json"], "du": ["du", "-s", "-B1"] + paths}
    _, du_out = timed(tools["du"], env)  # warms the cache a second time
    du_bytes = sum(int(line.split("\t")[0]) for line in du_out.decode().splitlines())
    walls = {name: [] for name in tools}
    print(f"load before: {load()}  ({os.cpu_count()} cores)")
    for index in range(rounds):
        order = ["veldan", "du"] if index % 2 == 0 else ["du", "veldan"]
        for name in order:
            walls[name].append(timed(tools[name], env)[0])
    print(f"load after:  {load()}")
    print(f"{len(paths)} locations; veldan {veldan_bytes:,} bytes of files, "
          f"du {du_bytes:,} bytes with folders")
    medians = {name: statistics.median(values) for name, values in walls.items()}
    for name in tools:
        runs = " ".join(f"{w:.3f}" for w in walls[name])
        print(f"{name:7s} median {medians[name]:.3f} s   runs: {runs}")
    print(f"ratio veldan/du: {medians['veldan'] / medians['du']:.2f}")


if __name__ == "__main__":
    main()
