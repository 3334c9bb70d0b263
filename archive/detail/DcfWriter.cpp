#include "archive/detail/DcfWriter.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>
#include <vector>

#include "Common/Common/SecureBuffer.h"
#include "archive/detail/ArchiveNames.h"
#include "archive/detail/BufferedIo.h"
#include "archive/detail/DataStreamWriter.h"
#include "archive/detail/DcfRecords.h"
#include "archive/detail/KeyBlockSealing.h"
#include "crypto/RandomPool.h"
#include "crypto/Rsa.h"

namespace {

using Zelmarik::CCategoryContainer;
using Zelmarik::SecureVector;

constexpr std::u16string_view kSeparators =
    platform::kPathSeparator == u'\\' ? std::u16string_view(u"\\/") : std::u16string_view(u"/");
constexpr char16_t kArchiveSeparator = u'\\';
constexpr std::uint64_t kCountLimit = std::numeric_limits<std::uint32_t>::max();

// The random pool runs from the start of the body until the key block is written.
class RandomPoolRun {
public:
    RandomPoolRun() { crypto::RandomStart(); }
    ~RandomPoolRun() { Stop(); }
    RandomPoolRun(const RandomPoolRun&) = delete;
    RandomPoolRun& operator=(const RandomPoolRun&) = delete;
    void Stop() {
        if (running_) {
            crypto::RandomStop();
            running_ = false;
        }
    }

private:
    bool running_ = true;
};

struct FileRecord {
    std::u16string name;
    dcf::FileHeader header;
    CCategoryContainer categories;
};

// Where the names of the items begin: at the last separator of the root, or at 0 without one.
std::size_t NameStart(const std::u16string& rootPath) {
    const std::size_t separator = rootPath.find_last_of(kSeparators);
    return separator == std::u16string::npos ? 0 : separator;
}

// An item's name in the archive: its path from the root's last separator on, with backslashes.
std::u16string ArchiveName(const std::u16string& path, std::size_t start) {
    std::u16string name = path.substr(start);
    for (char16_t& unit : name) {
        if (kSeparators.find(unit) != std::u16string_view::npos) {
            unit = kArchiveSeparator;
        }
    }
    return name;
}

void MergeCategories(CCategoryContainer& merged, const CCategoryContainer& item) {
    if (item.HasMarked || std::any_of(item.Categories.begin(), item.Categories.end(),
                                      [](const auto& category) { return category.Marked; })) {
        merged.HasMarked = true;
    }
    for (const auto& category : item.Categories) {
        merged.Add(category);
    }
}

// The password bytes of the key block. Without a password given, 64 random bytes of which the
// first is not zero: stored nowhere, so that only the RSA slot opens the archive. Nothing when
// the password is too long or the pool gives no bytes.
// The recipient's modulus from the key's text; all zero without one.
std::vector<std::uint32_t> RecipientModulus(const Zelmarik::DCCSecurityKey& key) {
    std::vector<std::uint32_t> modulus(Zelmarik::kRsaNumberWords, 0);
    if ((key.Flags & Zelmarik::KeyHasPublic) != 0 && key.PublicKeyText) {
        Zelmarik::DCRSA::NumberFromHex(modulus.data(), modulus.size(), key.PublicKeyText.get(),
                                       Zelmarik::DCCSecurityKey::kPublicKeyDigits);
    }
    return modulus;
}

std::optional<SecureVector<std::uint8_t>> SealingPassword(const ArchiveWriteRequest& request) {
    std::optional<SecureVector<std::uint8_t>> bytes = dcf::PasswordBytes(request.password);
    if (!bytes || !bytes->empty() || request.passwordGiven) {
        return bytes;
    }
    bytes->resize(dcf::kMaxPasswordBytes);
    do {
        if (!crypto::RandomGetBytes(bytes->data(), dcf::kMaxPasswordBytes, false)) {
            return std::nullopt;
        }
    } while ((*bytes)[0] == 0);
    // The bytes are zero-terminated: a zero inside ends them.
    bytes->resize(
        static_cast<std::size_t>(std::find(bytes->begin(), bytes->end(), 0) - bytes->begin()));
    return bytes;
}

class BodyWriter {
public:
    BodyWriter(platform::File& stream, ArchiveWriteRequest& request,
               DCCArchiveUserSettings& settings)
        : request_(request), settings_(settings), target_(stream) {}

    FormatResult Write();

private:
    void CollectItems();
    FormatResult WriteHeaders();
    // Queues the entry's header, tag block and stream, and tells onFileDone.
    FormatResult QueueEntry(FileRecord& record, DataStreamWriter& streams);
    bool WriteRegion(std::vector<std::uint8_t> region) {
        return EncryptRegion(*keys_, region) && target_.Write(region);
    }

