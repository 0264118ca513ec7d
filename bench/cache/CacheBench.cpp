// Saving and loading saved maps:
//  - the snapshot of a real scan of 300,000 files (a generated tree of 15,000 folders),
//  - a synthetic snapshot whose saved map is just under the 64 MiB limit.
// Loading is what the user waits for when an earlier map is shown; it must stay well under
// 50 ms for a typical map.
//
//   cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELDAN_BENCH=ON
//   cmake --build build-bench --target veldan_cache_bench &&
//   build-bench/bench/cache/veldan_cache_bench

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include "cache/RootIdentity.hpp"
#include "cache/ScanArchive.hpp"
#include "cache/ScanCache.hpp"
#include "platform/FileContents.hpp"
#include "platform/FileWatcher.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "scan/DiskScanner.hpp"

namespace {

using namespace veldan;

// A temporary folder of bench data, removed at exit.
class Workspace {
public:
    Workspace() {
        std::string pattern = platform::temporaryFolder() + "/veldan-cache-bench-XXXXXX";
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
        path_ = pattern;
    }
    ~Workspace() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

Workspace& workspace() {
    static Workspace shared;
    return shared;
}

size_t countNodes(const DiskNode& node) {
    size_t count = 1;
    for (const auto& child : node.children)
        count += countNodes(child);
    return count;
}

// 30 x 25 x 20 folders of 20 files each: 300,000 files, scanned for real.
struct RealScan {
    std::string scope;
    ScanSnapshot snapshot;
    RealScan() {
        scope = workspace().path() + "/tree";
        for (int a = 0; a < 30; ++a) {
            for (int b = 0; b < 25; ++b) {
                for (int c = 0; c < 20; ++c) {
                    const std::string folder = scope + "/project-" + std::to_string(a) +
                                               "/module-" + std::to_string(b) + "/package-" +
                                               std::to_string(c);
                    platform::createFolders(folder, 0755);
                    for (int f = 0; f < 20; ++f) {
                        const std::string file =
                            folder + "/source-file-" + std::to_string(f) + ".txt";
                        const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
                        // Sizes vary so the kept children differ from folder to folder.
                        const std::string data(size_t((a * 7 + b * 5 + c * 3 + f) % 9) * 900, 'x');
                        if (fd < 0 || ::write(fd, data.data(), data.size()) < 0) std::abort();
                        ::close(fd);
                    }
                }
            }
        }
        ScanCancellation cancellation;
        auto outcome = DiskScanner().scan(scope, cancellation);
        if (!outcome) std::abort();
        snapshot = std::move(outcome->snapshot);
    }
};

const RealScan& realScan() {
    static RealScan scan;
    return scan;
}

// Folders of 17 files and an "Other" summary, nested like a scan, until the saved map is
// just under the limit.
struct NearLimit {
    std::string scope;
    ScanSnapshot snapshot;
    NearLimit() {
        scope = workspace().path() + "/synthetic";
        platform::createFolders(scope, 0755);
        snapshot.root = DiskNode{scope, "synthetic", 0, DiskCategory::files, {}, true};
        snapshot.finishedAt = std::chrono::system_clock::now();
        const RootIdentity identity = *RootIdentity::read(scope);
        const auto encodedSize = [&] {
            auto encoded = ScanArchive::encode(scope, identity, snapshot, SIZE_MAX);
            return encoded->size();
        };
        addFolders(1000);
        // Grow to the size one folder takes times what still fits, then trim to the limit.
        const size_t target = ScanCache::maximumFileBytes - 1'000'000;
        addFolders(target / (encodedSize() / 1000) - 1000);
        while (encodedSize() > target)
            snapshot.root.children.resize(snapshot.root.children.size() * 99 / 100);
    }

