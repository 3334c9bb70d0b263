#include "archive/detail/DcfReader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <optional>

#include "Common/DataCategory/CategoryContainer.h"
#include "Shared/Tagger/Tagger.h"
#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/ArchiveNames.h"
#include "archive/detail/BufferedIo.h"
#include "archive/detail/DataStream.h"
#include "archive/detail/DcfRecords.h"
#include "archive/detail/FileFormat.h"
#include "archive/detail/FreshNames.h"
#include "archive/detail/KeyContext.h"
#include "platform/SecureMemory.h"
#include "platform/TargetTree.h"

namespace {

// What an entry leaves the run with.
struct EntryOutcome {
    enum Kind { Next, LeaveLoop, EndRun } kind = Next;
    FormatResult result = FORMAT_OK;
};

constexpr EntryOutcome kNextEntry{};
// The prefix of the names under which files are written before they take their own.
constexpr std::u16string_view kTempPrefix = u"st";

// What is done at an entry's path.
enum class Disposition {
    Write,
    Skip,
    ReplaceSource,  // written beside the source, which it replaces at the end of the run
};

// A file that is to take the place of the source at the end of the run.
struct PendingReplacement {
    RelativeName target;
    std::u16string temporary;  // its name in the target's folder meanwhile
};
EntryOutcome EndRunWith(FormatResult result) {
    return {EntryOutcome::EndRun, result};
}

FormatResult ReadPreamble(BufferedReader& source, Zelmarik::CCategoryContainer& categories,
                          bool& parsed) {
    parsed = false;
    std::array<std::uint8_t, dcf::kPreambleHeadSize> head{};
    if (!source.Read(head) || !dcf::HasSignature(head)) {
        return FORMAT_FAILED;
    }
    const std::uint32_t length = dcf::DecodePreambleLength(
        std::span<const std::uint8_t, 4>(head.data() + dcf::kSignatureSize, 4));
    if (length == 0) {
        return FORMAT_OK;
    }
    std::vector<std::uint8_t> preamble;
    if (!ReadPromised(source, length, preamble)) {
        return FORMAT_FAILED;
    }
    if (const auto block = dcf::PreambleCategoryBytes(preamble)) {
        parsed = Zelmarik::ReadCategoryBlock(*block, categories);
    }
    return FORMAT_OK;
}

// Extraction, or with `writeFiles` false a walk that proves every stream and writes nothing.
class ArchiveBodyReader {
public:
    ArchiveBodyReader(platform::File& stream, ArchiveExtractRequest& request,
                      DCCArchiveUserSettings& settings, std::vector<std::u16string>& extractedFiles,
                      DCIFileFormatCallback* callback, ArchiveReport& report, bool writeFiles)
        : stream_(stream),
          source_(stream),
          request_(request),
          settings_(settings),
          extractedFiles_(extractedFiles),
          callback_(callback),
          report_(report),
          writeFiles_(writeFiles) {}

    FormatResult Run();

private:
    FormatResult SkipPreamble();
    FormatResult OpenKeys();
    FormatResult ReadFolderHeader();
    // The folders created and the files to extract; nothing when the block is short.
    std::optional<FormatResult> ReadNames(dcf::NameLists& names);
    // The request's selection applied to the names: the names of the files under the target
    // (empty for a file left out), and the folders to make.
    std::vector<std::u16string> SelectEntries(dcf::NameLists& names) const;
    void CreateFolders(std::vector<std::u16string> folders);
    // `target` is the name under the target folder, empty when the entry is left out.
    EntryOutcome ExtractEntry(const std::u16string& name, const std::u16string& targetName);
    // What to do at the entry's path `target`; nothing when the run ends with `result`.
    std::optional<Disposition> Decide(const std::u16string& target, const RelativeName& where,
                                      FormatResult& result);
    // A new file beside the entry's target, named `temporary`; false when it can't be made.
    bool OpenTemporary(const RelativeName& where, platform::File& file, std::u16string& temporary);
    // Writes the entry's data to `file` and gives it the target's name, or for the source leaves
    // that to the end of the run.
    FormatResult WriteEntry(const RelativeName& where, platform::File& file,
                            std::u16string temporary, std::uint64_t size, bool replacesSource);
    // Counts the entry of `size` bytes as read to its end.
    void FinishEntry(std::uint64_t size);
    FormatResult RunDataStream(BufferedWriter* target, std::uint64_t size, bool skip);
    // Reads an entry's data stream to its end without writing it.
    EntryOutcome PassOver(std::uint64_t size);
    void CarryOutPendingReplacement();
    // A run that ends early leaves the source as it is, and no temporary file.
    void DropPendingReplacement();

