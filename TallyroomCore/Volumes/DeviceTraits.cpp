#include "Volumes/DeviceTraits.h"

#include "FileSystem/BlockDevices.h"
#include "FileSystem/FileDescriptor.h"
#include "Model/Hexadecimal.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <libudev.h>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/sysmacros.h>

namespace tallyroom {

namespace {

namespace fs = std::filesystem;

/// The first line of an attribute; empty when there is none.
std::string attribute(const fs::path& file)
{
    std::string line;
    std::ifstream stream{file};
    std::getline(stream, line);
    return line;
}

/// A step of a device's path that names a port for things that are plugged in ("usb3", "fw0").
bool isPluggedBus(const std::string& step)
{
    return std::ranges::any_of(std::array{"usb", "fw"}, [&step](std::string_view bus) {
        return step.size() > bus.size() && step.starts_with(bus) && step[bus.size()] >= '0' &&
               step[bus.size()] <= '9';
    });
}

bool isExternalDisk(const fs::path& disk, const fs::path& devices)
{
    // A card of "MMC" type is soldered to the board, a card of "SD" type is put into a slot.
    if (attribute(disk / "removable") == "1" || attribute(disk / "device/type") == "SD") {
        return true;
    }
    for (fs::path step = disk; step != devices && step.has_relative_path(); step = step.parent_path()) {
        if (isPluggedBus(step.filename()) || attribute(step / "removable") == "removable") {
            return true;
        }
    }
    return false;
}

struct Unreference {
    void operator()(udev* context) const { udev_unref(context); }

    void operator()(udev_device* device) const { udev_device_unref(device); }
};

using Udev = std::unique_ptr<udev, Unreference>;
using UdevDevice = std::unique_ptr<udev_device, Unreference>;

/// Undoes \x20 and the like.
std::string decoded(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text.substr(i).starts_with("\\x");
        const auto byte = isEscape ? Hexadecimal::byteOf(text.substr(i + 2, 2)) : std::nullopt;
        if (byte) {
            bytes.push_back(*byte);
            i += 3;
        } else {
            bytes.push_back(text[i]);
        }
    }
    return bytes;
}

std::string labelInUdev(dev_t device)
{
    const Udev context{udev_new()};
    const UdevDevice found{context ? udev_device_new_from_devnum(context.get(), 'b', device) : nullptr};
    const char* const label =
        found ? udev_device_get_property_value(found.get(), "ID_FS_LABEL_ENC") : nullptr;
    return label == nullptr ? std::string{} : decoded(label);
}

std::string labelInFileSystem(const std::string& mountPoint)
{
    const FileDescriptor folder{::open(mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    std::array<char, FSLABEL_MAX + 1> label{};
    if (!folder.isOpen() || ::ioctl(folder.get(), FS_IOC_GETFSLABEL, label.data()) != 0) {
        return {};
    }
    return label.data();
}

} // namespace

std::optional<bool> isInternalDevice(std::uint64_t device, const std::string& sysfs)
{
    std::error_code unknown;
    const fs::path devices = fs::canonical(fs::path{sysfs} / "devices", unknown);
    const auto disks = BlockDevices::disksOf(device, sysfs);
    if (unknown || !disks) {
        return std::nullopt;
    }
    return std::ranges::none_of(*disks,
                                [&devices](const fs::path& disk) { return isExternalDisk(disk, devices); });
}

DeviceTraits deviceTraits(const Mount& mount)
{
    DeviceTraits traits;
    const auto device = BlockDevices::behind(mount);
    if (!device) {
        return traits;
    }
    std::string label =
        labelInUdev(::makedev(static_cast<unsigned>(*device >> 32U), static_cast<unsigned>(*device)));
    if (label.empty()) {
        label = labelInFileSystem(mount.mountPoint);
    }
    if (!label.empty()) {
        traits.label = std::move(label);
    }
    traits.isInternal = isInternalDevice(*device);
    return traits;
}

} // namespace tallyroom
