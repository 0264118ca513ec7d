// The layouts run on every redraw of the map: the usual folder (17 kept children, two
// nested levels) must lay out well under 50 microseconds; 10,000 flat children show how
// the cost grows.
//
//   veldan_layout_bench --benchmark_repetitions=10 --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "layout/OrbitLayout.hpp"
#include "layout/TreemapLayout.hpp"

namespace veldan {
namespace {

// Shares falling off like real folders' children: a few large items and a long tail.
double share(size_t index) {
    return 1 / std::pow(static_cast<double>(index + 1), 1.3);
}

// `children` items per folder, `depth` levels of folders above the files; the subtree of
// the i-th child weighs share(i) of its parent, so every folder's bytes are its
// children's sum and children stay in the scanner's order (bytes descending).
DiskNode folder(const std::string& path, size_t children, int depth, double bytes) {
    DiskNode node;
    node.path = path;
    node.name = path.substr(path.rfind('/') + 1);
    node.isDirectory = true;
    double total = 0;
    for (size_t i = 0; i < children; ++i)
        total += share(i);
    for (size_t i = 0; i < children; ++i) {
        const std::string childPath = path + "/item" + std::to_string(i);
        const double childBytes = bytes * share(i) / total;
        if (depth > 0) {
            node.children.push_back(folder(childPath, children, depth - 1, childBytes));
        } else {
            DiskNode file;
            file.path = childPath;
            file.name = "item" + std::to_string(i);
            file.bytes = static_cast<int64_t>(childBytes) + 4096;
            node.children.push_back(std::move(file));
        }
        node.bytes += node.children.back().bytes;
    }
    return node;
}

void treemapOfARealFolder(benchmark::State& state) {
    const DiskNode root = folder("/Users/me", DiskNode::maximumKeptChildren, 3, 5e11);
    size_t tiles = 0;
    for (auto _ : state) {
        auto result = TreemapLayout::tiles(root, 1200, 800);
        tiles = result.size();
        benchmark::DoNotOptimize(result.data());
    }
    state.counters["tiles"] = static_cast<double>(tiles);
}
BENCHMARK(treemapOfARealFolder)->Unit(benchmark::kMicrosecond);

void treemapOf10000FlatChildren(benchmark::State& state) {
    const DiskNode root = folder("/Users/me/flat", 10000, 0, 5e11);
    size_t tiles = 0;
    for (auto _ : state) {
        auto result = TreemapLayout::tiles(root, 1200, 800);
        tiles = result.size();
        benchmark::DoNotOptimize(result.data());
    }
    state.counters["tiles"] = static_cast<double>(tiles);
}
BENCHMARK(treemapOf10000FlatChildren)->Unit(benchmark::kMicrosecond);

void orbitOf10000FlatChildren(benchmark::State& state) {
    const DiskNode root = folder("/Users/me/flat", 10000, 0, 5e11);
    for (auto _ : state) {
        auto items = OrbitLayout::items(root.children);
        benchmark::DoNotOptimize(items.data());
    }
}
BENCHMARK(orbitOf10000FlatChildren)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace veldan

BENCHMARK_MAIN();
