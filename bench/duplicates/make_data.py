#!/usr/bin/env python3
"""Builds a deterministic data set for the duplicate finder benchmark.

  make_data.py OUT [SCALE]
  make_data.py OUT large

At SCALE 1 (the default): about 2,000 files of 1 MB to 20 MB (about 21 GB), of which
30% are copies in groups of two to four; 40 pairs of same-size files that differ in one
byte in the middle (half under 16 MiB, where only a whole-file hash tells them apart,
half from 16 MiB, where a middle sample does); 20 pairs of same-size files that differ
from their first byte; and 20,000 small files (up to 64 KB, some of them copies, plus
pairs of identical 999,999-byte files that every tool must ignore). SCALE 0.1 gives a
tenth of everything for quick runs.

Files whose size no other file has are never read by any duplicate finder (every tool
compares sizes first), so they are written sparse: they cost the walk what any file
costs, but take no disk space, which keeps the full set at about 8 GB on disk instead of
21 GB. Their sizes are kept unique so that their equal (zero) bytes never match.

The large set ("large") is 48 files of 64 MiB (3.2 GB), all of one size: 12 pairs of
copies and 12 pairs that differ in a single byte a quarter of the way in, where no sample
of any tool looks, so every tool must read every byte of every file.

The same arguments always give the same names, sizes and bytes (fixed seeds). There are
no hidden files, links or packages, so every tool sees the same files.
"""
import os
import random
import sys

MIN_BIG = 1_000_000
MAX_BIG = 20_000_000
MIDDLE_SAMPLE_FLOOR = 16 * 1024 * 1024
POOL_BYTES = 32 * 1024 * 1024
CHUNK = 1024 * 1024


class Contents:
    """File contents drawn from one random pool: a file's bytes are a 64-byte header
    naming its content id followed by pool slices at offsets that depend on the id, so
    different ids differ from the first byte while writing costs no random generation."""

    def __init__(self, seed):
        self.pool = memoryview(random.Random(seed).randbytes(POOL_BYTES))

    def write(self, path, content_id, size, flip_at=None):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        header = (f"veldan-bench content {content_id:08d} ".encode() * 4)[:64]
        fd = os.open(path, os.O_RDWR | os.O_CREAT | os.O_TRUNC, 0o644)
        try:
            written = 0
            piece = header[:size]
            os.write(fd, piece)
            written += len(piece)
            k = 0
            while written < size:
                length = min(CHUNK, size - written)
                offset = (content_id * 2_654_435_761 + k * 40_503) % (POOL_BYTES - CHUNK)
                os.write(fd, self.pool[offset:offset + length])
                written += length
                k += 1
            if flip_at is not None:
                byte = os.pread(fd, 1, flip_at)
                os.pwrite(fd, bytes([byte[0] ^ 0x5A]), flip_at)
        finally:
            os.close(fd)


def write_sparse(path, size):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.truncate(size)


LARGE_SIZE = 64 * 1024 * 1024
LARGE_PAIRS = 12


def make_large(out, contents):
    for pair in range(LARGE_PAIRS):
        content_id = 1 + pair
        for side in ("a", "b"):
            contents.write(os.path.join(out, "copies", f"copy{pair:02d}-{side}.bin"), content_id,
                           LARGE_SIZE)
    for pair in range(LARGE_PAIRS):
        content_id = 1 + LARGE_PAIRS + pair
        for side, flip in (("a", None), ("b", LARGE_SIZE // 4 + 12_345)):
            contents.write(os.path.join(out, "near", f"near{pair:02d}-{side}.bin"), content_id,
                           LARGE_SIZE, flip_at=flip)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    out = sys.argv[1]
    if len(sys.argv) > 2 and sys.argv[2] == "large":
        make_large(out, Contents(7))
        return
    scale = float(sys.argv[2]) if len(sys.argv) > 2 else 1.0
    rng = random.Random(20261121)
    contents = Contents(7)
    big_total = round(2000 * scale)
    middle_pairs = max(2, round(40 * scale))
    collision_pairs = max(1, round(20 * scale))
    small_total = round(20000 * scale)
    folders = [os.path.join(out, "big", f"set{a:02d}", f"part{b}") for a in range(25) for b in range(4)]

    def place(name):
        return os.path.join(rng.choice(folders), name)

    used_sizes = set()

    def fresh_size(low=MIN_BIG, high=MAX_BIG):
        while True:
            size = rng.randint(low, high)
            if size not in used_sizes:
                used_sizes.add(size)
                return size

    next_id = 1
    files = 0
    # Copies: groups of two to four, 30% of the big files.
    target = round(0.30 * big_total)
    copies = 0
    while copies < target:
        count = min(rng.randint(2, 4), max(2, target - copies))
        size = fresh_size()
        for copy in range(count):
            contents.write(place(f"copy{next_id:05d}-{copy}.bin"), next_id, size)
        next_id += 1
        copies += count
    files += copies
    # Same size, one byte apart in the middle.
    for pair in range(middle_pairs):
        if pair % 2 == 0:
            size = fresh_size(2_000_000, MIDDLE_SAMPLE_FLOOR - 1)
        else:
            size = fresh_size(MIDDLE_SAMPLE_FLOOR, MAX_BIG)
        contents.write(place(f"middle{next_id:05d}-a.bin"), next_id, size)
        contents.write(place(f"middle{next_id:05d}-b.bin"), next_id, size, flip_at=size // 2)
        next_id += 1
    files += 2 * middle_pairs
    # Same size, different from the start.
    for _ in range(collision_pairs):
        size = fresh_size()
        contents.write(place(f"same-size{next_id:05d}.bin"), next_id, size)
        contents.write(place(f"same-size{next_id + 1:05d}.bin"), next_id + 1, size)
        next_id += 2
    files += 2 * collision_pairs
    # Everything else is unique.
    while files < big_total:
        write_sparse(place(f"unique{next_id:05d}.bin"), fresh_size())
        next_id += 1
        files += 1
    # Small files, a tenth of them copies, and identical pairs just under 1,000,000 bytes.
    small_folders = [os.path.join(out, "small", f"s{a:03d}", f"t{b}") for a in range(200) for b in range(5)]
    for i in range(small_total):
        content_id = next_id + (i // 2 if i % 10 == 0 else i)
        contents.write(os.path.join(rng.choice(small_folders), f"note{i:05d}.txt"), content_id,
                       rng.randint(100, 64_000))
    next_id += small_total
    for pair in range(max(1, round(10 * scale))):
        for side in ("a", "b"):
            contents.write(os.path.join(out, "small", f"almost{pair:02d}-{side}.bin"), next_id, 999_999)
        next_id += 1


if __name__ == "__main__":
    main()
