#include "FileSystem/HomeFolder.h"

#include <array>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace tallyroom::HomeFolder {

namespace {

FileUrl ofEnvironment()
{
    const char* const home = std::getenv("HOME");
    return home != nullptr && *home == '/' ? FileUrl{home} : FileUrl{};
}

FileUrl ofUserRecord()
{
    std::array<char, 16384> buffer = {};
    passwd record = {};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &record, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? FileUrl{found->pw_dir} : FileUrl{};
}

} // namespace

FileUrl current()
{
    FileUrl home = ofEnvironment();
    return home.isEmpty() ? ofUserRecord() : home;
}

std::vector<FileUrl> all()
{
    std::vector<FileUrl> homes{ofEnvironment(), ofUserRecord()};
    std::erase_if(homes, &FileUrl::isEmpty);
    return homes;
}

} // namespace tallyroom::HomeFolder
