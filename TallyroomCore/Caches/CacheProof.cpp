#include "Caches/CacheProof.h"

#include "FileSystem/FileContent.h"
#include "FileSystem/FolderReader.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <string>
#include <vector>

namespace tallyroom {

namespace {

/// The Cache Directory Tagging Specification: a tag begins with these 43 bytes.
constexpr std::string_view tagSignature = "Signature: 8a477f597d28d172789f06886806bc55";

/// The names of an open folder that end with `end`; its own position in the listing stays.
bool holdsNameWithEnd(int folder, std::string_view end)
{
    const auto listed = openChildFolder(folder, ".");
    NameBuffer buffer;
    std::vector<ListedName> names;
    while (listed && buffer.read(listed->get())) {
        names.clear();
        buffer.parse(names);
        if (std::ranges::any_of(names, [end](const ListedName& name) {
                return name.view().size() > end.size() && name.view().ends_with(end);
            })) {
            return true;
        }
    }
    return false;
}

/// Whether the folder holds a file of that name; a folder does not count, but with a pattern, since some
/// tools keep a project in one.
bool holds(int folder, std::string_view name)
{
    if (name.starts_with('*')) {
        return holdsNameWithEnd(folder, name.substr(1));
    }
    const auto attributes = fileAttributes(folder, std::string{name}.c_str());
    return attributes && (attributes->isRegular || attributes->type == EntryType::link);
}

bool holdsAny(int folder, std::span<const std::string_view> names)
{
    return std::ranges::any_of(names, [folder](std::string_view name) { return holds(folder, name); });
}

bool isTagged(int folder)
{
    constexpr const char* tag = "CACHEDIR.TAG";
    const auto attributes = fileAttributes(folder, tag);
    if (!attributes || !attributes->isRegular) {
        return false; // a FIFO would let the reader wait
    }
    const auto file = openAt(folder, tag, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    std::array<std::byte, tagSignature.size()> beginning = {};
    return file && readFully(file->get(), beginning, 0) &&
           std::ranges::equal(beginning, std::as_bytes(std::span{tagSignature}));
}

} // namespace

CacheProof proveCache(int parent, std::string_view name)
{
    const auto opened = openChildFolder(parent, std::string{name}.c_str());
    const auto proves = [&](Ecosystem ecosystem) {
        const CacheFolder* const folder = ecosystem.folder(name);
        return folder != nullptr &&
               (holdsAny(parent, folder->markers) || (opened && holdsAny(opened->get(), folder->traces)));
    };
    const auto* const found = std::ranges::find_if(Ecosystem::all, proves);
    if (found != Ecosystem::all.end()) {
        return {*found, true};
    }
    return {Ecosystem::first(name), opened && isTagged(opened->get())};
}

} // namespace tallyroom
