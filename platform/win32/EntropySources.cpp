#include "platform/EntropySources.h"

#include <windows.h>
// wincrypt.h needs the types of windows.h first.
#include <wincrypt.h>

#include <cwchar>
#include <new>

#include "platform/SecureMemory.h"

namespace platform {
namespace {

constexpr DWORD kSystemRandomSize = 512;
constexpr int kSlowPollSystemRandomRounds = 100;
constexpr DWORD kDiskPerformanceCode = 0x70020;  // IOCTL_DISK_PERFORMANCE
constexpr DWORD kDiskPerformanceSize = 88;
constexpr UINT kQueueStatusMask = 1215;
constexpr DWORD kMaxProductTypeBytes = 32;

using NetStatisticsGetCall = DWORD(WINAPI*)(LPWSTR, LPWSTR, DWORD, DWORD, LPBYTE*);
using NetApiBufferSizeCall = DWORD(WINAPI*)(LPVOID, LPDWORD);
using NetApiBufferFreeCall = DWORD(WINAPI*)(LPVOID);

// Process-wide: they outlive one run of the pool.
LONG workstationFlag = -1;
bool startupInfoDone = false;
BYTE systemRandomBuffer[kSystemRandomSize];

std::uint32_t Low32(const void* handle) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

std::uint32_t Low32(ULONG_PTR value) {
    return static_cast<std::uint32_t>(value);
}

template <typename Call>
Call Entry(HMODULE module, const char* name) {
    return reinterpret_cast<Call>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)));
}

// MEMORYSTATUS in its 32-byte form, whatever the width of SIZE_T.
void AddMemoryStatus(EntropySink& sink) {
    MEMORYSTATUS status{};
    status.dwLength = sizeof(status);
    ::GlobalMemoryStatus(&status);
    sink.AddWord(32);
    sink.AddWord(status.dwMemoryLoad);
    sink.AddWord(Low32(status.dwTotalPhys));
    sink.AddWord(Low32(status.dwAvailPhys));
    sink.AddWord(Low32(status.dwTotalPageFile));
    sink.AddWord(Low32(status.dwAvailPageFile));
    sink.AddWord(Low32(status.dwTotalVirtual));
    sink.AddWord(Low32(status.dwAvailVirtual));
}

// STARTUPINFOW in its 68-byte form, whatever the width of pointers and handles.
void AddStartupInfo(EntropySink& sink) {
    STARTUPINFOW info{};
    info.cb = sizeof(info);
    ::GetStartupInfoW(&info);
    sink.AddWord(68);
    sink.AddWord(Low32(info.lpReserved));
    sink.AddWord(Low32(info.lpDesktop));
    sink.AddWord(Low32(info.lpTitle));
    for (const DWORD value : {info.dwX, info.dwY, info.dwXSize, info.dwYSize, info.dwXCountChars,
                              info.dwYCountChars, info.dwFillAttribute, info.dwFlags}) {
        sink.AddWord(value);
    }
    sink.AddWord(static_cast<std::uint32_t>(info.wShowWindow) |
                 static_cast<std::uint32_t>(info.cbReserved2) << 16);
    sink.AddWord(Low32(info.lpReserved2));
    sink.AddWord(Low32(info.hStdInput));
    sink.AddWord(Low32(info.hStdOutput));
    sink.AddWord(Low32(info.hStdError));
}

void AddTimes(EntropySink& sink, const FILETIME (&times)[4]) {
    for (const FILETIME& time : times) {
        sink.AddObject(&time, sizeof(time));
    }
}

void AddPoint(EntropySink& sink, const POINT& point) {
    sink.AddWord(static_cast<std::uint32_t>(point.x));
    sink.AddWord(static_cast<std::uint32_t>(point.y));
}

void ReadWorkstationFlag() {
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\ProductOptions",
                        0, KEY_READ, &key) != ERROR_SUCCESS) {
        return;
    }
    workstationFlag = 1;
    wchar_t productType[kMaxProductTypeBytes / sizeof(wchar_t) + 1] = {};
    DWORD size = kMaxProductTypeBytes;
    if (::RegQueryValueExW(key, L"ProductType", nullptr, nullptr,
                           reinterpret_cast<BYTE*>(productType), &size) == ERROR_SUCCESS) {
        productType[size / sizeof(wchar_t)] = L'\0';
        workstationFlag = ::lstrcmpiW(productType, L"WinNT") == 0 ? 1 : 0;
    }
    ::RegCloseKey(key);
}