    void addFolders(size_t count) {
        for (size_t i = 0; i < count; ++i) {
            const size_t index = snapshot.root.children.size();
            DiskNode folder{scope + "/Users/someone/Library/Application Support/Folder-" +
                                std::to_string(index),
                            "Folder-" + std::to_string(index),
                            0,
                            DiskCategory::files,
                            {},
                            true};
            for (int f = 0; f < 17; ++f) {
                const std::string name = "a-file-with-a-longer-name-" + std::to_string(f) + ".dat";
                folder.children.push_back(DiskNode{folder.path + "/" + name, name, 1000 + f});
            }
            folder.children.push_back(DiskNode::summary(folder.path, 10, {}));
            snapshot.root.children.push_back(std::move(folder));
        }
    }
};

const NearLimit& nearLimit() {
    static NearLimit snapshot;
    return snapshot;
}

void encodeBenchmark(benchmark::State& state, const std::string& scope,
                     const ScanSnapshot& snapshot) {
    const RootIdentity identity = *RootIdentity::read(scope);
    size_t bytes = 0;
    for (auto _ : state) {
        auto encoded = ScanArchive::encode(scope, identity, snapshot, ScanCache::maximumFileBytes);
        if (!encoded) state.SkipWithError("too large");
        bytes = encoded ? encoded->size() : 0;
        benchmark::DoNotOptimize(encoded);
    }
    state.counters["fileBytes"] = double(bytes);
    state.counters["nodes"] = double(countNodes(snapshot.root));
}

void saveBenchmark(benchmark::State& state, const std::string& scope,
                   const ScanSnapshot& snapshot) {
    const ScanCache cache(workspace().path() + "/Scans");
    for (auto _ : state) {
        if (cache.saveNow(snapshot, scope) != ScanCache::SaveOutcome::saved)
            state.SkipWithError("save failed");
    }
}

void loadBenchmark(benchmark::State& state, const std::string& scope,
                   const ScanSnapshot& snapshot) {
    const ScanCache cache(workspace().path() + "/Scans");
    if (cache.saveNow(snapshot, scope) != ScanCache::SaveOutcome::saved)
        state.SkipWithError("save failed");
    for (auto _ : state) {
        auto loaded = cache.load(scope);
        if (!loaded) state.SkipWithError("load failed");
        benchmark::DoNotOptimize(loaded);
        // Freeing the map is not part of showing it.
        state.PauseTiming();
        loaded.reset();
        state.ResumeTiming();
    }
}

void BM_Decode300kFileScan(benchmark::State& state) {
    const RootIdentity identity = *RootIdentity::read(realScan().scope);
    const std::string document =
        *ScanArchive::encode(realScan().scope, identity, realScan().snapshot, SIZE_MAX);
    for (auto _ : state) {
        auto decoded = ScanArchive::decode(document);
        benchmark::DoNotOptimize(decoded);
        state.PauseTiming();
        decoded.reset();
        state.ResumeTiming();
    }
}

void BM_Encode300kFileScan(benchmark::State& state) {
    encodeBenchmark(state, realScan().scope, realScan().snapshot);
}
void BM_Save300kFileScan(benchmark::State& state) {
    saveBenchmark(state, realScan().scope, realScan().snapshot);
}
void BM_Load300kFileScan(benchmark::State& state) {
    loadBenchmark(state, realScan().scope, realScan().snapshot);
}
void BM_EncodeNearLimit(benchmark::State& state) {
    encodeBenchmark(state, nearLimit().scope, nearLimit().snapshot);
}
void BM_SaveNearLimit(benchmark::State& state) {
    saveBenchmark(state, nearLimit().scope, nearLimit().snapshot);
}
void BM_LoadNearLimit(benchmark::State& state) {
    loadBenchmark(state, nearLimit().scope, nearLimit().snapshot);
}

// What every scan now costs up front: watching each folder of the tree (15,000 here).
void BM_Watch300kFileTree(benchmark::State& state) {
    const std::string& scope = realScan().scope;
    size_t watches = 0;
    for (auto _ : state) {
        platform::FileWatcher watcher({scope}, {}, [](size_t) {});
        if (!watcher.complete()) state.SkipWithError("incomplete watch");
        watches = watcher.watchCount();
    }
    state.counters["watches"] = double(watches);
}

BENCHMARK(BM_Watch300kFileTree)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode300kFileScan)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Encode300kFileScan)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save300kFileScan)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load300kFileScan)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeNearLimit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveNearLimit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadNearLimit)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
