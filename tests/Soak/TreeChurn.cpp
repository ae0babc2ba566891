#include "Soak/TreeChurn.h"

#include <cstdio>
#include <fcntl.h>
#include <fstream>

namespace tallyroom {

namespace {

constexpr std::array folderNames{"node_modules", ".git", "target", "photos", "a b", "d\xff"};
constexpr std::array fileNames{"a.jpg", "b.zip", "c\n", ".hidden", "copy1", "copy2", "notes.txt"};

std::size_t below(std::size_t count, std::mt19937_64& random)
{
    return std::uniform_int_distribution<std::size_t>{0, count - 1}(random);
}

/// Sizes and contents repeat, so that there are duplicates.
bool writeFile(const std::filesystem::path& path, std::mt19937_64& random)
{
    std::ofstream file{path, std::ios::binary | std::ios::trunc};
    file << std::string(below(4, random) * 30'000, static_cast<char>('a' + below(2, random)));
    return file.good();
}

} // namespace

TreeChurn::TreeChurn(const Folders& folders, std::uint64_t seed)
    : m_folder(folders.changing), m_outside(folders.outside), m_forbidden(folders.forbidden), m_seed(seed),
      m_random(seed), m_thread([this](const std::stop_token& stop) { run(stop); })
{}

std::filesystem::path TreeChurn::folderBelow(const std::filesystem::path& folder, std::mt19937_64& random)
{
    std::filesystem::path path = folder;
    for (std::size_t depth = below(4, random); depth > 0; --depth) {
        path /= folderNames[below(folderNames.size(), random)];
    }
    return path;
}

std::filesystem::path TreeChurn::somePlace()
{
    const bool isFile = below(2, m_random) == 0;
    return folderBelow(m_folder, m_random) / (isFile ? fileNames[below(fileNames.size(), m_random)]
                                                     : folderNames[below(folderNames.size(), m_random)]);
}

bool TreeChurn::swapWithLure()
{
    const std::filesystem::path lure = m_outside / ("lure" + std::to_string(m_seed));
    std::error_code error;
    if (!std::filesystem::is_symlink(lure, error)) { // it has been removed where it was
        std::filesystem::remove_all(lure, error);
        std::filesystem::create_directory_symlink(m_forbidden, lure, error);
    }
    const std::filesystem::path place = folderBelow(m_folder, m_random);
    bool isSwapped = false;
    for (int times = 0; times < 40 && place != m_folder; ++times) {
        isSwapped =
            ::renameat2(AT_FDCWD, lure.c_str(), AT_FDCWD, place.c_str(), RENAME_EXCHANGE) == 0 || isSwapped;
    }
    return isSwapped;
}

bool TreeChurn::change()
{
    std::error_code error;
    const std::filesystem::path place = somePlace();
    switch (below(20, m_random)) {
    case 0:
        return std::filesystem::remove_all(place, error) > 0 && !error;
    case 1:
    case 2:
        std::filesystem::rename(place, somePlace(), error);
        return !error;
    case 3:
        std::filesystem::rename(place, m_outside / "away", error);
        return !error;
    case 4:
        std::filesystem::rename(m_outside / "away", place, error);
        return !error;
    case 5:
        std::filesystem::create_symlink(folderBelow(m_folder, m_random), place, error);
        return !error;
    case 6:
        std::filesystem::create_hard_link(somePlace(), place, error);
        return !error;
    case 7:
        return std::filesystem::remove(place, error) && !error;
    case 8:
    case 9:
        return swapWithLure();
    default:
        std::filesystem::create_directories(place.parent_path(), error);
        return !error && writeFile(place, m_random);
    }
}

void TreeChurn::run(const std::stop_token& stop)
{
    while (!stop.stop_requested()) {
        if (change()) {
            ++m_changes;
        }
    }
}

} // namespace tallyroom