class WindowsEntropySources final : public EntropySources {
public:
    WindowsEntropySources() {
        if (!::CryptAcquireContextW(&provider_, nullptr, nullptr, PROV_RSA_FULL, 0) &&
            !::CryptAcquireContextW(&provider_, nullptr, nullptr, PROV_RSA_FULL, CRYPT_NEWKEYSET)) {
            provider_ = 0;
        }
    }

    ~WindowsEntropySources() override {
        if (netApi_ != nullptr) {
            ::FreeLibrary(netApi_);
        }
        if (provider_ != 0) {
            ::CryptReleaseContext(provider_, 0);
        }
        SecureWipe(systemRandomBuffer, sizeof(systemRandomBuffer));
    }

    WindowsEntropySources(const WindowsEntropySources&) = delete;
    WindowsEntropySources& operator=(const WindowsEntropySources&) = delete;

    void FastPoll(EntropySink& sink) override {
        for (const std::uint32_t value :
             {Low32(::GetActiveWindow()), Low32(::GetCapture()), Low32(::GetClipboardOwner()),
              Low32(::GetClipboardViewer()), Low32(::GetCurrentProcess()),
              static_cast<std::uint32_t>(::GetCurrentProcessId()), Low32(::GetCurrentThread()),
              static_cast<std::uint32_t>(::GetCurrentThreadId()),
              static_cast<std::uint32_t>(::GetTickCount()), Low32(::GetDesktopWindow()),
              Low32(::GetFocus()), static_cast<std::uint32_t>(::GetInputState()),
              static_cast<std::uint32_t>(::GetMessagePos()),
              static_cast<std::uint32_t>(::GetMessageTime()), Low32(::GetOpenClipboardWindow()),
              Low32(::GetProcessHeap()), Low32(::GetProcessWindowStation()),
              static_cast<std::uint32_t>(::GetQueueStatus(kQueueStatusMask))}) {
            sink.AddWord(value);
        }
        POINT point{};
        if (::GetCaretPos(&point)) {
            AddPoint(sink, point);
        }
        if (::GetCursorPos(&point)) {
            AddPoint(sink, point);
        }
        AddMemoryStatus(sink);
        FILETIME times[4] = {};
        if (::GetThreadTimes(::GetCurrentThread(), &times[0], &times[1], &times[2], &times[3])) {
            AddTimes(sink, times);
        }
        if (::GetProcessTimes(::GetCurrentProcess(), &times[0], &times[1], &times[2], &times[3])) {
            AddTimes(sink, times);
        }
        SIZE_T minimum = 0;
        SIZE_T maximum = 0;
        if (::GetProcessWorkingSetSize(::GetCurrentProcess(), &minimum, &maximum)) {
            sink.AddWord(Low32(minimum));
            sink.AddWord(Low32(maximum));
        }
        if (!startupInfoDone) {
            startupInfoDone = true;
            AddStartupInfo(sink);
        }
        LARGE_INTEGER counter{};
        if (::QueryPerformanceCounter(&counter)) {
            sink.AddObject(&counter, sizeof(counter));
        } else {
            sink.AddWord(::GetTickCount());
        }
        AddSystemRandom(sink);
    }

    void SlowPoll(EntropySink& sink) override {
        if (workstationFlag == -1) {
            ReadWorkstationFlag();
        }
        if (netApi_ == nullptr) {
            LoadNetApi();
        }
        if (netApi_ != nullptr) {
            AddNetworkStatistics(sink);
        }
        AddDiskPerformance(sink);
        for (int round = 0; round < kSlowPollSystemRandomRounds; ++round) {
            AddSystemRandom(sink);
        }
    }

private:
    void AddSystemRandom(EntropySink& sink) {
        if (provider_ != 0 &&
            ::CryptGenRandom(provider_, sizeof(systemRandomBuffer), systemRandomBuffer)) {
            sink.Add(systemRandomBuffer);
        }
    }

