// The listing of a tree of 100,000 empty files in 1,000 folders, everything in the system's cache, beside a listing by
// the standard library that also asks for size and time of each file.

#include "platform/build_host/file_tree.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

constexpr int folders = 1000, files_a_folder = 100;

// Made once a process, below the system's folder for temporary files, and removed at its end.
fs::path const &tree_on_disk()
{
    struct TREE {
        TREE()
        {
            for (int i = 0; i < folders; ++i) {
                fs::path const folder = root / "raw_data" / ("set_" + std::to_string(i));
                fs::create_directories(folder);
                for (int k = 0; k < files_a_folder; ++k)
                    std::ofstream(folder / ("model_" + std::to_string(k) + ".vx2"));
            }
        }
        ~TREE() { fs::remove_all(root); }
        fs::path root = fs::temp_directory_path() / "mox_scan_benchmark";
    };
    static TREE const tree;
    return tree.root;
}

}  // namespace

static void ScanTree(benchmark::State &state)
{
    TREE_ROOTS const roots = usual_roots(QString::fromStdString(tree_on_disk().string()));
    for (auto _ : state) {
        FILE_TREE tree;
        QStringList faults;
        tree.scan(roots, faults);
        if (tree.table.size() != folders * files_a_folder || !faults.isEmpty())
            state.SkipWithError("wrong listing");
    }
    state.SetItemsProcessed(state.iterations() * folders * files_a_folder);
}
BENCHMARK(ScanTree)->Unit(benchmark::kMillisecond);

static void StandardListing(benchmark::State &state)
{
    fs::path const root = tree_on_disk() / "raw_data";
    for (auto _ : state) {
        std::uintmax_t files = 0;
        for (fs::directory_entry const &entry : fs::recursive_directory_iterator(root)) {
            if (!entry.is_regular_file())
                continue;
            benchmark::DoNotOptimize(entry.file_size());
            benchmark::DoNotOptimize(entry.last_write_time());
            ++files;
        }
        if (files != folders * files_a_folder)
            state.SkipWithError("wrong listing");
    }
    state.SetItemsProcessed(state.iterations() * folders * files_a_folder);
}
BENCHMARK(StandardListing)->Unit(benchmark::kMillisecond);
