#!/usr/bin/env python3
"""Builds the home-folder-like tree that the example map pictures in docs/ show.

    python3 scripts/make-map-demo.py FOLDER [--scale S]

The tree is always the same (no randomness), so the pictures can be made again. Files
get their space with posix_fallocate: allocated on disk without writing data, so
building the full-size tree (about 55 GB) takes a second, and --scale 0.001 makes a
tree of the same shape in about 55 MB. Remove the folder when done.
"""

import argparse
import os
import sys

MB = 1_000_000

# (path, megabytes) of every file; folders are created as needed.
def entries():
    yield from [
        ("Movies/Holiday 2023 (4K).mov", 4200),
        ("Movies/Conference talk.mp4", 1300),
        ("Movies/Screen recordings/Demo take 1.mov", 420),
        ("Movies/Screen recordings/Demo take 2.mov", 380),
        ("Documents/Taxes/2023 receipts.pdf", 48),
        ("Documents/Thesis/thesis-final-v7.pdf", 96),
        ("Documents/Thesis/figures.zip", 310),
        ("Documents/Scans & contracts <signed>.pdf", 22),
        ("Downloads/ubuntu-24.04-desktop-amd64.iso", 6100),
        ("Downloads/Xcode_15.4.xip", 3400),
        ("Downloads/podcast-episode-112.mp3", 85),
        (".cache/huggingface/hub/models--meta-llama--Llama-3-8B/model.safetensors", 5200),
        (".cache/huggingface/hub/models--openai--whisper-large-v3/model.safetensors", 3100),
        (".cache/huggingface/hub/models--BAAI--bge-small/model.safetensors", 130),
        (".cache/pip/http-v2/wheels.bin", 640),
        ("Library/Caches/com.spotify.client/Data.bin", 1900),
        ("Library/Caches/Google/Chrome/Cache.bin", 1100),
        ("Library/Application Support/Slack/IndexedDB.bin", 700),
        ("Library/Application Support/Code/CachedData.bin", 450),
        ("Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw", 2300),
        ("Docker/volumes/postgres-data/base.bin", 2600),
        ("Docker/volumes/redis-data/dump.rdb", 400),
        ("Docker/images/build-cache.tar", 1700),
        ("models/qwen2.5-coder-14b-q4.gguf", 4300),
        ("models/mistral-7b-instruct-q5.gguf", 2700),
        ("models/nomic-embed-text.gguf", 280),
        ("Projects/webapp/node_modules/next/dist.bin", 380),
        ("Projects/webapp/node_modules/@swc/core-darwin-arm64.bin", 190),
        ("Projects/webapp/node_modules/typescript/lib.bin", 68),
        ("Projects/webapp/node_modules/esbuild/bin.bin", 24),
        ("Projects/webapp/.next/cache/webpack.bin", 520),
        ("Projects/webapp/src/app.tsx", 1),
        ("Projects/webapp/public/hero.png", 12),
        ("Projects/ml-lab/models/resnet50.onnx", 98),
        ("Projects/ml-lab/data/train.parquet", 1500),
        ("Projects/ml-lab/data/valid.parquet", 260),
        ("Projects/ml-lab/.venv/lib/torch.bin", 1700),
        ("Projects/ios-app/build/Release/App.app.bin", 640),
        ("Projects/ios-app/Sources/App.swift", 1),
        (".claude/projects/history.jsonl", 160),
        (".codex/sessions/log.jsonl", 90),
    ]
    # A folder of many photos: more than a folder keeps, so the smallest are grouped.
    for month in range(1, 13):
        for day in range(1, 4):
            yield (f"Pictures/2024/{month:02d}/IMG_{month:02d}{day:02d}.heic",
                   18 + (month * 7 + day * 5) % 23)
    for index in range(1, 31):
        yield (f"Music/Album {index:02d}/tracks.flac", 40 + (index * 37) % 260)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder")
    parser.add_argument("--scale", type=float, default=1.0)
    options = parser.parse_args()
    if os.path.exists(options.folder) and os.listdir(options.folder):
        sys.exit(f"{options.folder} is not empty; give a new folder.")
    for path, megabytes in entries():
        full = os.path.join(options.folder, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        size = max(int(megabytes * MB * options.scale), 1)
        with open(full, "wb") as handle:
            os.posix_fallocate(handle.fileno(), 0, size)


if __name__ == "__main__":
    main()
