#include "platform/DeviceTable.h"

#include <fstream>
#include <string>

#include "platform/Text.h"
#include "platform/posix/MountTable.h"

namespace platform {
namespace {

// "1" in the sysfs entry of the block device, or of the disk a partition belongs to.
bool RemovableBlockDevice(unsigned major, unsigned minor) {
    if (major == 0) {
        return false;
    }
    const std::string device =
        "/sys/dev/block/" + std::to_string(major) + ":" + std::to_string(minor);
    for (const char* file : {"/removable", "/../removable"}) {
        std::ifstream flag(device + file);
        char value = 0;
        if (flag >> value) {
            return value == '1';
        }
    }
    return false;
}

// No drive letters here: every mount is a volume named by its mount point.
class MountNamespace final : public DeviceNamespace {
public:
    std::array<std::u16string, 26> DriveTargets() override { return {}; }

    bool ListVolumes(std::vector<VolumeLink>& volumes) override {
        std::vector<posix::MountEntry> mounts;
        if (!posix::ReadMountTable(mounts)) {
            return false;
        }
        for (const posix::MountEntry& mount : mounts) {
            volumes.push_back({Utf8ToUtf16(mount.MountPoint), Utf8ToUtf16(mount.Source),
                               RemovableBlockDevice(mount.Major, mount.Minor)});
        }
        return true;
    }
};

}  // namespace

std::unique_ptr<DeviceNamespace> DeviceNamespace::Open() {
    return std::make_unique<MountNamespace>();
}

}  // namespace platform
