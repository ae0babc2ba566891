#include "FileSystem/OpenFolders.h"

#include "FileSystem/DescriptorShare.h"

namespace tallyroom {

SystemResult<FileDescriptor> TreeWalk::OpenFolders::open(Folder& folder, Last& last)
{
    if (folder.isRoot()) {
        return openFolder(FileUrl{folder.m_name}, folder.m_rootAccess);
    }
    Folder& parent = *folder.m_parent;
    if (parent.m_keepsOpen) {
        auto opened = openChildFolder(parent.m_descriptor.get(), folder.m_name.c_str());
        release(parent);
        return opened;
    }
    if (parent.m_serial != 0 && last.serial == parent.m_serial) {
        return openChildFolder(last.descriptor.get(), folder.m_name.c_str());
    }
    return folder.openFromRoot();
}

void TreeWalk::OpenFolders::add(Folder& folder)
{
    static const auto limit = static_cast<int>(descriptorShare());
    // A root stays open for the sake of all that is opened by its path.
    folder.m_keepsOpen = folder.isRoot() || m_count.fetch_add(1) < limit;
    folder.m_serial = folder.m_keepsOpen ? 0 : m_serials.fetch_add(1) + 1;
}

void TreeWalk::OpenFolders::expect(Folder& folder, std::uint32_t children, Last& last)
{
    if (folder.m_keepsOpen) {
        folder.m_uses.fetch_add(children);
    } else if (children > 0) {
        last.serial = folder.m_serial;
        last.descriptor = FileDescriptor{::dup(folder.m_descriptor.get())};
    }
}

void TreeWalk::OpenFolders::release(Folder& folder)
{
    if (folder.m_uses.fetch_sub(1) == 1 && folder.m_descriptor.isOpen() && !folder.isRoot()) {
        folder.m_descriptor.reset();
        m_count.fetch_sub(1);
    }
}

} // namespace tallyroom
