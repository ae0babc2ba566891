#include "Removal/TrashRecord.h"

#include "FileSystem/FileContent.h"
#include "FileSystem/FolderReader.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fcntl.h>
#include <random>
#include <unistd.h>
#include <utility>

namespace tallyroom::TrashRecord {

namespace {

constexpr std::string_view heading = "[Trash Info]";

std::string localTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    std::array<char, 32> text = {};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &local)};
}

/// The first bytes of a name, at most `length` of them, not cut within a UTF-8 sequence.
std::string_view shortened(std::string_view name, std::size_t length)
{
    if (name.size() <= length) {
        return name;
    }
    const auto isContinuation = [&name](std::size_t i) {
        return (static_cast<unsigned char>(name[i]) & 0xC0U) == 0x80U;
    };
    std::size_t end = length;
    while (end > 0 && length - end < 3 && isContinuation(end)) {
        --end;
    }
    return name.substr(0, isContinuation(end) ? length : end);
}

/// Empty for a record that cannot be read.
std::string textOf(int records, const std::string& name)
{
    const auto record = openAt(records, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    auto content = record ? contentOf(record->get()) : std::unexpected(record.error());
    return content ? std::move(*content) : std::string{};
}

/// The path in a record's text, percent-encoded; empty when there is none.
std::string encodedPath(const std::string& content)
{
    constexpr std::string_view key = "\nPath=";
    const std::size_t start = content.find(key);
    if (start == std::string::npos) {
        return {};
    }
    const std::size_t value = start + key.size();
    return content.substr(value, content.find('\n', value) - value);
}

} // namespace

std::string itemName(const std::string& name, unsigned tried, std::size_t longest)
{
    const std::size_t dot = name.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0 && name.size() - dot <= 32;
    const std::string_view stem = std::string_view{name}.substr(0, hasExtension ? dot : name.size());
    std::string ending = hasExtension ? name.substr(dot) : "";
    if (tried > 0) {
        std::uint32_t number = tried + 1;
        if (number > 9) {
            std::random_device source;
            const std::uint32_t range = 100U << std::min(tried - 9, 20U);
            number = std::uniform_int_distribution<std::uint32_t>{10, range}(source);
        }
        ending.insert(0, "." + std::to_string(number));
    }
    return std::string{shortened(stem, longest - ending.size())} + ending;
}

std::string contentFor(std::string_view path)
{
    return std::string{heading} + "\nPath=" + percentEncodedPath(path) + "\nDeletionDate=" + localTime() +
           "\n";
}

SystemResult<void> write(int records, const std::string& name, const std::string& content)
{
    auto record = openAt(records, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC);
    if (!record) {
        return std::unexpected(record.error());
    }
    if (!writeFully(record->get(), content)) {
        const SystemError error = SystemError::last();
        ::unlinkat(records, name.c_str(), 0);
        return std::unexpected(error);
    }
    return {};
}

SystemResult<FileDescriptor> openBeside(int files)
{
    return openAt(files, "../info", O_PATH | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
}

bool isRecord(int records, const std::string& name)
{
    return textOf(records, name).starts_with(heading);
}

std::optional<std::string> origin(int records, const std::string& name)
{
    const std::string told = encodedPath(textOf(records, name));
    return told.empty() ? std::nullopt : std::optional{percentDecodedPath(told)};
}

bool tellsPlace(int records, const std::string& name, const ItemPlace& place)
{
    const std::string told = encodedPath(textOf(records, name));
    const auto path = place.realPath();
    if (told.empty() || !path) {
        return false;
    }
    const std::string encoded = percentEncodedPath(*path);
    return told == encoded || (!told.starts_with('/') && encoded.ends_with("/" + told));
}

} // namespace tallyroom::TrashRecord
