// A mount table with any content, as containers, odd file systems and long paths make them.
#include "FileSystem/MountTable.h"
#include "Require.h"

#include <algorithm>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace tallyroom;

/// A file in memory that bears the content of the last input.
class Table {
public:
    std::vector<Mount> read(const std::uint8_t* data, std::size_t size) const
    {
        require(::ftruncate(m_file, 0) == 0, "the file is emptied");
        require(::pwrite(m_file, data, size, 0) == static_cast<ssize_t>(size), "the file is written");
        return MountTable::read("/proc/self/fd/" + std::to_string(m_file));
    }

private:
    int m_file = ::memfd_create("mounts", MFD_CLOEXEC);
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Table table;
    const std::vector<Mount> mounts = table.read(data, size);
    for (const Mount& mount : mounts) {
        require(mount.id != 0 && mount.mountPoint.starts_with('/'), "a mount is somewhere");
    }
    const std::vector<Mount> reached = MountTable::reachable(mounts);
    require(reached.size() <= mounts.size(), "nothing is reached twice");
    for (const Mount& mount : reached) {
        require(std::ranges::find(mounts, mount) != mounts.end(), "what is reached is mounted");
        const FileUrl below = FileUrl{mount.mountPoint}.appending("below");
        const auto holding = MountTable::holding(below, reached);
        require(!holding || below.isInside(FileUrl{holding->mountPoint}), "a mount holds what is below it");
        const bool isPlain = FileUrl{mount.mountPoint}.standardized().path() == mount.mountPoint;
        require(!isPlain || (holding && holding->mountPoint.size() >= mount.mountPoint.size()),
                "the deepest mount holds");
    }
    return 0;
}
