// A resize or a new tree re-lays out the map and paints it again: at 1600 x 1000 a
// three-level treemap of real-looking folders must take well under 8 ms, so that
// dragging the window edge and the live map of a scan stay smooth.
//
//   QT_QPA_PLATFORM=offscreen veldan_map_repaint_bench --benchmark_repetitions=10 \
//       --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>

#include <QApplication>
#include <cmath>
#include <memory>

#include "gui/MapContent.hpp"
#include "gui/OrbitView.hpp"
#include "gui/TreemapView.hpp"

namespace veldan {
namespace {

double share(size_t index) {
    return 1 / std::pow(static_cast<double>(index + 1), 1.3);
}

// 17 kept children a folder, three levels of folders above the files, with a long tail
// of shares like real folders have.
DiskNode folder(const std::string& path, int depth, double bytes) {
    DiskNode node;
    node.path = path;
    node.name = path.substr(path.rfind('/') + 1);
    node.isDirectory = true;
    double total = 0;
    for (size_t i = 0; i < DiskNode::maximumKeptChildren; ++i)
        total += share(i);
    for (size_t i = 0; i < DiskNode::maximumKeptChildren; ++i) {
        const std::string childPath = path + "/folder " + std::to_string(i);
        const double childBytes = bytes * share(i) / total;
        if (depth > 0) {
            node.children.push_back(folder(childPath, depth - 1, childBytes));
        } else {
            DiskNode file;
            file.path = childPath + ".bin";
            file.name = "file " + std::to_string(i) + ".bin";
            file.bytes = static_cast<int64_t>(childBytes) + 4096;
            node.children.push_back(std::move(file));
        }
        node.children.back().category = allDiskCategories[i % 7];
        node.bytes += node.children.back().bytes;
    }
    return node;
}

template <class View>
void relayoutAndRepaint(benchmark::State& state) {
    auto tree = std::make_shared<const DiskNode>(folder("/home/ana", 3, 5e11));
    View view;
    view.resize(1600, 1000);
    QPixmap target(view.size());
    size_t round = 0;
    for (auto _ : state) {
        // A new content each round: nothing laid out or painted before is reused.
        view.setContent(gui::MapContent(tree, tree.get(), ++round % 2 == 0));
        view.render(&target);
    }
}

void treemap(benchmark::State& state) {
    relayoutAndRepaint<gui::TreemapView>(state);
}
void orbit(benchmark::State& state) {
    relayoutAndRepaint<gui::OrbitView>(state);
}
BENCHMARK(treemap)->Unit(benchmark::kMillisecond);
BENCHMARK(orbit)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veldan

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