    void ReportWriting(const std::u16string& path, bool skipped) {
        if (settings_.onFileWriting != nullptr) {
            settings_.onFileWriting(&path, skipped, settings_.Context(CALLBACK_FILE_WRITING));
        }
    }

    platform::File& stream_;
    BufferedReader source_;
    ArchiveExtractRequest& request_;
    DCCArchiveUserSettings& settings_;
    std::vector<std::u16string>& extractedFiles_;
    DCIFileFormatCallback* callback_;
    ArchiveReport& report_;
    const bool writeFiles_;

    KeyContextPtr keys_;
    dcf::FolderHeader header_;
    std::optional<DataStreamReader> streams_;
    std::u16string targetRoot_;
    std::uint64_t processed_ = 0;
    platform::TargetTree tree_;
    std::optional<platform::FileIdentity> sourceIdentity_;
    std::optional<PendingReplacement> pending_;
    std::optional<FreshNames> fresh_;
    std::uint64_t entryStart_ = 0;  // where the entry's header begins in the image
};

FormatResult ArchiveBodyReader::SkipPreamble() {
    // The categories of the whole archive are parsed and dropped: extraction takes each file's
    // own, and a damaged preamble is no reason to refuse the archive.
    Zelmarik::CCategoryContainer categories;
    bool parsed = false;
    return ReadPreamble(source_, categories, parsed);
}

FormatResult ArchiveBodyReader::OpenKeys() {
    dcf::KeyBlock keyBlock{};
    if (!source_.Read(keyBlock)) {
        return FORMAT_FAILED;
    }
    const auto password = dcf::PasswordBytes(request_.password);
    if (!password) {
        return FORMAT_BAD_KEY;  // longer than the format has room for: no archive opens with it
    }
    const Zelmarik::DCCSecurityKey& key = request_.securityKey;
    const bool hasPrimes = (key.Flags & Zelmarik::KeyHasPrivate) != 0 && key.PrivateKey &&
                           key.PrivateKey->HasAllNumbers();
    const std::uint32_t* prime1 = hasPrimes ? key.PrivateKey->Numbers[0].data() : nullptr;
    const std::uint32_t* prime2 = hasPrimes ? key.PrivateKey->Numbers[1].data() : nullptr;
    switch (OpenKeyBlock(keyBlock, *password, keys_, prime1, prime2)) {
        case kKeyBlockOpened:
            report_.keysOpened = true;
            report_.suiteId = keys_->SuiteId;
            report_.created = keys_->Created;
            return FORMAT_OK;
        case kKeyBlockRefused:
            return FORMAT_BAD_KEY;
        default:
            return FORMAT_FAILED;
    }
}

FormatResult ArchiveBodyReader::ReadFolderHeader() {
    std::array<std::uint8_t, dcf::kFolderHeaderSize> record{};
    if (!source_.Read(record) || !DecryptRegion(*keys_, record)) {
        return FORMAT_FAILED;
    }
    const auto header = dcf::DecodeFolderHeader(record);
    if (!header) {
        return FORMAT_FAILED;
    }
    header_ = *header;
    report_.headerRead = true;
    report_.formatVersion = header_.formatVersion;
    report_.fileCount = header_.fileCount;
    report_.folderCount = header_.folderCount;
    report_.totalSize = header_.totalSize;
    if (dcf::HasEndOfHeaderBlock(header_.formatVersion)) {
        std::array<std::uint8_t, dcf::kEndOfHeaderSize> end{};
        if (!source_.Read(end) || !DecryptRegion(*keys_, end) || !dcf::IsEndOfHeader(end)) {
            return FORMAT_FAILED;
        }
    }
    return FORMAT_OK;
}

std::optional<FormatResult> ArchiveBodyReader::ReadNames(dcf::NameLists& names) {
    if (header_.nameBlockLength > std::numeric_limits<std::uint32_t>::max()) {
        return FORMAT_FAILED;
    }
    std::vector<std::uint8_t> block;
    if (!ReadPromised(source_, header_.nameBlockLength, block)) {
        return std::nullopt;
    }
    if (!DecryptRegion(*keys_, block)) {
        return FORMAT_FAILED;
    }
    auto lists = dcf::ParseNameBlock(block, header_.folderCount, header_.fileCount);
    if (!lists) {
        return FORMAT_FAILED;
    }
    // Every name is judged before anything is written.
    for (const auto* list : {&lists->folders, &lists->files}) {
        const auto unsafe = std::find_if_not(
            list->begin(), list->end(), [](const auto& name) { return IsSafeArchiveName(name); });
        if (unsafe != list->end()) {
            report_.unsafeName = *unsafe;
            return FORMAT_FAILED;
        }
    }
    names = std::move(*lists);
    report_.namesRead = true;
    report_.folders = names.folders;
    return FORMAT_OK;
}

std::vector<std::u16string> ArchiveBodyReader::SelectEntries(dcf::NameLists& names) const {
    if (!request_.selectEntry) {
        return names.files;
    }
    // A rewritten name must be as safe as the stored ones.
    const auto chosen = [this](std::u16string& name) {
        return request_.selectEntry(name) && IsSafeArchiveName(name);
    };
    std::vector<std::u16string> folders;
    for (std::u16string folder : names.folders) {
        if (chosen(folder)) {
            folders.push_back(std::move(folder));
        }
    }
    std::vector<std::u16string> targets;
    for (std::u16string file : names.files) {
        if (!chosen(file)) {
            file.clear();
        }
        for (std::size_t at = file.find(u'\\', 1); at != std::u16string::npos;
             at = file.find(u'\\', at + 1)) {
            folders.push_back(file.substr(0, at));
        }
        targets.push_back(std::move(file));
    }
    std::sort(folders.begin(), folders.end());
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    names.folders = std::move(folders);
    return targets;
}

void ArchiveBodyReader::CreateFolders(std::vector<std::u16string> folders) {
    // Code unit order puts every folder in front of what lies in it.
    std::sort(folders.begin(), folders.end());
    for (const auto& folder : folders) {
        std::u16string path = RelativeArchivePath(folder);
        if (tree_.MakeFolder(path) == platform::kErrorSuccess) {  // failures ignored
            fresh_->FolderMade(std::move(path));
        }
    }
}

std::optional<Disposition> ArchiveBodyReader::Decide(const std::u16string& target,
                                                     const RelativeName& where,
                                                     FormatResult& result) {
    platform::EntryKind kind = platform::EntryKind::Missing;
    platform::FileIdentity identity;
    if (tree_.Look(where.folder, where.leaf, kind, identity) != platform::kErrorSuccess) {
        return Disposition::Write;  // the folder can't be reached: making the file tells why
    }
    const bool isSource = kind == platform::EntryKind::File && sourceIdentity_ == identity;
    if (isSource && request_.mayReplaceSource) {
        return Disposition::ReplaceSource;
    }
    if (kind == platform::EntryKind::Missing) {
        return Disposition::Write;
    }
    // Only a file other than the source may be replaced, and only that is offered to the user.
    const bool replaceable = kind == platform::EntryKind::File && !isSource;
    OverwriteMode decision = settings_.overwriteMode;
    if (decision == OVERWRITE_ASK) {
        if (settings_.onFileExists == nullptr) {
            decision = OVERWRITE_CANCEL;
        } else if (replaceable) {
            bool unused = false;
            decision =
                settings_.onFileExists(&target, &unused, settings_.Context(CALLBACK_FILE_EXISTS));
        }
    }
    if (decision == OVERWRITE_CANCEL) {
        result = FORMAT_CANCELLED;
        return std::nullopt;
    }
    if (decision == OVERWRITE_SKIP) {
        return Disposition::Skip;
    }
    if (!replaceable) {
        report_.obstacle = isSource                              ? TargetObstacle::SourceArchive
                           : kind == platform::EntryKind::Folder ? TargetObstacle::Folder
                                                                 : TargetObstacle::NotAFile;
        result = FORMAT_TARGET_OPEN_FAILED;
        return std::nullopt;
    }
    return Disposition::Write;
}

bool ArchiveBodyReader::OpenTemporary(const RelativeName& where, platform::File& file,
                                      std::u16string& temporary) {
    report_.targetError = tree_.CreateTempFile(where.folder, kTempPrefix, file, temporary);
    return report_.targetError == platform::kErrorSuccess;
}

FormatResult ArchiveBodyReader::WriteEntry(const RelativeName& where, platform::File& file,
                                           std::u16string temporary, std::uint64_t size,
                                           bool replacesSource) {
    // The new file takes the target's name only when it is complete: a link or a second name of
    // the old file never receives a byte, and the old file stays until the new one is whole.
    FormatResult written = FORMAT_OK;
    {
        // No more buffer than the file needs: a small file pays for no large one.
        BufferedWriter writer(
            file, static_cast<std::size_t>(std::min<std::uint64_t>(size, kIoBufferSize)));
        written = RunDataStream(&writer, size, false);
    }
    file.Close();
    if (written != FORMAT_OK) {
        if (request_.keepPartialFile && !replacesSource) {
            tree_.Rename(where.folder, temporary, where.leaf);
        } else {
            tree_.RemoveFile(where.folder, temporary);
        }
        return written;
    }
    if (replacesSource) {
        DropPendingReplacement();  // a second entry of the source's name: the last one counts
        pending_ = PendingReplacement{where, std::move(temporary)};
        return FORMAT_OK;
    }
    if (const platform::ErrorCode error = tree_.Rename(where.folder, temporary, where.leaf);
        error != platform::kErrorSuccess) {
        tree_.RemoveFile(where.folder, temporary);
        report_.targetError = error;
        return FORMAT_TARGET_OPEN_FAILED;
    }
    return FORMAT_OK;
}

FormatResult ArchiveBodyReader::RunDataStream(BufferedWriter* target, std::uint64_t size,
                                              bool skip) {
    try {
        return dcf::UsesChunks(header_.formatVersion)
                   ? streams_->ReadDataStream(target, size, processed_, skip)
                   : streams_->ReadLegacyDataStream(target, size, processed_, skip);
    } catch (...) {
        return FORMAT_FAILED;
    }
}

void ArchiveBodyReader::FinishEntry(std::uint64_t size) {
    processed_ += size;
    ++report_.entriesDone;
    report_.entries.back().packedSize = streams_->Position() - entryStart_;
}

EntryOutcome ArchiveBodyReader::PassOver(std::uint64_t size) {
    const FormatResult read = RunDataStream(nullptr, size, true);
    if (read != FORMAT_OK) {
        return EndRunWith(read);
    }
    FinishEntry(size);
    return kNextEntry;
}

EntryOutcome ArchiveBodyReader::ExtractEntry(const std::u16string& name,
                                             const std::u16string& targetName) {
    if (settings_.IsCancelled()) {
        return EndRunWith(FORMAT_CANCELLED);
    }
    std::optional<EntryHead> head = streams_->ReadEntryHead();
    if (!head) {
        return {EntryOutcome::LeaveLoop, FORMAT_FAILED};
    }
    entryStart_ = head->start;
    const dcf::FileHeader& header = head->header;
    Zelmarik::CCategoryContainer categories;
    if (!head->tagBlock.empty()) {
        Zelmarik::ReadCategoryBlock(head->tagBlock, categories);  // a damaged block tags nothing
    }
    report_.entries.push_back({name, header.size, 0, header.tagFlag != 0, categories});
    if (!writeFiles_ || targetName.empty()) {
        return PassOver(header.size);  // proven, or left out
    }

    std::u16string target = JoinArchiveName(targetRoot_, targetName);
    const RelativeName where = SplitArchiveName(targetName);
    FormatResult ended = FORMAT_OK;
    const std::optional<Disposition> disposition =
        fresh_->NeedNoLook(targetName, where) ? Disposition::Write : Decide(target, where, ended);
    if (!disposition) {
        return EndRunWith(ended);
    }
    if (*disposition == Disposition::Skip) {
        ReportWriting(target, true);
        return PassOver(header.size);
    }

    const bool replacesSource = *disposition == Disposition::ReplaceSource;
    platform::File file;
    std::u16string temporary;
    if (replacesSource) {
        // Named and told by its temporary name until it takes the source's place.
        if (!OpenTemporary(where, file, temporary)) {
            return EndRunWith(FORMAT_TARGET_OPEN_FAILED);
        }
        target.resize(target.size() - where.leaf.size());
        target += temporary;
    }
    ReportWriting(target, false);
    if (!replacesSource && !OpenTemporary(where, file, temporary)) {
        return EndRunWith(FORMAT_TARGET_OPEN_FAILED);
    }
    const FormatResult written =
        WriteEntry(where, file, std::move(temporary), header.size, replacesSource);
    if (written != FORMAT_OK) {
        return EndRunWith(written);
    }
    FinishEntry(header.size);

    if (header.tagFlag != 0) {
        try {
            // Through the folder's handle: a folder swapped in meanwhile can't lead it away.
            const std::u16string tagged =
                tree_.PathOf(where.folder, replacesSource ? pending_->temporary : where.leaf);
            Zelmarik::CTagger::WriteThrow(tagged.c_str(), categories, nullptr);
        } catch (const Zelmarik::TaggerException&) {
            // The file stays extracted without its categories.
        }
    }
    extractedFiles_.push_back(target);
    if (settings_.onFileDone != nullptr) {
        settings_.onFileDone(&target, settings_.Context(CALLBACK_FILE_DONE));
    }
    if (callback_ != nullptr) {
        callback_->OnFileExtracted(target);
    }
    return kNextEntry;
}

void ArchiveBodyReader::CarryOutPendingReplacement() {
    if (!pending_) {
        return;
    }
    // Where the source can't lose its name while it is open (Windows), it stays and the
    // replacement goes.
    const RelativeName& target = pending_->target;
    if (tree_.Rename(target.folder, pending_->temporary, target.leaf) != platform::kErrorSuccess) {
        tree_.RemoveFile(target.folder, pending_->temporary);
    }
    pending_.reset();
}

void ArchiveBodyReader::DropPendingReplacement() {
    if (pending_) {
        tree_.RemoveFile(pending_->target.folder, pending_->temporary);
        pending_.reset();
    }
}

FormatResult ArchiveBodyReader::Run() {
    for (const auto step : {&ArchiveBodyReader::SkipPreamble, &ArchiveBodyReader::OpenKeys,
                            &ArchiveBodyReader::ReadFolderHeader}) {
        if (const FormatResult result = (this->*step)(); result != FORMAT_OK) {
            return result;
        }
    }
    targetRoot_ = TargetRoot(request_.targetPath);
    dcf::NameLists names;
    const std::optional<FormatResult> named = ReadNames(names);
    if (!named) {
        return FORMAT_OK;  // a name block cut short: nothing to extract
    }
    if (*named != FORMAT_OK) {
        return *named;
    }
    const std::vector<std::u16string> targets =
        writeFiles_ ? SelectEntries(names) : std::vector<std::u16string>(names.files.size());
    if (writeFiles_) {
        // Nothing is written until the target opens; each file then fails with the reason.
        report_.targetError = tree_.Open(targetRoot_);
        if (platform::FileIdentity identity;
            platform::IdentityOf(stream_, identity) == platform::kErrorSuccess) {
            sourceIdentity_ = identity;
        }
        fresh_.emplace(names.folders, targets);
        CreateFolders(std::move(names.folders));
    }
    streams_.emplace(source_, *keys_, settings_, header_.totalSize,
                     CodecWorkers(settings_.codecWorkers));
    streams_->ExpectEntries(header_.formatVersion, names.files.size());

    FormatResult failure = FORMAT_OK;
    for (std::size_t i = 0; i < names.files.size(); ++i) {
        const EntryOutcome outcome = ExtractEntry(names.files[i], targets[i]);
        if (outcome.kind == EntryOutcome::EndRun) {
            DropPendingReplacement();
            return outcome.result;
        }
        if (outcome.kind == EntryOutcome::LeaveLoop) {
            failure = outcome.result;
            break;
        }
    }
    CarryOutPendingReplacement();
    return failure;
}

[[gnu::noinline]] FormatResult ReadBody(platform::File& stream, ArchiveExtractRequest& request,
                                        DCCArchiveUserSettings& settings,
                                        std::vector<std::u16string>& extractedFiles,
                                        DCIFileFormatCallback* callback, ArchiveReport& report,
                                        bool writeFiles) {
    try {
        ArchiveBodyReader reader(stream, request, settings, extractedFiles, callback, report,
                                 writeFiles);
        return reader.Run();
    } catch (const std::bad_alloc&) {
        return FORMAT_FAILED;
    }
}

// A whole run; the key schedules and decryptions leave pieces of the keys on the stack, which
// go with it.
FormatResult RunReader(platform::File& stream, ArchiveExtractRequest& request,
                       DCCArchiveUserSettings& settings,
                       std::vector<std::u16string>& extractedFiles, DCIFileFormatCallback* callback,
                       ArchiveReport& report, bool writeFiles) {
    const FormatResult result =
        ReadBody(stream, request, settings, extractedFiles, callback, report, writeFiles);
    platform::WipeStackBelow();
    return result;
}

}  // namespace

