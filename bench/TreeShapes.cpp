// Archives of two extreme shapes for bench/tree-shapes.sh, made by the archive writer from
// names alone: no file is read, so every file is empty.
//   tree_shapes deep LEVELS OUT PASS   folders "d" nested LEVELS deep, a file "f" in the last
//   tree_shapes wide FILES OUT PASS    FILES files "f0", "f1", ... in one folder "w"
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "archive/Archive.h"
#include "platform/Text.h"

namespace {

// Items under a root that does not exist: the names are all the writer needs of them.
constexpr char16_t kRoot[] = u"/nonexistent-tree-shapes-root";

ArchiveWriteItem Item(const std::u16string& path, bool isFolder) {
    ArchiveWriteItem item;
    item.path = path;
    item.isFolder = isFolder;
    return item;
}

void AddDeep(ArchiveWriteRequest& request, long levels) {
    std::u16string path = kRoot;
    for (long level = 0; level < levels; ++level) {
        path += u"/d";
        request.items.push_back(Item(path, true));
    }
    request.items.push_back(Item(path + u"/f", false));
}

void AddWide(ArchiveWriteRequest& request, long files) {
    const std::u16string folder = std::u16string(kRoot) + u"/w";
    request.items.push_back(Item(folder, true));
    for (long i = 0; i < files; ++i) {
        request.items.push_back(
            Item(folder + u"/f" + platform::Utf8ToUtf16(std::to_string(i)), false));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string shape = argc == 5 ? argv[1] : "";
    const long count = argc == 5 ? std::atol(argv[2]) : 0;
    if ((shape != "deep" && shape != "wide") || count <= 0) {
        std::cerr << "usage: tree_shapes deep|wide COUNT OUT PASSWORD\n";
        return 2;
    }
    ArchiveWriteRequest request;
    // The names begin at the first folder: what stands before it is cut off.
    request.rootPath = std::u16string(kRoot) + (shape == "deep" ? u"/d" : u"/w");
    request.password = platform::Utf8ToUtf16(argv[4]);
    request.passwordGiven = true;
    shape == "deep" ? AddDeep(request, count) : AddWide(request, count);
    const std::filesystem::path out =
        std::filesystem::absolute(std::filesystem::path(platform::Utf8ToUtf16(argv[3])));
    request.archiveFolder = out.parent_path().u16string();
    request.archiveName = out.filename().u16string();
    DCCArchiveUserSettings settings;  // an archive of that name is replaced
    DCCFileFormatDCF format;
    const FormatResult result = format.WriteArchive(&request, &settings);
    if (result != FORMAT_OK) {
        std::cerr << "tree_shapes: " << argv[3] << ": " << DescribeFormatResult(result) << '\n';
        return 1;
    }
    return 0;
}
