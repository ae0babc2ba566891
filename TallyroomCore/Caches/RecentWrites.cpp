#include "Caches/RecentWrites.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/PrunedFolders.h"
#include "Model/Ecosystem.h"

#include <deque>
#include <string>
#include <vector>

namespace tallyroom::RecentWrites {

namespace {

enum class Step { enter, passBy, end };

/// Shows the items below an open folder to `visit(name, attributes)`, the nearest first, until `mostItems`
/// were seen or the answer is `Step::end`. Keeps one more descriptor open: many workers look at once.
template <class Visit>
void look(const FileDescriptor& base, const Visit& visit)
{
    std::deque<std::string> folders{"."};
    NameBuffer buffer;
    std::vector<ListedName> names;
    std::size_t seen = 0;
    for (; !folders.empty(); folders.pop_front()) {
        const auto folder = openDescendantFolder(base.get(), folders.front());
        while (folder && buffer.read(folder->get())) {
            names.clear();
            buffer.parse(names);
            for (const ListedName& name : names) {
                const auto attributes = fileAttributes(folder->get(), name.name);
                const Step step = attributes ? visit(name.view(), *attributes) : Step::passBy;
                if (step == Step::end || ++seen == mostItems) {
                    return;
                }
                if (step == Step::enter && attributes->type == EntryType::folder) {
                    folders.push_back(folders.front() + '/' + name.name);
                }
            }
        }
    }
}

} // namespace

bool isAnyBetween(int parent, const char* name, Timestamp from, Timestamp until)
{
    const auto isBetween = [&](const FileAttributes& attributes) {
        return attributes.modifiedAt && *attributes.modifiedAt >= from && *attributes.modifiedAt <= until;
    };
    const auto folder = openChildFolder(parent, name);
    if (!folder) {
        return false;
    }
    const auto itself = fileAttributes(folder->get());
    bool isFound = itself && isBetween(*itself);
    if (!isFound) {
        look(*folder, [&](std::string_view, const FileAttributes& attributes) {
            isFound = isBetween(attributes);
            return isFound ? Step::end : Step::enter;
        });
    }
    return isFound;
}

std::optional<Timestamp> newestOwnFile(const FileUrl& project)
{
    std::optional<Timestamp> newest;
    const auto folder = openFolder(project, FolderAccess::listing);
    if (folder) {
        look(*folder, [&](std::string_view name, const FileAttributes& attributes) {
            if (attributes.type == EntryType::folder) {
                return isPruned(name) || Ecosystem::first(name) ? Step::passBy : Step::enter;
            }
            if (attributes.modifiedAt && (!newest || *newest < *attributes.modifiedAt)) {
                newest = attributes.modifiedAt;
            }
            return Step::passBy;
        });
    }
    return newest;
}

} // namespace tallyroom::RecentWrites
