#pragma once
// The drive letters and volumes of the system with the device names they stand for, built once
// at process start. Where the system has no drive letters the drive list stays empty and each
// mounted file system is a volume.

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/DeviceTable.h"

namespace Zelmarik {

struct VolumeEntry {
    // The link's name, such as `Volume{...}`, or a mount point.
    std::u16string Name;
    // The device name the link points to.
    std::u16string Target;
    // 1 when one of the volume's mount paths is a removable drive.
    std::uint32_t Removable = 0;
};

struct DeviceTable {
    // Held for the whole of a refresh.
    std::mutex Lock;
    // Device name of drive A: to Z:; empty where the letter has no link.
    std::array<std::u16string, 26> Drives;
    std::vector<VolumeEntry> Volumes;
    std::uint32_t VolumeCount = 0;
    // The entry points the table is read through.
    std::unique_ptr<platform::DeviceNamespace> Namespace;
};

// A new empty table with its entry points resolved anew; null when one is missing.
std::unique_ptr<DeviceTable> CreateDeviceTable();

// Reads drives and volumes into `table`, or into the process's table when it is null. True
// when the list of volumes could be read.
bool RefreshDeviceTable(DeviceTable* table);

// The table made at start-up; null when making it failed.
DeviceTable* ProcessDeviceTable();

}  // namespace Zelmarik
