#!/usr/bin/env python3
"""Times `veldan duplicates --json` against jdupes, rdfind, fdupes and rmlint on the same
data, warm cache, side by side in one run, and prints medians, ratios and peak memory.
Every tool is limited to files of 1,000,000 bytes or more, and every tool must report
exactly the same groups as veldan.

On a shared machine a run is retried (up to four times) when other programs used the
processors meanwhile or data came from the disk instead of the cache, so that the
figures compare the tools rather than the neighbours.

  compare.py VELDAN_BINARY DATA_FOLDER [ROUNDS]
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
    """Wall seconds, CPU seconds, peak resident kilobytes, whether the run was disturbed
    (other programs busy, or data read from disk rather than the cache), and standard
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
    foreign = (busy_after - busy_before) - cpu
    disturbed = foreign > 0.05 * wall * os.cpu_count() or read_after - read_before > 64 * 1024
    output = result.stdout.decode("utf-8", errors="surrogateescape") if capture else ""
    return wall, cpu, int(peak), disturbed, output


def run_undisturbed(argv, retries=4):
    """A run on a quiet machine with a warm cache, retried while others disturb it; the
    last attempt counts anyway and is flagged."""
    for attempt in range(retries + 1):
        wall, cpu, peak, disturbed, _ = run_once(argv)
        if not disturbed:
            return wall, cpu, peak, False
    return wall, cpu, peak, True


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    veldan, data = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    scratch = tempfile.mkdtemp(prefix="veldan-bench-dupes-")
    os.chdir(scratch)  # rdfind and rmlint write nothing elsewhere
    listed = tools(veldan, data, scratch)

    # One captured run each warms the cache and proves that all tools agree.
    expected = None
    for name, argv in listed:
        output = run_once(argv, capture=True)[-1]
        found = groups_of(name, output, scratch)
        if expected is None:
            expected = found
            print(f"veldan found {len(found)} groups, {sum(len(g) for g in found)} files")
        elif found != expected:
            missing, extra = expected - found, found - expected
            raise SystemExit(f"{name} disagrees: {len(missing)} groups missing, {len(extra)} extra, "
                             f"e.g. {sorted(next(iter(missing or extra)))}")
        else:
            print(f"{name} found the same groups")

    walls = {name: [] for name, _ in listed}
    cpus = {name: [] for name, _ in listed}
    peaks = {name: [] for name, _ in listed}
    disturbed_runs = 0
    for round_index in range(rounds):
        # Rotate the order so no tool always runs right after the same one.
        order = listed[round_index % len(listed):] + listed[:round_index % len(listed)]
        for name, argv in order:
            wall, cpu, peak, disturbed = run_undisturbed(argv)
            walls[name].append(wall)
            cpus[name].append(cpu)
            peaks[name].append(peak)
            disturbed_runs += disturbed
    medians = {name: statistics.median(walls[name]) for name in walls}

    print(f"\n{rounds} rounds per tool, warm cache; median wall and CPU time, largest peak memory")
    if disturbed_runs:
        print(f"  ({disturbed_runs} runs stayed disturbed by other programs or disk reads after retries)")
    mine = medians["veldan"]
    for name in walls:
        print(f"  {name:7s} {medians[name] * 1000:8.0f} ms wall {statistics.median(cpus[name]) * 1000:8.0f} ms CPU"
              f" {max(peaks[name]) / 1024:7.1f} MB peak   veldan/{name} = {mine / medians[name]:5.2f}")
    if "jdupes" in medians:
        print(f"  target: veldan/jdupes <= 1.25       measured {mine / medians['jdupes']:.2f}")
    for peer in ("rdfind", "rmlint", "fdupes"):
        if peer in medians:
            print(f"  target: {peer}/veldan >= 2          measured {medians[peer] / mine:.2f}")
    print(f"  target: veldan peak memory < 30 MB  measured {max(peaks['veldan']) / 1024:.1f} MB")
    shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    main()
