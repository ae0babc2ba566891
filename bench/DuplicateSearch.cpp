#include "Duplicates/DuplicateFinder.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>

/// Times one search for duplicates without limits: duplicate-search FOLDER [MINIMUM-SIZE [--list]].
/// With --list the paths follow, a line each and an empty one after each group, as other programs print them.
int main(int argc, char** argv)
{
    using namespace tallyroom;
    if (argc < 2) {
        std::fputs("duplicate-search FOLDER [MINIMUM-SIZE [--list]]\n", stderr);
        return 2;
    }
    const std::int64_t minimumSize = argc > 2 ? std::strtoll(argv[2], nullptr, 10) : 1;
    const auto none = std::numeric_limits<std::int64_t>::max();
    const auto start = std::chrono::steady_clock::now();
    const auto since = [start] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    double hashingAt = 0;
    const auto result = DuplicateFinder::computeGroups(
        FileUrl{argv[1]}, minimumSize, {none, none}, {},
        [&](const DuplicateFinder::DuplicateProgress& record) {
            if (record.phase == DuplicateFinder::Phase::hashing && hashingAt == 0) {
                hashingAt = since();
            }
        });
    std::fprintf(stderr, "%zu groups, walk %.3f s, all %.3f s\n", result.groups.size(), hashingAt, since());
    if (argc > 3) {
        for (const DuplicateGroup& group : result.groups) {
            for (const Entry& entry : group.entries) {
                std::printf("%s\n", entry.url.path().c_str());
            }
            std::puts("");
        }
    }
    return 0;
}
