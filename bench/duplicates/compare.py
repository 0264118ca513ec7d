#!/usr/bin/env python3
"""Times `veldan duplicates --json` against jdupes, rdfind, fdupes and rmlint on the same
data sets, warm cache, interleaved in one run, and prints medians, ratios and peak memory
per set and the ratios of every set side by side. Every tool is limited to files of
1,000,000 bytes or more, and every tool must report exactly the same groups as veldan.

The tools take turns within every round (the order rotates), so load from other programs
falls on all of them alike; the report says how many processors other programs kept busy
meanwhile. With VELDAN_BENCH_RETRIES=N a run disturbed by other programs (more than 5% of
the processors) or by reads from disk is repeated up to N times (default 0: on a shared
machine every run is disturbed, and interleaving with medians is the fairer measure).
Reads from disk always count as disturbed, and are flagged.

  compare.py VELDAN_BINARY ROUNDS NAME=DATA_FOLDER [NAME=DATA_FOLDER ...]
"""
import collections
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

MINIMUM = "1000000"


def tools(veldan, data, scratch):
    results = os.path.join(scratch, "rdfind-results.txt")
    listed = [
        ("veldan", [veldan, "duplicates", "--json", data]),
        ("jdupes", ["jdupes", "-r", "-q", "-X", f"size+=:{MINIMUM}", data]),
        ("rdfind", ["rdfind", "-minsize", MINIMUM, "-outputname", results, data]),
        ("fdupes", ["fdupes", "-r", "-q", "-G", MINIMUM, data]),
        ("rmlint", ["rmlint", "-T", "df", "--size", MINIMUM, "-o", "fdupes:stdout", data]),
    ]
    return [(name, argv) for name, argv in listed if shutil.which(argv[0]) or os.path.exists(argv[0])]


def blocks(text):
    """Groups printed one path per line, separated by blank lines (fdupes style)."""
    groups, current = set(), []
    for line in text.split("\n") + [""]:
        if line.strip():
            current.append(line)
        elif current:
            groups.add(frozenset(current))
            current = []
    return groups


def rdfind_groups(path):
    """results.txt: 'duptype id depth size device inode priority name'; a group shares |id|."""
    members = collections.defaultdict(set)
    with open(path, encoding="utf-8", errors="surrogateescape") as results:
        for line in results:
            if line.startswith("#") or not line.strip():
                continue
            fields = line.rstrip("\n").split(" ", 7)
            members[abs(int(fields[1]))].add(fields[7])
    return {frozenset(paths) for paths in members.values() if len(paths) > 1}


def groups_of(name, output, scratch):
    if name == "veldan":
        document = json.loads(output)
        return {frozenset(f["path"] for f in g["files"]) for g in document["groups"]}
    if name == "rdfind":
        return rdfind_groups(os.path.join(scratch, "rdfind-results.txt"))
    return blocks(output)


def machine_counters():
    """Busy CPU seconds of the whole machine and kilobytes read from disks so far."""
    with open("/proc/stat") as stat:
        ticks = [int(v) for v in stat.readline().split()[1:]]
    busy = (sum(ticks) - ticks[3] - ticks[4]) / os.sysconf("SC_CLK_TCK")
    with open("/proc/vmstat") as vmstat:
        read_kb = next(int(line.split()[1]) for line in vmstat if line.startswith("pgpgin "))
    return busy, read_kb


def run_once(argv, capture=False):
    """Wall seconds, CPU seconds, peak resident kilobytes, processors kept busy by other
    programs meanwhile, whether data came from disk rather than the cache, and standard
    output when asked."""
    busy_before, read_before = machine_counters()
    started = time.perf_counter()
    result = subprocess.run(["/usr/bin/time", "-f", "%U %S %M"] + argv,
                            stdout=subprocess.PIPE if capture else subprocess.DEVNULL,
                            stderr=subprocess.PIPE, check=False)
    wall = time.perf_counter() - started
    busy_after, read_after = machine_counters()
    if result.returncode != 0:
        raise SystemExit(f"{argv[0]} failed: {result.stderr.decode(errors='replace')}")
    user, system, peak = result.stderr.decode().strip().splitlines()[-1].split()
    cpu = float(user) + float(system)
    others = max(0.0, (busy_after - busy_before) - cpu) / wall
    from_disk = read_after - read_before > 64 * 1024
    output = result.stdout.decode("utf-8", errors="surrogateescape") if capture else ""
    return wall, cpu, int(peak), others, from_disk, output


