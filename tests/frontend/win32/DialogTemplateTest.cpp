// The stub's resources as built: each dialog template against the layout table, and the
// executable's subsystem and imports.

#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "tests/frontend/win32/BuiltStub.h"
#include "tests/frontend/win32/ResourceReader.h"

namespace {

using tests::DialogItem;
using tests::DialogTemplate;

constexpr DWORD kEdit = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL;
constexpr DWORD kButton = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
constexpr DWORD kLabel = WS_CHILD | WS_VISIBLE | SS_RIGHT | SS_CENTERIMAGE | WS_GROUP;

struct Texts {
    WORD id;
    LANGID language;
    std::u16string caption, extractTo, password, privateKey, browse, cancel;
};

const std::vector<Texts> kTemplates = {
    {129, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), u"Extract archive", u"Extract to",
     u"Password", u"Private key", u"Browse...", u"Cancel"},
    {130, MAKELANGID(LANG_CZECH, SUBLANG_DEFAULT), u"Rozbalení archivu", u"Extrahovat do", u"Heslo",
     u"Privátní klíč", u"Procházet...", u"Zrušit"},
    {133, MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH), u"Décompression de l'archive", u"Extraire vers",
     u"Mot de passe", u"Clé privée", u"Parcourir...", u"Annuler"},
    {134, MAKELANGID(LANG_SPANISH, SUBLANG_SPANISH_MODERN), u"Descomprimir archivo", u"Extraer en ",
     u"Contraseña", u"Llave privada", u"Examinar...", u"Cancelar"},
    {135, MAKELANGID(LANG_VIETNAMESE, SUBLANG_DEFAULT), u"Bung nén lưu trữ", u"Bung nén ra ",
     u"Mật khẩu", u"Khóa riêng", u"Duyệt", u"Hủy bỏ"},
    {136, MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), u"Extrahieren des Archivs ",
     u"In .... extrahieren", u"Passwort", u"Privatschlüssel", u"Durchgehen...", u"Aufheben"},
    {137, MAKELANGID(LANG_PORTUGUESE, SUBLANG_PORTUGUESE_BRAZILIAN), u"Extraindo arquivo",
     u"Extrair para", u"Senha", u"Chave privada", u"Examinar", u"Cancelar"},
    {138, MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), u"Извлечение архива", u"Извлечь в ", u"Пароль",
     u"Закрытый ключ", u"Обзор", u"Отмена"},
};

// The English layout with the texts of `t`. The translations move a few controls by a unit or
// two, which only the English template is checked for.
DialogTemplate Expected(const Texts& t) {
    DialogTemplate d;
    d.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFONT;
    d.width = 247;
    d.height = 121;
    d.caption = t.caption;
    d.pointSize = 8;
    d.typeface = u"MS Shell Dlg";
    d.items = {
        {kEdit, 59, 7, 125, 14, 1007, u"edit", u""},
        {kButton, 190, 7, 50, 14, 1001, u"button", t.browse},
        {kEdit | ES_PASSWORD, 59, 24, 125, 14, 1008, u"edit", u""},
        {kEdit, 59, 41, 125, 14, 1009, u"edit", u""},
        {kButton, 190, 40, 50, 14, 1006, u"button", t.browse},
        {kButton | BS_DEFPUSHBUTTON, 134, 62, 50, 14, 1010, u"button", u"OK"},
        {kButton, 59, 62, 50, 14, 1011, u"button", t.cancel},
        {kLabel, 7, 25, 47, 12, -1, u"static", t.password},
        {kLabel, 7, 7, 47, 14, -1, u"static", t.extractTo},
        {kLabel, 7, 41, 47, 14, -1, u"static", t.privateKey},
        {WS_CHILD | WS_VISIBLE | WS_BORDER | PBS_SMOOTH, 10, 85, 225, 15, 1012,
         u"msctls_progress32", u""},
        {WS_CHILD | WS_VISIBLE | WS_GROUP, 10, 104, 225, 15, 1003, u"static", u""},
    };
    return d;
}

TEST(StubResources, EveryDialogTemplateMatchesItsLayoutAndLanguage) {
    const tests::ResourceModule stub(tests::BuiltStubPath());
    ASSERT_TRUE(stub.Loaded());
    for (const Texts& texts : kTemplates) {
        SCOPED_TRACE("template " + std::to_string(texts.id));
        EXPECT_TRUE(stub.HasLanguage(RT_DIALOG, texts.id, texts.language));
        const auto actual = tests::ParseDialogTemplate(stub.Bytes(RT_DIALOG, texts.id));
        ASSERT_TRUE(actual.has_value());
        const DialogTemplate expected = Expected(texts);
        const bool layout = texts.id == 129;
        EXPECT_EQ(actual->style, expected.style);
        EXPECT_TRUE(actual->caption == expected.caption);
        EXPECT_EQ(actual->pointSize, expected.pointSize);
        EXPECT_TRUE(actual->typeface == expected.typeface);
        ASSERT_EQ(actual->items.size(), expected.items.size());
        for (std::size_t i = 0; i < expected.items.size(); ++i) {
            const DialogItem& want = expected.items[i];
            const DialogItem& got = actual->items[i];
            SCOPED_TRACE("control " + std::to_string(want.id));
            EXPECT_EQ(got.id, want.id);
            EXPECT_TRUE(got.className == want.className);
            EXPECT_TRUE(got.text == want.text);
            EXPECT_EQ(got.style, want.style);
            if (layout) {
                EXPECT_EQ(std::tie(got.x, got.y, got.width, got.height),
                          std::tie(want.x, want.y, want.width, want.height));
            }
        }
        if (layout) {
            EXPECT_EQ(std::tie(actual->width, actual->height),
                      std::tie(expected.width, expected.height));
        }
    }
}

TEST(StubResources, GuiProgramThatNeedsOnlySystemLibraries) {
    const tests::ResourceModule stub(tests::BuiltStubPath());
    ASSERT_TRUE(stub.Loaded());
    EXPECT_EQ(stub.Subsystem(), IMAGE_SUBSYSTEM_WINDOWS_GUI);
    // A recipient's machine has the system's libraries and nothing else: the runtime and
    // zlib are linked in.
    const std::vector<std::string> system = {
        "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll",    "iphlpapi.dll",
        "kernel32.dll", "mpr.dll",      "msvcrt.dll",   "netapi32.dll", "ntdll.dll",
        "ole32.dll",    "rpcrt4.dll",   "shell32.dll",  "user32.dll",   "ws2_32.dll",
        "bcrypt.dll",   "crypt32.dll",  "shlwapi.dll"};
    const std::vector<std::string> imported = stub.ImportedDlls();
    EXPECT_FALSE(imported.empty());
    for (const std::string& dll : imported) {
        EXPECT_TRUE(std::find(system.begin(), system.end(), dll) != system.end() ||
                    dll.rfind("api-ms-win-", 0) == 0)
            << dll << " is not part of the system";
    }
}

}  // namespace
