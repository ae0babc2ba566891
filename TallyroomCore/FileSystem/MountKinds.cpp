#include "FileSystem/MountKinds.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tallyroom {

namespace {

/// File systems whose data are on another machine, or on the host of a virtual one.
constexpr std::array<std::string_view, 32> networkTypes{"nfs",
                                                        "nfs4",
                                                        "cifs",
                                                        "smb3",
                                                        "smbfs",
                                                        "ncpfs",
                                                        "afs",
                                                        "coda",
                                                        "ceph",
                                                        "glusterfs",
                                                        "lustre",
                                                        "beegfs",
                                                        "orangefs",
                                                        "pvfs2",
                                                        "ocfs2",
                                                        "gpfs",
                                                        "davfs",
                                                        "9p",
                                                        "virtiofs",
                                                        "vboxsf",
                                                        "prl_fs",
                                                        "fuse.sshfs",
                                                        "fuse.glusterfs",
                                                        "fuse.ceph-fuse",
                                                        "fuse.rclone",
                                                        "fuse.s3fs",
                                                        "fuse.davfs2",
                                                        "fuse.curlftpfs",
                                                        "fuse.smbnetfs",
                                                        "fuse.juicefs",
                                                        "fuse.vmhgfs-fuse",
                                                        "fuse.moosefs"};

} // namespace

bool isNetworkShare(const Mount& mount)
{
    return std::ranges::find(networkTypes, mount.type) != networkTypes.end();
}

bool isServed(const Mount& mount)
{
    return isNetworkShare(mount) || mount.type.starts_with("fuse");
}

} // namespace tallyroom