FormatResult ReadArchiveBody(platform::File& stream, ArchiveExtractRequest& request,
                             DCCArchiveUserSettings& settings,
                             std::vector<std::u16string>& extractedFiles,
                             DCIFileFormatCallback* callback, ArchiveReport& report) {
    extractedFiles.clear();
    return RunReader(stream, request, settings, extractedFiles, callback, report, true);
}

FormatResult ReadArchiveBody(platform::File& stream, ArchiveExtractRequest& request,
                             DCCArchiveUserSettings& settings,
                             std::vector<std::u16string>& extractedFiles,
                             DCIFileFormatCallback* callback) {
    ArchiveReport report;
    return ReadArchiveBody(stream, request, settings, extractedFiles, callback, report);
}

FormatResult InspectArchiveBody(platform::File& stream, ArchiveExtractRequest& request,
                                DCCArchiveUserSettings& settings, ArchiveReport& report) {
    std::vector<std::u16string> noFiles;
    return RunReader(stream, request, settings, noFiles, nullptr, report, false);
}

FormatResult ReadArchivePreamble(platform::File& stream, Zelmarik::CCategoryContainer& categories,
                                 bool& parsed) {
    try {
        BufferedReader source(stream);
        return ReadPreamble(source, categories, parsed);
    } catch (const std::bad_alloc&) {
        return FORMAT_FAILED;
    }
}
