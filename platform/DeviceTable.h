#pragma once
// The system's own names of drives and volumes. On Windows these are the links of the object
// manager: `\DosDevices\X:` for each drive letter and the `Volume{...}` links of `\GLOBAL??`.
// Elsewhere there are no drive letters, and each mounted file system is a volume, named by its
// mount point and pointing at its source.

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace platform {

struct VolumeLink {
    // The link's name, such as `Volume{...}`, or a mount point.
    std::u16string Name;
    // The device the link points to.
    std::u16string Target;
    // One of the volume's mount paths is on a removable drive.
    bool Removable = false;
};

// Reads the namespace through entry points resolved when it is opened.
class DeviceNamespace {
public:
    // Null when an entry point the reading needs is missing.
    static std::unique_ptr<DeviceNamespace> Open();
    virtual ~DeviceNamespace() = default;

    // The target of each drive letter, A to Z; empty where the letter has no link.
    virtual std::array<std::u16string, 26> DriveTargets() = 0;
    // Appends one entry per volume; false when the list of volumes could not be opened.
    virtual bool ListVolumes(std::vector<VolumeLink>& volumes) = 0;
};

}  // namespace platform
