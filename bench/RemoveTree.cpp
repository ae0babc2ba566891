// Permanent deletion as the window does it, on a terminal, so that bench/compare can time it beside rm -rf.
// For trees that tree-maker made.

#include "Removal/FileRemover.h"

#include <array>
#include <cstdio>
#include <filesystem>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: remove-tree FOLDER    (a folder that tree-maker made: everything goes)\n", stderr);
        return 2;
    }
    const std::array urls{tallyroom::FileUrl{std::filesystem::absolute(argv[1]).native()}};
    const auto result = tallyroom::FileRemover::remove(urls, true);
    for (const auto& failure : result.failures) {
        std::fprintf(stderr, "%s: %s\n", failure.url.path().c_str(), failure.message.c_str());
    }
    return result.allSucceeded() ? 0 : 1;
}
