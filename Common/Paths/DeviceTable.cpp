#include "Common/Paths/DeviceTable.h"

namespace Zelmarik {
namespace {

std::unique_ptr<DeviceTable> MakeProcessDeviceTable() {
    std::unique_ptr<DeviceTable> table = CreateDeviceTable();
    if (table && !RefreshDeviceTable(table.get())) {
        table.reset();
    }
    return table;
}

// Made at start-up and destroyed at exit.
const std::unique_ptr<DeviceTable> processTable = MakeProcessDeviceTable();

}  // namespace

std::unique_ptr<DeviceTable> CreateDeviceTable() {
    auto table = std::make_unique<DeviceTable>();
    table->Namespace = platform::DeviceNamespace::Open();
    if (!table->Namespace) {
        return nullptr;
    }
    return table;
}

bool RefreshDeviceTable(DeviceTable* table) {
    if (table == nullptr) {
        table = ProcessDeviceTable();
        if (table == nullptr) {
            return false;
        }
    }
    const std::lock_guard<std::mutex> lock(table->Lock);
    table->Volumes.clear();
    table->VolumeCount = 0;
    table->Drives = table->Namespace->DriveTargets();
    std::vector<platform::VolumeLink> links;
    const bool listed = table->Namespace->ListVolumes(links);
    for (platform::VolumeLink& link : links) {
        table->Volumes.push_back(
            {std::move(link.Name), std::move(link.Target), link.Removable ? 1u : 0u});
    }
    table->VolumeCount = static_cast<std::uint32_t>(table->Volumes.size());
    return listed;
}

DeviceTable* ProcessDeviceTable() {
    return processTable.get();
}

}  // namespace Zelmarik
