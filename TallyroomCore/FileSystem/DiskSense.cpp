#include "FileSystem/DiskSense.h"

#include "FileSystem/BlockDevices.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/MountKinds.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

using std::chrono::nanoseconds;

nanoseconds now(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return std::chrono::seconds{time.tv_sec} + nanoseconds{time.tv_nsec};
}

/// How long this thread was ready and had no processor. The second number of "schedstat"; 0 where the kernel
/// keeps no account.
nanoseconds queued()
{
    thread_local const FileDescriptor account{::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)};
    std::array<char, 80> bytes{};
    const auto length = ::pread(account.get(), bytes.data(), bytes.size(), 0);
    const std::string_view text{bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
    std::int64_t time = 0;
    if (const auto space = text.find(' '); space != std::string_view::npos) {
        std::from_chars(text.data() + space + 1, text.data() + text.size(), time);
    }
    return nanoseconds{time};
}

class Machine final : public DiskSense {
public:
    static Machine& shared()
    {
        static Machine& machine = *new Machine; // workers may ask while the program ends
        return machine;
    }

    void listen(std::function<void(const DiskDecision&)> listener) { m_listener = std::move(listener); }

    void hear(const DiskDecision& decision) const override
    {
        if (m_listener) {
            m_listener(decision);
        }
    }

    std::vector<std::string> rotatingDisks(const Mount& mount) const override
    {
        std::vector<std::string> names;
        if (const auto device = isServed(mount) ? std::nullopt : BlockDevices::behind(mount)) {
            std::ranges::transform(BlockDevices::rotatingDisksOf(*device), std::back_inserter(names),
                                   [](const auto& disk) { return disk.filename().native(); });
        }
        return names;
    }

    bool lookSolid(const std::vector<std::string>& disks) const override
    {
        static const std::filesystem::path all = "/sys/class/block";
        return std::ranges::all_of(disks,
                                   [](const auto& disk) { return BlockDevices::looksSolid(all / disk); });
    }

    DiskUse useSoFar() const override
    {
        rusage usage = {};
        ::getrusage(RUSAGE_THREAD, &usage);
        const nanoseconds worked = now(CLOCK_THREAD_CPUTIME_ID);
        return {worked, now(CLOCK_MONOTONIC) - worked - queued(), usage.ru_nvcsw, usage.ru_inblock};
    }

private:
    std::function<void(const DiskDecision&)> m_listener;
};

} // namespace

const DiskSense& DiskSense::machine()
{
    return Machine::shared();
}

void DiskSense::listen(std::function<void(const DiskDecision&)> listener)
{
    Machine::shared().listen(std::move(listener));
}

} // namespace tallyroom