def run_measured(argv, retries):
    """One measured run, repeated up to `retries` times while other programs or disk reads
    disturb it; the last attempt counts anyway."""
    for attempt in range(retries + 1):
        wall, cpu, peak, others, from_disk, _ = run_once(argv)
        if not from_disk and others <= 0.05 * os.cpu_count():
            break
    return wall, cpu, peak, others, from_disk


def measure_set(veldan, data, rounds, retries, scratch):
    """Medians of one data set: {tool: (wall, cpu, peak)}, the median processors busy with
    other programs, and the number of runs that read from disk."""
    listed = tools(veldan, data, scratch)
    # One captured run each warms the cache and proves that all tools agree.
    expected = None
    for name, argv in listed:
        output = run_once(argv, capture=True)[-1]
        found = groups_of(name, output, scratch)
        if expected is None:
            expected = found
            print(f"  veldan found {len(found)} groups, {sum(len(g) for g in found)} files")
        elif found != expected:
            missing, extra = expected - found, found - expected
            raise SystemExit(f"{name} disagrees: {len(missing)} groups missing, {len(extra)} extra, "
                             f"e.g. {sorted(next(iter(missing or extra)))}")
        else:
            print(f"  {name} found the same groups")

    walls = {name: [] for name, _ in listed}
    cpus = {name: [] for name, _ in listed}
    peaks = {name: [] for name, _ in listed}
    others, disk_runs = [], 0
    for round_index in range(rounds):
        # Rotate the order so no tool always runs right after the same one.
        order = listed[round_index % len(listed):] + listed[:round_index % len(listed)]
        for name, argv in order:
            wall, cpu, peak, busy, from_disk = run_measured(argv, retries)
            walls[name].append(wall)
            cpus[name].append(cpu)
            peaks[name].append(peak)
            others.append(busy)
            disk_runs += from_disk
    medians = {name: (statistics.median(walls[name]), statistics.median(cpus[name]), max(peaks[name]))
               for name in walls}
    return medians, statistics.median(others), disk_runs


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    veldan = os.path.abspath(sys.argv[1])
    rounds = int(sys.argv[2])
    sets = [(spec.split("=", 1)[0], os.path.abspath(spec.split("=", 1)[1])) for spec in sys.argv[3:]]
    retries = int(os.environ.get("VELDAN_BENCH_RETRIES", "0"))
    scratch = tempfile.mkdtemp(prefix="veldan-bench-dupes-")
    os.chdir(scratch)  # rdfind and rmlint write nothing elsewhere

    results = {}
    for set_name, data in sets:
        print(f"set {set_name}: {data}")
        medians, others, disk_runs = measure_set(veldan, data, rounds, retries, scratch)
        results[set_name] = medians
        mine = medians["veldan"][0]
        print(f"  {rounds} rounds per tool, interleaved, warm cache; median wall and CPU time, "
              f"largest peak memory")
        print(f"  other programs kept {others:.2f} of {os.cpu_count()} processors busy (median over runs)")
        if disk_runs:
            print(f"  ({disk_runs} runs read from disk: the cache did not hold the data)")
        for name, (wall, cpu, peak) in medians.items():
            print(f"  {name:7s} {wall * 1000:8.0f} ms wall {cpu * 1000:8.0f} ms CPU"
                  f" {peak / 1024:7.1f} MB peak   veldan/{name} = {mine / wall:5.2f}")

    peers = [name for name in next(iter(results.values())) if name != "veldan"]
    print("\nveldan/peer, median wall time (below 1 is faster than the peer)")
    print(f"  {'set':10s} {'veldan ms':>10s}" + "".join(f" {name:>8s}" for name in peers))
    for set_name, medians in results.items():
        mine = medians["veldan"][0]
        print(f"  {set_name:10s} {mine * 1000:10.0f}" +
              "".join(f" {mine / medians[name][0]:8.2f}" if name in medians else f" {'-':>8s}"
                      for name in peers))
    for set_name, medians in results.items():
        if "jdupes" in medians:
            print(f"  target: veldan/jdupes <= 1.0 on {set_name:8s} measured "
                  f"{medians['veldan'][0] / medians['jdupes'][0]:.2f}")
    print(f"  target: veldan peak memory < 30 MB      measured "
          f"{max(m['veldan'][2] for m in results.values()) / 1024:.1f} MB")
    shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    main()
