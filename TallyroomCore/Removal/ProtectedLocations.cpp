#include "Removal/ProtectedLocations.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileContent.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

/// Undoes the octal escapes of blanks and backslashes ("\040") in the mount table.
std::string unescaped(std::string_view text)
{
    const auto digit = [&text](std::size_t i) { return i < text.size() ? text[i] - '0' : -1; };
    const auto isOctal = [&digit](std::size_t i) { return digit(i) >= 0 && digit(i) < 8; };
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && isOctal(i + 1) && isOctal(i + 2) && isOctal(i + 3)) {
            path.push_back(static_cast<char>(digit(i + 1) * 64 + digit(i + 2) * 8 + digit(i + 3)));
            i += 3;
        } else {
            path.push_back(text[i]);
        }
    }
    return path;
}

/// The fifth field of every line.
std::vector<std::string> mountPoints(std::string_view table)
{
    std::vector<std::string> points;
    while (!table.empty()) {
        const std::string_view line = table.substr(0, table.find('\n'));
        table.remove_prefix(std::min(line.size() + 1, table.size()));
        std::size_t start = 0;
        for (int field = 1; field < 5 && start != std::string_view::npos; ++field) {
            start = line.find(' ', start);
            start += start == std::string_view::npos ? 0 : 1;
        }
        if (start != std::string_view::npos) {
            points.push_back(unescaped(line.substr(start, line.find(' ', start) - start)));
        }
    }
    return points;
}

std::vector<std::string> homeFolders()
{
    std::vector<std::string> homes;
    if (const char* const home = std::getenv("HOME"); home != nullptr && *home == '/') {
        homes.emplace_back(home);
    }
    std::array<char, 16384> buffer = {};
    passwd record = {};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &record, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        homes.emplace_back(found->pw_dir);
    }
    return homes;
}

} // namespace

SystemResult<ProtectedLocations> ProtectedLocations::read()
{
    const FileDescriptor file{::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)};
    const auto table = file.isOpen() ? contentOf(file.get()) : std::unexpected(SystemError::last());
    if (!table) {
        return std::unexpected(table.error());
    }
    ProtectedLocations locations;
    locations.m_mountPoints = mountPoints(*table);
    std::ranges::for_each(homeFolders(), [&](const std::string& home) { locations.guard(home); });
    return locations;
}

void ProtectedLocations::guard(const std::string& home)
{
    bool isHome = true;
    // Links that the home's path leads through: without them it would not be found any more.
    for (FileUrl step{home}; step.path().size() > 1; step = step.parent()) {
        const auto attributes = fileAttributes(step);
        if (attributes && attributes->type == EntryType::link) {
            m_homeAndAbove.push_back({attributes->device, attributes->inode, isHome});
        }
        isHome = false;
    }
    isHome = true;
    FileDescriptor step{::open(home.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    while (step.isOpen()) {
        const auto attributes = fileAttributes(step.get());
        if (!attributes || find(*attributes) != nullptr) {
            return; // the root is its own parent
        }
        m_homeAndAbove.push_back({attributes->device, attributes->inode, std::exchange(isHome, false)});
        step = FileDescriptor{::openat(step.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC)};
    }
}

const ProtectedLocations::Guarded* ProtectedLocations::find(const FileAttributes& attributes) const
{
    const auto found = std::ranges::find_if(m_homeAndAbove, [&attributes](const Guarded& guarded) {
        return guarded.device == attributes.device && guarded.inode == attributes.inode;
    });
    return found == m_homeAndAbove.end() ? nullptr : &*found;
}

std::optional<std::string> ProtectedLocations::refusal(const ItemPlace& place) const
{
    const auto attributes = fileAttributes(place.parent.get(), place.name.c_str());
    if (!attributes) {
        return std::nullopt; // what is missing or out of reach is told by the removal itself
    }
    if (const Guarded* const guarded = find(*attributes)) {
        return guarded->isHome ? "Le dossier personnel ne peut pas être supprimé."
                               : "Ce dossier contient le dossier personnel.";
    }
    const auto path = place.realPath();
    if (!path) {
        // Beyond PATH_MAX the mount table cannot name it either, and the removal enters no mount.
        return path.error().code == ENAMETOOLONG ? std::nullopt : std::optional{path.error().message()};
    }
    const auto mount = std::ranges::find_if(
        m_mountPoints, [&path](const std::string& point) { return isWithin(point, *path); });
    if (mount == m_mountPoints.end()) {
        return std::nullopt;
    }
    return *mount == *path ? "Un volume est monté à cet emplacement."
                           : "Un volume est monté dans ce dossier.";
}

} // namespace tallyroom
