// Pictures of the extraction dialog for the documentation: each template as it opens and while
// it extracts, in its own language. Writes 32-bit BMP files into the current folder.

#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "frontend/LocalizedStrings.h"
#include "frontend/resources/DialogControls.h"
#include "frontend/win32/ExtractionDialog.h"

namespace {

struct Picture {
    WORD templateId;
    const char16_t* language;
};

const Picture kPictures[] = {
    {129, u"English"},    {130, u"Čeština"}, {133, u"Français"},  {134, u"Español"},
    {135, u"Tiếng Việt"}, {136, u"Deutsch"}, {137, u"Português"}, {138, u"Русский"},
};

const wchar_t* Wide(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

void Pump(DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (GetTickCount64() < end) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
        Sleep(10);
    }
}

// The window with its frame, as the screen shows it, into a top-down 32-bit BMP file.
bool Capture(HWND window, const std::string& path) {
    RECT frame{};
    GetWindowRect(window, &frame);
    const LONG width = frame.right - frame.left;
    const LONG height = frame.bottom - frame.top;
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ previous = SelectObject(memory, bitmap);
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    const bool painted = bitmap != nullptr && BitBlt(memory, 0, 0, width, height, screen,
                                                     frame.left, frame.top, SRCCOPY);
    bool written = false;
    if (painted) {
        const DWORD pixelBytes = static_cast<DWORD>(width * height * 4);
        BITMAPFILEHEADER header{};
        header.bfType = 0x4D42;  // "BM"
        header.bfOffBits = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
        header.bfSize = header.bfOffBits + pixelBytes;
        if (std::FILE* file = std::fopen(path.c_str(), "wb"); file != nullptr) {
            written = std::fwrite(&header, sizeof(header), 1, file) == 1 &&
                      std::fwrite(&info.bmiHeader, sizeof(info.bmiHeader), 1, file) == 1 &&
                      std::fwrite(bits, pixelBytes, 1, file) == 1;
            written = std::fclose(file) == 0 && written;
        }
    }
    SelectObject(memory, previous);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return written;
}

// The dialog while it extracts: full height, inputs disabled, progress and status line shown.
void ShowRunning(HWND dialog) {
    constexpr int kProgressRowsHeight = 60;
    RECT frame{};
    GetWindowRect(dialog, &frame);
    MoveWindow(dialog, frame.left, frame.top, frame.right - frame.left,
               frame.bottom - frame.top + kProgressRowsHeight, TRUE);
    SetControlsBusy(false, true);
    SendDlgItemMessageW(dialog, IDC_PROGRESS_BAR, PBM_SETPOS, 45, 0);
    std::u16string status = LocalizedStrings.GetLocalizedString(u"IDS_DECOMPRESSING_FILE");
    const std::u16string file = u"C:\\Users\\Recipient\\Downloads\\Offer\\prices.xlsx";
    ReplaceFilenameMarker(status, &file);
    status.pop_back();  // the closing "!", as the status line shows it
    SetDlgItemTextW(dialog, IDC_STATUS_LINE, Wide(status));
}

}  // namespace

int main() {
    LocalizedStrings.BuildStringTable();
    RegisterDialogControls();
    int failures = 0;
    for (const Picture& picture : kPictures) {
        LocalizedStrings.SelectLanguage(picture.language);
        const HWND dialog =
            CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(picture.templateId),
                               nullptr, ExtractionDialogProc, 0);
        if (dialog == nullptr) {
            std::fprintf(stderr, "template %u: no dialog\n", picture.templateId);
            ++failures;
            continue;
        }
        SetDlgItemTextW(dialog, IDC_TARGET_FOLDER, L"C:\\Users\\Recipient\\Downloads\\");
        ShowWindow(dialog, SW_SHOW);
        Pump(300);
        const std::string name = "dialog-" + std::to_string(picture.templateId);
        failures += !Capture(dialog, name + ".bmp");
        SetDlgItemTextW(dialog, IDC_PASSWORD, L"secret");
        ShowRunning(dialog);
        Pump(300);
        failures += !Capture(dialog, name + "-running.bmp");
        DestroyWindow(dialog);
    }
    return failures == 0 ? 0 : 1;
}
