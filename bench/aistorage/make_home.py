#!/usr/bin/env python3
"""Builds the home folder of the AI storage benchmark: about 5 GB of model files
(allocated with fallocate, so every tool sees the same allocated size without 5 GB being
written) and 200,000 small files in the tools' caches, logs and conversations.

  make_home.py HOME
"""
import os
import random
import sys

GB = 1_000_000_000

MODELS = [  # (path under the home, bytes)
    (".ollama/models/blobs/sha256-llama", 2 * GB),
    (".ollama/models/blobs/sha256-qwen", 1 * GB),
    (".lmstudio/models/lmstudio-community/gemma/gemma-q4.gguf", int(1.5 * GB)),
    (".cache/huggingface/hub/models--org--small/blobs/5f1e", int(0.5 * GB)),
]

SMALL = [  # (folder under the home, files, files per subfolder)
    (".cache/Cursor/Cache/Cache_Data", 50_000, 1000),
    (".cache/huggingface/xet/chunk-cache", 40_000, 500),
    (".claude/projects", 25_000, 250),
    (".cache/ollama", 20_000, 2000),
    (".claude/paste-cache", 15_000, 5000),
    (".codex/sessions/2026", 15_000, 300),
    (".codex/cache", 10_000, 1000),
    (".config/Cursor/logs", 8_000, 400),
    (".config/Cursor/User/workspaceStorage", 7_000, 70),
    (".lmstudio/.internal", 5_000, 500),
    (".ollama/logs", 2_000, 2000),
    (".claude/telemetry", 3_000, 3000),
]


def allocate(path, size):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    try:
        os.posix_fallocate(fd, 0, size)
    finally:
        os.close(fd)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    home = sys.argv[1]
    random.seed(7)
    for relative, size in MODELS:
        allocate(os.path.join(home, relative), size)
    snapshot = os.path.join(home, ".cache/huggingface/hub/models--org--small/snapshots/main")
    os.makedirs(snapshot, exist_ok=True)
    if not os.path.lexists(os.path.join(snapshot, "model.safetensors")):
        os.symlink("../../blobs/5f1e", os.path.join(snapshot, "model.safetensors"))
    total = 0
    for folder, count, per_folder in SMALL:
        for index in range(count):
            sub = os.path.join(home, folder, "d%04d" % (index // per_folder))
            if index % per_folder == 0:
                os.makedirs(sub, exist_ok=True)
            with open(os.path.join(sub, "f%06d" % index), "wb") as out:
                out.write(b"x" * random.randint(0, 6000))
        total += count
    print(f"{len(MODELS)} model files, {total} small files in {home}")


if __name__ == "__main__":
    main()