    void LoadNetApi() {
        netApi_ = ::LoadLibraryW(L"NETAPI32.DLL");
        if (netApi_ == nullptr) {
            return;
        }
        statisticsGet_ = Entry<NetStatisticsGetCall>(netApi_, "NetStatisticsGet");
        bufferSize_ = Entry<NetApiBufferSizeCall>(netApi_, "NetApiBufferSize");
        bufferFree_ = Entry<NetApiBufferFreeCall>(netApi_, "NetApiBufferFree");
        if (statisticsGet_ == nullptr || bufferSize_ == nullptr || bufferFree_ == nullptr) {
            ::FreeLibrary(netApi_);
            netApi_ = nullptr;
        }
    }

    void AddNetworkStatistics(EntropySink& sink) {
        wchar_t workstation[] = L"LanmanWorkstation";
        wchar_t server[] = L"LanmanServer";
        LPBYTE statistics = nullptr;
        if (statisticsGet_(nullptr, workstationFlag != 0 ? workstation : server, 0, 0,
                           &statistics) != 0) {
            return;
        }
        DWORD size = 0;
        if (bufferSize_(statistics, &size) == 0) {
            sink.AddObject(statistics, size);
        }
        bufferFree_(statistics);
    }

    static void AddDiskPerformance(EntropySink& sink) {
        for (int drive = 0;; ++drive) {
            wchar_t name[32];
            std::swprintf(name, sizeof(name) / sizeof(name[0]), L"\\\\.\\PhysicalDrive%d", drive);
            const HANDLE handle = ::CreateFileW(name, 0, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                nullptr, OPEN_EXISTING, 0, nullptr);
            if (handle == INVALID_HANDLE_VALUE) {
                return;
            }
            BYTE performance[kDiskPerformanceSize];
            DWORD returned = 0;
            if (::DeviceIoControl(handle, kDiskPerformanceCode, nullptr, 0, performance,
                                  sizeof(performance), &returned, nullptr)) {
                sink.AddObject(performance, returned);
            }
            ::CloseHandle(handle);
        }
    }

    HCRYPTPROV provider_ = 0;
    HMODULE netApi_ = nullptr;
    NetStatisticsGetCall statisticsGet_ = nullptr;
    NetApiBufferSizeCall bufferSize_ = nullptr;
    NetApiBufferFreeCall bufferFree_ = nullptr;
};

// The hooks of the thread that runs the pool, and where they report.
HHOOK keyboardHook = nullptr;
HHOOK mouseHook = nullptr;
KeyEventHandler keyHandler = nullptr;
MouseEventHandler mouseHandler = nullptr;

LRESULT CALLBACK KeyboardHookProc(int code, WPARAM wParam, LPARAM lParam) {
    if (code < 0) {
        return ::CallNextHookEx(nullptr, code, wParam, lParam);
    }
    keyHandler(static_cast<std::uint32_t>(lParam), ::GetTickCount());
    return 0;
}

LRESULT CALLBACK MouseHookProc(int code, WPARAM wParam, LPARAM lParam) {
    if (code < 0) {
        return ::CallNextHookEx(nullptr, code, wParam, lParam);
    }
    const auto* record = reinterpret_cast<const MOUSEHOOKSTRUCT*>(lParam);
    const MouseEvent event{record->pt.x, record->pt.y, Low32(record->hwnd),
                           static_cast<std::uint32_t>(record->wHitTestCode),
                           Low32(record->dwExtraInfo)};
    mouseHandler(event, ::GetTickCount());
    return 0;
}

}  // namespace

std::unique_ptr<EntropySources> OpenEntropySources() {
    return std::unique_ptr<EntropySources>(new (std::nothrow) WindowsEntropySources);
}

bool InstallInputHooks(KeyEventHandler onKey, MouseEventHandler onMouse) {
    keyHandler = onKey;
    mouseHandler = onMouse;
    const DWORD thread = ::GetCurrentThreadId();
    keyboardHook = ::SetWindowsHookExW(WH_KEYBOARD, KeyboardHookProc, nullptr, thread);
    mouseHook = ::SetWindowsHookExW(WH_MOUSE, MouseHookProc, nullptr, thread);
    return mouseHook != nullptr;
}

void RemoveInputHooks() {
    if (mouseHook != nullptr) {
        ::UnhookWindowsHookEx(mouseHook);
        mouseHook = nullptr;
    }
    if (keyboardHook != nullptr) {
        ::UnhookWindowsHookEx(keyboardHook);
        keyboardHook = nullptr;
    }
}

}  // namespace platform