    ArchiveWriteRequest& request_;
    DCCArchiveUserSettings& settings_;
    BufferedWriter target_;
    std::vector<std::u16string> folders_;
    std::vector<FileRecord> files_;
    CCategoryContainer merged_;
    dcf::FolderHeader header_;
    KeyContextPtr keys_;
    std::uint64_t processed_ = 0;
};

void BodyWriter::CollectItems() {
    const std::size_t start = NameStart(request_.rootPath);
    for (const ArchiveWriteItem& item : request_.items) {
        if (item.isFolder) {
            folders_.push_back(ArchiveName(item.path, start));
            continue;
        }
        FileRecord record;
        record.name = ArchiveName(item.path, start);
        record.header.size = item.size;
        header_.totalSize += item.size;
        if (item.hasCategories) {
            MergeCategories(merged_, item.categories);
            record.categories = item.categories;
            record.header.tagFlag = 1;
        }
        files_.push_back(std::move(record));
    }
    header_.fileCount = static_cast<std::uint32_t>(files_.size());
    header_.folderCount = static_cast<std::uint32_t>(folders_.size());
}

FormatResult BodyWriter::WriteHeaders() {
    std::vector<std::u16string> fileNames;
    fileNames.reserve(files_.size());
    for (const FileRecord& record : files_) {
        fileNames.push_back(record.name);
    }
    std::vector<std::uint8_t> names = dcf::EncodeNameBlock(folders_, fileNames);
    header_.nameBlockLength = names.size();

    RandomPoolRun pool;
    const std::optional<SecureVector<std::uint8_t>> password = SealingPassword(request_);
    if (!password) {
        return FORMAT_OUTPUT_WRITE_FAILED;  // no random bytes: the pool did not start
    }
    const Zelmarik::DCCSecurityKey& key = request_.securityKey;
    if (request_.sealForKey && ((key.Flags & Zelmarik::KeyHasPublic) == 0 || !key.PublicKeyText)) {
        return FORMAT_NO_PUBLIC_KEY;
    }
    const std::vector<std::uint32_t> modulus =
        request_.sealForKey ? RecipientModulus(key)
                            : std::vector<std::uint32_t>(Zelmarik::kRsaNumberWords, 0);
    dcf::KeyBlock keyBlock{};
    if (SealKeyBlock(keyBlock, *password, modulus.data(), keys_) != kKeyBlockOpened) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    const Zelmarik::Blob categoryBlock = Zelmarik::WriteCategoryBlock(merged_);
    const std::vector<std::uint8_t> preamble = dcf::EncodePreamble(categoryBlock.Bytes());
    if (categoryBlock.Size() == 0 || preamble.empty() || !target_.Write(preamble) ||
        !target_.Write(keyBlock)) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    pool.Stop();

    std::vector<std::uint8_t> folderHeader(dcf::kFolderHeaderSize);
    dcf::EncodeFolderHeader(header_, std::span<std::uint8_t, dcf::kFolderHeaderSize>(folderHeader));
    std::vector<std::uint8_t> endOfHeader(dcf::kEndOfHeaderSize);
    dcf::EncodeEndOfHeader(std::span<std::uint8_t, dcf::kEndOfHeaderSize>(endOfHeader));
    // The records so far are flushed together, so that a failure among them is told as theirs.
    if (!WriteRegion(std::move(folderHeader)) || !WriteRegion(std::move(endOfHeader)) ||
        !target_.Flush()) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    return WriteRegion(std::move(names)) ? FORMAT_OK : FORMAT_WRITE_FAILED;
}

FormatResult BodyWriter::QueueEntry(FileRecord& record, DataStreamWriter& streams) {
    const std::size_t rootEnd = NameStart(request_.rootPath);
    std::u16string sourcePath = JoinArchiveName(request_.rootPath.substr(0, rootEnd), record.name);
    if (settings_.onFileOpening != nullptr) {
        settings_.onFileOpening(&sourcePath, settings_.Context(CALLBACK_FILE_OPENING));
    }
    platform::File source;
    if (source.Open(sourcePath, platform::OpenMode::Read) != platform::kErrorSuccess) {
        record.header.size = 0;  // an entry without data, no failure
    }
    std::vector<std::uint8_t> tagBlock;
    if (record.header.tagFlag != 0) {
        const Zelmarik::Blob block = Zelmarik::WriteCategoryBlock(record.categories);
        if (block.Size() == 0) {
            return FORMAT_FAILED;
        }
        tagBlock = dcf::EncodeTagBlock(block.Bytes());
        record.header.tagBlockLength = tagBlock.size();
    }
    std::vector<std::uint8_t> fileHeader(dcf::kFileHeaderSize);
    dcf::EncodeFileHeader(record.header, std::span<std::uint8_t, dcf::kFileHeaderSize>(fileHeader));
    if (!EncryptRegion(*keys_, fileHeader) ||
        (!tagBlock.empty() && !EncryptRegion(*keys_, tagBlock))) {
        return FORMAT_WRITE_FAILED;
    }
    streams.QueueRecord(std::move(fileHeader));
    if (!tagBlock.empty()) {
        streams.QueueRecord(std::move(tagBlock));
    }
    if (source.IsOpen() && record.header.size != 0) {
        const FormatResult result = streams.QueueDataStream(source, record.header.size, processed_);
        if (result != FORMAT_OK) {
            return result;
        }
    }
    source.Close();
    // The file is done with: read whole and closed. Its chunks may still wait in the queue; a
    // failure to write them fails the whole archive.
    if (settings_.onFileDone != nullptr) {
        settings_.onFileDone(&sourcePath, settings_.Context(CALLBACK_FILE_DONE));
    }
    processed_ += record.header.size;
    return FORMAT_OK;
}

FormatResult BodyWriter::Write() {
    CollectItems();
    const FormatResult headers = WriteHeaders();
    if (headers != FORMAT_OK) {
        return headers;
    }
    // Entries go into the queue of the streams; each full batch of pieces is written with
    // everything queued before it, and the rest at the end.
    DataStreamWriter streams(target_, *keys_, settings_, header_.totalSize,
                             CodecWorkers(settings_.codecWorkers));
    for (FileRecord& record : files_) {
        if (settings_.IsCancelled()) {
            break;
        }
        const FormatResult result = QueueEntry(record, streams);
        if (result != FORMAT_OK) {
            return result;
        }
    }
    const FormatResult flushed = streams.Flush();
    if (flushed != FORMAT_OK) {
        return flushed;
    }
    if (!target_.Flush()) {
        return FORMAT_WRITE_FAILED;
    }
    return settings_.IsCancelled() ? FORMAT_CANCELLED : FORMAT_OK;
}

}  // namespace

