#include "Duplicates/FilesAhead.h"

#include "FileSystem/DescriptorShare.h"

#include <algorithm>
#include <fcntl.h>
#include <utility>

namespace tallyroom {

namespace {

/// At most so many files are open before their turn.
constexpr std::size_t mostFiles = 128;

/// The disk is asked for at most so much before its turn, one file aside.
constexpr std::int64_t mostBytes = 32L * 1024 * 1024;

} // namespace

FilesAhead::FilesAhead(std::size_t count, Open open, Span span)
    : m_count(count), m_most(std::min(mostFiles, descriptorShare())), m_open(std::move(open)),
      m_span(std::move(span))
{}

std::optional<StableFile> FilesAhead::take(std::size_t number)
{
    const bool isClaimed = m_ahead.with([number](Ahead& ahead) {
        return number < std::exchange(ahead.next, std::max(ahead.next, number + 1));
    });
    auto own = isClaimed ? std::nullopt : openNow(number);
    while (const auto next = claim()) {
        putAside(*next, openNow(*next));
    }
    return isClaimed ? takeOut(number) : std::move(own);
}

std::optional<StableFile> FilesAhead::openNow(std::size_t number) const
{
    auto file = m_open(number);
    if (file) {
        const FileSpan span = m_span(number);
        ::posix_fadvise(file->descriptor(), span.offset, span.length, POSIX_FADV_WILLNEED);
    }
    return file;
}

/// The file that is to be opened next, unless enough wait.
std::optional<std::size_t> FilesAhead::claim()
{
    return m_ahead.with([this](Ahead& ahead) -> std::optional<std::size_t> {
        const bool areEnough = ahead.files.size() >= m_most || ahead.bytes >= mostBytes;
        return areEnough || ahead.next >= m_count ? std::nullopt : std::optional{ahead.next++};
    });
}

void FilesAhead::putAside(std::size_t number, std::optional<StableFile> file)
{
    const std::int64_t bytes = m_span(number).length;
    m_ahead.with([&](Ahead& ahead) {
        const auto [place, isNew] = ahead.files.try_emplace(number, std::move(file));
        if (isNew) {
            ahead.bytes += bytes;
        } else {
            ahead.files.erase(place); // its turn has passed
        }
    });
}

std::optional<StableFile> FilesAhead::takeOut(std::size_t number)
{
    const std::int64_t bytes = m_span(number).length;
    auto taken = m_ahead.with([&](Ahead& ahead) {
        auto found = ahead.files.extract(number);
        if (found.empty()) {
            ahead.files.try_emplace(number); // another worker is still opening it
        } else {
            ahead.bytes -= bytes;
        }
        return found;
    });
    return taken.empty() ? m_open(number) : std::move(taken.mapped());
}

} // namespace tallyroom
