#include "Scanning/ListedEntry.h"

namespace tallyroom {

FolderSize itemSize(const TreeWalk::Child& child)
{
    return {.bytes = child.attributes != nullptr ? child.attributes->allocatedBytes : 0,
            .unread = child.failure != 0 ? 1 : 0,
            .hasUnreadItems = child.failure != 0,
            .isUnreadable = child.failure != 0};
}

Entry listedEntry(const FileUrl& folder, const TreeWalk::Child& child, const FolderSize& size,
                  const ScanRoot& scanRoot)
{
    Entry entry{.url = folder.appending(child.name),
                .name = std::string{child.name},
                .isDirectory = child.isFolder(),
                .form = child.form()};
    if (child.attributes != nullptr) {
        entry.modifiedAt = child.attributes->modifiedAt;
        entry.identity = scanRoot.identify(*child.attributes);
    }
    size.applyTo(entry);
    return entry;
}

} // namespace tallyroom
