#pragma once

#include "FileSystem/FileDescriptor.h"
#include "FileSystem/SystemError.h"
#include "Model/FileUrl.h"
#include "Removal/ItemPlace.h"

#include <cstdint>
#include <expected>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace tallyroom {

/// The person's trash, by the freedesktop.org Trash specification 1.0: "$XDG_DATA_HOME/Trash" for what lies
/// on the same volume, else "$topdir/.Trash/$uid" where an administrator has set up a safe ".Trash", else
/// "$topdir/.Trash-$uid". Nothing is copied from one volume to another, and nothing is removed for good:
/// an item is in the trash, with its record, or it stays where it was. One object serves one batch on one
/// thread; any number may work at once, in other processes too.
class Trash {
public:
    Trash() = default;
    Trash(const Trash&) = delete;
    Trash& operator=(const Trash&) = delete;

    /// Takes the folders that have left a trash out of its table of sizes, once for the whole batch.
    ~Trash();

    /// Why an item stayed where it was: a failed system call, or the trash's own objection.
    struct Refusal {
        Refusal(SystemError error) : code(error.code), message(error.message()) {} // NOLINT: meant to convert

        Refusal(int errorCode, std::string words) : code(errorCode), message(std::move(words)) {}

        int code;            ///< as errno
        std::string message; ///< in words for people
    };

    /// An item that lies in the trash now.
    struct Stored {
        FileUrl inTrash;
        std::optional<ItemIdentity> item;   ///< its identity, when known
        std::optional<ItemIdentity> folder; ///< which folder it came from
    };

    using Result = std::expected<Stored, Refusal>;

    /// Moves an item to the trash of its volume. Another one than is meant stays where it was (ESTALE), also
    /// when it comes into the item's place at the last moment.
    [[nodiscard]] Result moveIn(const ItemPlace& place);

    /// An item to put back.
    struct Return {
        FileUrl inTrash;
        FileUrl original;
        MeantItem item;
        MeantItem folder; ///< that holds `original`
    };

    /// Moves an item of a trash back and removes its record. Never overwrites (EEXIST), makes no folder
    /// (ENOENT). Refuses another item that has got the name, and another folder at the place (ESTALE). Where
    /// nobody knows which item is meant, its record has to say that it came from there.
    [[nodiscard]] std::expected<void, Refusal> putBack(const Return& wanted);

    /// Removes the record of an item that was removed for good from a trash; does nothing for other items.
    void forget(const ItemPlace& place);

private:
    /// An open trash folder.
    struct Bin {
        FileDescriptor files;
        FileDescriptor records; ///< "info"
        std::string path;       ///< of the trash folder, links resolved
        std::string topFolder;  ///< of the volume; empty for the home trash, whose records hold full paths
        std::uint64_t mount = 0;
    };

    [[nodiscard]] static SystemResult<Bin> openBin(FileDescriptor folder, std::string topFolder);
    [[nodiscard]] static SystemResult<Bin> openVolumeBin(const ItemPlace& place, std::uint64_t mount);
    [[nodiscard]] static Result store(const Bin& bin, const ItemPlace& place, const std::string& realPath);
    void findHomeBin();
    void noteDeparture(int files);
    [[nodiscard]] SystemResult<Bin> openHomeBin(const FileUrl& trash);
    [[nodiscard]] SystemResult<const Bin*> volumeBin(const ItemPlace& place, std::uint64_t mount);

    std::optional<SystemResult<Bin>> m_home; ///< none before it was looked for
    /// The mount where the home trash is or would be made; none when unknown.
    std::optional<std::uint64_t> m_homeMount;
    std::optional<Bin> m_volume;                  ///< the one used last
    std::map<std::string, FileDescriptor> m_left; ///< trash folders that items went out of, by path
};

} // namespace tallyroom
