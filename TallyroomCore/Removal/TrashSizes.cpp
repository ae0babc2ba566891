#include "Removal/TrashSizes.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileContent.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/WholeFile.h"
#include "Model/FileUrl.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <string_view>

namespace tallyroom {

namespace {

constexpr const char* sizesName = "directorysizes";

/// The text of the file; empty when there is none, or something else bears its name.
std::string sizesOf(int trash)
{
    const auto file = openAt(trash, sizesName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    const auto attributes = file ? fileAttributes(file->get()) : std::unexpected(file.error());
    if (!attributes || !attributes->isRegular) {
        return {};
    }
    auto content = contentOf(file->get());
    return content ? std::move(*content) : std::string{};
}

/// The name at the end of a line "SIZE TIME NAME"; empty for a line of another form.
std::string nameIn(std::string_view line)
{
    const std::size_t first = line.find(' ');
    const std::size_t second = first == std::string_view::npos ? first : line.find(' ', first + 1);
    return second == std::string_view::npos ? std::string{} : percentDecodedPath(line.substr(second + 1));
}

/// False when it is sure that no folder of this name lies there.
bool mayHold(int files, const std::string& name)
{
    if (name.empty() || name.find('/') != std::string::npos || name.find('\0') != std::string::npos) {
        return true; // nothing that we understand
    }
    const auto item = fileAttributes(files, name.c_str());
    return item ? item->type == EntryType::folder : item.error().code != ENOENT;
}

} // namespace

void TrashSizes::dropGone(int trash)
{
    const std::string content = sizesOf(trash);
    const auto files = openAt(trash, "files", O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (content.empty() || !files) {
        return;
    }
    std::string kept;
    for (std::size_t start = 0; start < content.size();) {
        const std::size_t end = std::min(content.find('\n', start), content.size() - 1) + 1;
        const std::string_view line{content.data() + start, end - start};
        if (mayHold(files->get(), nameIn(line.substr(0, line.find('\n'))))) {
            kept += line;
        }
        start = end;
    }
    if (kept.size() != content.size()) {
        // Where it cannot be written, its readers look for each folder themselves.
        static_cast<void>(WholeFile::write(trash, sizesName, kept));
    }
}

} // namespace tallyroom
