#include "MainThread.h"
#include "Scanning/FileScanner.h"
#include "Shell/ContentView.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

namespace tallyroom {

namespace {

namespace fs = std::filesystem;

constexpr int projects = 40;
constexpr int filesPerFolder = 100;

/// `count` small files in folders of a hundred; every tenth is a copy of the first of its name elsewhere.
void fill(const fs::path& folder, int count, const std::string& salt)
{
    for (int file = 0; file < count; ++file) {
        const auto place = folder / std::to_string(file / filesPerFolder);
        if (file % filesPerFolder == 0) {
            fs::create_directories(place);
        }
        std::ofstream{place / (std::to_string(file) + ".js")} << (file % 10 == 0 ? std::string{} : salt)
                                                              << file;
    }
}

/// A cache that was written to just now is taken to be in use.
void dateBack(const fs::path& folder)
{
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours{1000};
    for (const fs::directory_entry& item : fs::recursive_directory_iterator{folder}) {
        fs::last_write_time(item, longAgo);
    }
    fs::last_write_time(folder, longAgo);
}

/// A home of some 500 000 files: 40 projects with packages, build products and a history, and as many
/// documents again.
void makeHome(const fs::path& home)
{
    for (int project = 0; project < projects; ++project) {
        const std::string name = "projet " + std::to_string(project);
        const fs::path root = home / "Projets" / name;
        fs::create_directories(root);
        std::ofstream{root / "package.json"} << "{}";
        fill(root / "node_modules", 6'000, name);
        fill(root / "dist", 500, name);
        dateBack(root / "dist");
        fill(root / "src", 500, name);
        fill(root / ".git" / "objects", 500, name);
    }
    fill(home / "Documents", 200'000, "document");
}

/// From the press of the button to the first line that proposes something, to the last, and the longest turn
/// of the main thread meanwhile.
void searchHome(benchmark::State& state)
{
    startApplication();
    const QTemporaryDir home{QStringLiteral("/dev/shm/recovery-XXXXXX")};
    makeHome(home.path().toStdString());
    for (auto _ : state) {
        FileScanner::clearCache();
        ContentView window;
        window.show();
        DuplicatesViewModel& duplicates = window.store().duplicates;
        duplicates.setMinimumSize(1);
        RecoveryViewModel& recovery = window.store().dashboard.recovery();
        qint64 first = 0;
        QEventLoop loop;
        QElapsedTimer clock;
        QObject::connect(&recovery, &RecoveryViewModel::changed, &loop, [&] {
            const auto& rows = recovery.rows();
            if (first == 0 && std::ranges::any_of(rows, &RecoveryRow::proposes)) {
                first = clock.elapsed();
            }
            if (!recovery.isSearching() &&
                std::ranges::all_of(rows, [](const RecoveryRow& row) { return row.recovery.isKnown; })) {
                loop.quit();
            }
        });
        const TurnWatch watch;
        clock.start();
        recovery.search(FileUrl{home.path().toStdString()});
        loop.exec();
        state.counters["firstMs"] = static_cast<double>(first);
        state.counters["allMs"] = static_cast<double>(clock.elapsed());
        state.counters["longestTurnMs"] = watch.longestMilliseconds();
    }
}

BENCHMARK(searchHome)->Iterations(2)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace tallyroom