FormatResult CheckWriteRequest(const ArchiveWriteRequest& request) {
    if (!dcf::PasswordBytes(request.password)) {
        return FORMAT_BAD_ARGUMENT;
    }
    // A degenerate key would seal an archive that nobody can open (a missing one is told later).
    const Zelmarik::DCCSecurityKey& key = request.securityKey;
    if (request.sealForKey && (key.Flags & Zelmarik::KeyHasPublic) != 0 && key.PublicKeyText &&
        !Zelmarik::PublicModulusProblem(RecipientModulus(key).data()).empty()) {
        return FORMAT_BAD_ARGUMENT;
    }
    const std::size_t start = NameStart(request.rootPath);
    const std::u16string_view rootFolder = std::u16string_view(request.rootPath).substr(0, start);
    std::uint64_t files = 0;
    std::uint64_t nameUnits = 0;
    for (const ArchiveWriteItem& item : request.items) {
        if (!item.path.starts_with(rootFolder) || item.path.size() <= start ||
            !IsSafeArchiveName(ArchiveName(item.path, start))) {
            return FORMAT_BAD_ARGUMENT;
        }
        if (!item.isFolder &&
            !dcf::PieceCountFits(item.size, crypto::SuiteBlockSize(crypto::kSuiteAes))) {
            return FORMAT_BAD_ARGUMENT;
        }
        files += item.isFolder ? 0 : 1;
        nameUnits += item.path.size() - start + 1;
    }
    const std::uint64_t folders = request.items.size() - files;
    if (files > kCountLimit || folders > kCountLimit ||
        2 * dcf::RaisedNameUnits(nameUnits) > kCountLimit) {
        return FORMAT_BAD_ARGUMENT;
    }
    return FORMAT_OK;
}

FormatResult WriteArchiveBody(platform::File& stream, ArchiveWriteRequest& request,
                              DCCArchiveUserSettings& settings) {
    FormatResult result = CheckWriteRequest(request);
    if (result == FORMAT_OK) {
        try {
            BodyWriter writer(stream, request, settings);
            result = writer.Write();
        } catch (const std::bad_alloc&) {
            result = FORMAT_FAILED;
        }
    }
    stream.Close();
    return result;
}
