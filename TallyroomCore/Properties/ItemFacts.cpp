#include "Properties/ItemFacts.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/StatxTime.h"

#include <array>
#include <climits>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tallyroom {

namespace {

/// The name that `find` (getpwuid_r(3), getgrgid_r(3)) has for a number; the number where there is none.
template <class Record, class Find>
std::string nameOf(unsigned number, Find find, char* Record::*name)
{
    constexpr std::size_t roomForAnyGroup = std::size_t{1} << 20U; // members are told too
    std::vector<char> room(roomForAnyGroup);
    Record record{};
    Record* found = nullptr;
    const bool isKnown = find(number, &record, room.data(), room.size(), &found) == 0 && found != nullptr;
    return isKnown ? std::string{found->*name} : std::to_string(number);
}

std::string targetOf(int folder, const char* name)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(folder, name, target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return target;
}

} // namespace

SystemResult<ItemFacts> itemFacts(const FileUrl& url)
{
    const FileUrl standard = url.standardized();
    const auto parent = openFolder(standard.parent(), FolderAccess::throughOnly);
    if (!parent) {
        return std::unexpected(parent.error());
    }
    const std::string last{standard.lastPathComponent()};
    const std::string name = standard == standard.parent() ? "." : last; // the top has no name
    const auto attributes = fileAttributes(parent->get(), name.c_str());
    if (!attributes) {
        return std::unexpected(attributes.error());
    }
    struct statx stat = {};
    if (::statx(parent->get(), name.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                STATX_BASIC_STATS | STATX_BTIME, &stat) != 0) {
        return std::unexpected(SystemError::last());
    }
    const auto moment = [&stat](unsigned mask, const statx_timestamp& time) {
        return (stat.stx_mask & mask) != 0 ? std::optional{momentOf(time)} : std::nullopt;
    };
    constexpr unsigned permissionBits = 07777;
    return ItemFacts{.type = attributes->type,
                     .names = attributes->links,
                     .permissions = stat.stx_mode & permissionBits,
                     .owner = nameOf(stat.stx_uid, ::getpwuid_r, &passwd::pw_name),
                     .group = nameOf(stat.stx_gid, ::getgrgid_r, &group::gr_name),
                     .linkTarget = attributes->type == EntryType::link ? targetOf(parent->get(), name.c_str())
                                                                       : std::string{},
                     .modifiedAt = attributes->modifiedAt,
                     .accessedAt = moment(STATX_ATIME, stat.stx_atime),
                     .createdAt = moment(STATX_BTIME, stat.stx_btime)};
}

std::string permissionLetters(unsigned permissions)
{
    std::string letters = "rwxrwxrwx";
    for (std::size_t place = 0; place < letters.size(); ++place) {
        if ((permissions & (0400U >> place)) == 0) {
            letters[place] = '-';
        }
    }

    /// A bit that shows in the place of an "x".
    struct Special {
        unsigned bit;
        std::size_t place;
        char letter;
    };

    constexpr std::array specials{Special{S_ISUID, 2, 's'}, Special{S_ISGID, 5, 's'},
                                  Special{S_ISVTX, 8, 't'}};
    for (const Special& special : specials) {
        if ((permissions & special.bit) != 0) {
            char& shown = letters[special.place];
            const bool isExecutable = shown == 'x';
            shown = isExecutable ? special.letter : static_cast<char>(special.letter - 'a' + 'A');
        }
    }
    return letters;
}

} // namespace tallyroom
