#include "Duplicates/BatchDigester.h"

#include "FileSystem/FileContent.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <utility>

namespace tallyroom {

namespace {

/// How often a file is read that changes meanwhile: new rights or another link leave the content as it is.
constexpr int mostReadings = 4;

bool areEqual(std::span<const std::byte> left, std::span<const std::byte> right)
{
    return std::memcmp(left.data(), right.data(), left.size()) == 0;
}

/// Reads a chunk and lets the disk fetch the next one while this one is digested.
bool readChunk(const StableFile& file, std::span<std::byte> bytes, std::int64_t offset, std::int64_t end,
               std::atomic<std::int64_t>& readBytes)
{
    if (!readFully(file.descriptor(), bytes, offset)) {
        return false;
    }
    const auto length = static_cast<std::int64_t>(bytes.size());
    readBytes.fetch_add(length, std::memory_order_relaxed);
    const std::int64_t next = offset + length;
    if (next < end) {
        ::posix_fadvise(file.descriptor(), next, std::min(end - next, length), POSIX_FADV_WILLNEED);
    }
    return true;
}

} // namespace

BatchDigester::Digests BatchDigester::digest(std::size_t count, FileSpan span, const Open& open,
                                             const std::stop_token& stop,
                                             std::atomic<std::int64_t>& readBytes)
{
    Digests digests(count);
    if (span.length <= shortSpan) {
        digestShort(span, open, stop, readBytes, digests);
        return digests;
    }
    std::vector<OpenFile> files;
    for (std::size_t index = 0; index < count; ++index) {
        if (auto file = open(index)) {
            files.push_back({index, std::move(*file), 1});
        }
    }
    while (!files.empty() && !stop.stop_requested()) {
        files = digestAlike(std::move(files), span, open, stop, readBytes, digests);
    }
    return digests;
}

/// Reads a span that fits into `bytes`, again when the file changed meanwhile.
bool BatchDigester::readShort(std::size_t index, FileSpan span, const Open& open, std::span<std::byte> bytes)
{
    for (int readings = 0; readings < mostReadings; ++readings) {
        const auto file = open(index);
        if (!file || !readFully(file->descriptor(), bytes, span.offset)) {
            return false;
        }
        if (file->isUnchanged()) {
            return true;
        }
    }
    return false;
}

/// Reads one file after the other and compares each with those before it.
void BatchDigester::digestShort(FileSpan span, const Open& open, const std::stop_token& stop,
                                std::atomic<std::int64_t>& readBytes, Digests& digests)
{
    std::vector<std::size_t> distinct; // the n-th lies in the n-th buffer
    for (std::size_t index = 0; index < digests.size() && !stop.stop_requested(); ++index) {
        const auto bytes = buffer(distinct.size(), span.length);
        if (!readShort(index, span, open, bytes)) {
            continue;
        }
        readBytes.fetch_add(span.length, std::memory_order_relaxed);
        std::size_t twin = 0;
        while (twin < distinct.size() && !areEqual(buffer(twin, span.length), bytes)) {
            ++twin;
        }
        if (twin < distinct.size()) {
            digests[index] = digests[distinct[twin]];
        } else {
            digests[index] = m_digester.digest(bytes);
            distinct.push_back(index);
        }
    }
}

/// Reads all files in step and digests one of them; those that prove equal share its digest. Returns those
/// that differ from it, and those that changed meanwhile, opened again.
std::vector<BatchDigester::OpenFile> BatchDigester::digestAlike(std::vector<OpenFile> files, FileSpan span,
                                                                const Open& open, const std::stop_token& stop,
                                                                std::atomic<std::int64_t>& readBytes,
                                                                Digests& digests)
{
    OpenFile model = std::move(files.back());
    files.pop_back();
    std::vector<OpenFile> different;
    const std::int64_t end = span.offset + span.length;
    m_digester.begin();
    for (std::int64_t offset = span.offset, length = 0; offset < end; offset += length) {
        length = std::min(end - offset, chunkSize);
        const auto bytes = buffer(0, length);
        if (stop.stop_requested() || !readChunk(model.file, bytes, offset, end, readBytes)) {
            std::ranges::move(files, std::back_inserter(different)); // they start over without it
            return different;
        }
        std::vector<OpenFile> alike;
        for (OpenFile& file : files) {
            const auto others = buffer(1, length);
            if (!stop.stop_requested() && readChunk(file.file, others, offset, end, readBytes)) {
                (areEqual(bytes, others) ? alike : different).push_back(std::move(file));
            }
        }
        files = std::move(alike);
        m_digester.add(bytes);
    }
    const Digest digest = m_digester.end();
    files.push_back(std::move(model));
    for (OpenFile& file : files) {
        if (file.file.isUnchanged()) {
            digests[file.index] = digest;
        } else if (auto again = file.readings < mostReadings ? open(file.index) : std::nullopt) {
            different.push_back({file.index, std::move(*again), file.readings + 1});
        }
    }
    return different;
}

std::span<std::byte> BatchDigester::buffer(std::size_t number, std::int64_t length)
{
    if (m_buffers.size() <= number) {
        m_buffers.resize(number + 1);
    }
    auto& bytes = m_buffers[number];
    if (bytes.size() < static_cast<std::size_t>(length)) {
        bytes.resize(static_cast<std::size_t>(length));
    }
    return std::span{bytes}.first(static_cast<std::size_t>(length));
}

} // namespace tallyroom
