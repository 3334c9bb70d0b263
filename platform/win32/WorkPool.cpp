#include "platform/WorkPool.h"

#include <windows.h>

#include <new>

namespace platform {
namespace {

class Win32Event final : public WorkEvent {
public:
    explicit Win32Event(HANDLE handle) : handle_(handle) {}
    ~Win32Event() override { ::CloseHandle(handle_); }
    Win32Event(const Win32Event&) = delete;
    Win32Event& operator=(const Win32Event&) = delete;

    void Set() override { ::SetEvent(handle_); }

    WaitOutcome Wait(std::optional<std::chrono::milliseconds> timeout) override {
        DWORD milliseconds = INFINITE;
        if (timeout) {
            const auto count = timeout->count();
            milliseconds =
                count <= 0 ? 0 : static_cast<DWORD>(count < INFINITE - 1 ? count : INFINITE - 1);
        }
        switch (::WaitForSingleObject(handle_, milliseconds)) {
            case WAIT_OBJECT_0:
                return WaitOutcome::Signalled;
            case WAIT_TIMEOUT:
                return WaitOutcome::TimedOut;
            default:
                return WaitOutcome::Failed;
        }
    }

private:
    HANDLE handle_;
};

struct WorkItem {
    WorkFunction work;
    void* context;
};

DWORD WINAPI RunWorkItem(LPVOID parameter) {
    const WorkItem item = *static_cast<WorkItem*>(parameter);
    delete static_cast<WorkItem*>(parameter);
    return item.work(item.context);
}

}  // namespace

std::unique_ptr<WorkEvent> WorkEvent::Create() {
    const HANDLE handle = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (handle == nullptr) {
        return nullptr;
    }
    return std::make_unique<Win32Event>(handle);
}

bool QueueWorkItem(WorkFunction work, void* context) {
    if (work == nullptr) {
        return false;
    }
    auto* item = new (std::nothrow) WorkItem{work, context};
    if (item == nullptr) {
        return false;
    }
    if (!::QueueUserWorkItem(&RunWorkItem, item,
                             WT_EXECUTELONGFUNCTION | WT_TRANSFER_IMPERSONATION)) {
        delete item;
        return false;
    }
    return true;
}

}  // namespace platform
