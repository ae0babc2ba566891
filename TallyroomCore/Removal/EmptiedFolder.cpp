#include "Removal/EmptiedFolder.h"

#include <cerrno>
#include <utility>
#include <vector>

namespace tallyroom {

EmptiedFolder::EmptiedFolder(std::shared_ptr<EmptiedFolder> parentFolder, std::string ownName)
    : parent(std::move(parentFolder)), name(std::move(ownName)), depth(parent ? parent->depth + 1 : 0)
{}

EmptiedFolder::SharedDescriptor EmptiedFolder::keepOpen(FileDescriptor opened)
{
    auto shared = std::make_shared<const FileDescriptor>(std::move(opened));
    access.with([&](Access& own) { own.descriptor = shared; });
    return shared;
}

void EmptiedFolder::park()
{
    access.with([](Access& own) {
        if (own.descriptor) {
            if (const auto attributes = fileAttributes(own.descriptor->get())) {
                own.id = attributes->id();
                own.descriptor.reset();
            }
        }
    });
}

SystemResult<EmptiedFolder::SharedDescriptor> EmptiedFolder::reopenAs(FileDescriptor found)
{
    const auto attributes = fileAttributes(found.get());
    if (!attributes) {
        return std::unexpected(attributes.error());
    }
    if (access.get().id != attributes->id()) {
        return std::unexpected(SystemError{ESTALE});
    }
    return keepOpen(std::move(found));
}

const EmptiedFolder* EmptiedFolder::top() const
{
    const EmptiedFolder* step = this;
    while (step->parent) {
        step = step->parent.get();
    }
    return step;
}

std::string EmptiedFolder::pathBelow(const EmptiedFolder* ancestor) const
{
    std::vector<const std::string*> names;
    for (const EmptiedFolder* step = this; step != ancestor; step = step->parent.get()) {
        names.push_back(&step->name);
    }
    std::string path;
    for (auto next = names.rbegin(); next != names.rend(); ++next) {
        path.append(path.empty() ? "" : "/").append(**next);
    }
    return path;
}

} // namespace tallyroom
