#include "Shared/Tagger/Tagger.h"

#include "Shared/Tagger/LongPath.h"
#include "Shared/Tagger/ScopeGuard.h"
#include "platform/TaggedFile.h"
#include "platform/Text.h"

namespace Zelmarik {
namespace {

constexpr const char* kSource = "Shared\\Tagger\\tagger";
constexpr char16_t kStreamSuffix[] = u":ZelTag5";

bool IsOpen(TaggerHandle handle) {
    return handle != kNoTaggerHandle && handle != kFailedTaggerHandle;
}

// Error numbers go into the exceptions as the signed values that Windows reports.
int Code(platform::ErrorCode error) {
    return static_cast<int>(error);
}

}  // namespace

void CTagger::WriteThrow(const char16_t* path, const CCategoryContainer& categories,
                         std::unique_ptr<CTaggerPrecomputed> precomputed) {
    STaggerContext* context = nullptr;
    ScopeGuard close([&context] { TagFileClose(context); });
    context = TagFileOpen(path, std::move(precomputed));
    TagFileWrite(context, categories);
}

STaggerContext* CTagger::TagFileOpen(const char16_t* path,
                                     std::unique_ptr<CTaggerPrecomputed> precomputed) {
    STaggerContext* context = nullptr;
    ScopeGuard closeOnFailure([&context] { TagFileClose(context); });
    context = new STaggerContext();
    context->File = ToLongPath(path);
    context->StreamFile = context->File + kStreamSuffix;

    if (precomputed != nullptr && IsOpen(precomputed->FileHandle)) {
        context->FileHandle = precomputed->FileHandle;
        context->CloseFileHandle = false;
    } else {
        OpenTarget(*context);
    }

    platform::FileStamps stamps;
    const platform::ErrorCode error = platform::ReadFileStamps(context->FileHandle, stamps);
    if (error != platform::kErrorSuccess) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kTargetFile, context,
                              "GetFileInformationByHandle to get information from file's "
                              "handleof target file, error: %d",
                              Code(error));
    }
    context->CreationTime = stamps.Creation;
    context->LastAccessTime = stamps.LastAccess;
    context->LastWriteTime = stamps.LastWrite;
    context->RevertTimes = true;

    OpenStream(*context);

    closeOnFailure.Dismiss();
    precomputed.reset();
    return context;
}

void CTagger::OpenTarget(STaggerContext& context) {
    const platform::ErrorCode error = platform::OpenTaggedFile(context.File, context.FileHandle);
    if (IsOpen(context.FileHandle)) {
        return;
    }
    if (error != platform::kErrorAccessDenied) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kTargetFile,
                              &context, "Unable to open target file, error: %d", Code(error));
    }
    OpenReadOnlyTarget(context);
}

// Access was denied: a read-only target loses its read-only bit for the time of the tagging.
// Restoring the times at close puts the bit back, as the saved attributes go with them.
void CTagger::OpenReadOnlyTarget(STaggerContext& context) {
    platform::ErrorCode error = platform::GetPathAttributes(context.File, context.Attributes);
    if (context.Attributes == platform::kInvalidTagValue) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kTargetFile,
                              &context, "Unable to get file attributes of target file, error: %d",
                              Code(error));
    }
    if ((context.Attributes & platform::kFileAttributeReadOnly) == 0) {
        error = platform::kErrorAccessDenied;
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kTargetFile,
                              &context, "Unable to open target file, error: %d", Code(error));
    }
    error = platform::SetPathAttributes(context.File, platform::kFileAttributeNormal);
    if (error != platform::kErrorSuccess) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kTargetFile,
                              &context, "Unable to set file attributes of target file, error: %d",
                              Code(error));
    }
    error = platform::OpenTaggedFile(context.File, context.FileHandle);
    if (!IsOpen(context.FileHandle)) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kTargetFile,
                              &context, "Unable to open target file, error: %d", Code(error));
    }
}

// Creates the stream or truncates it: each tagging replaces what the stream held.
void CTagger::OpenStream(STaggerContext& context) {
    platform::ErrorCode error = platform::OpenTagStream(context.StreamFile, context.StreamHandle);
    if (error == platform::kErrorFileNotFound) {
        throw TaggerException(kSource, __LINE__, Code(platform::kErrorInvalidName),
                              TaggerException::kStream, &context,
                              "Unable to open stream file, original error: %d, but reported as "
                              "invalid name",
                              Code(error));
    }
    if (!IsOpen(context.StreamHandle)) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kStream, &context,
                              "Unable to open stream file, error: %d", Code(error));
    }
    error = platform::TagStreamSize(context.StreamHandle, context.Size);
    if (context.Size == platform::kInvalidTagValue) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kStream, &context,
                              "Unable to get file size of stream file, error: %d", Code(error));
    }
}

void CTagger::TagFileWrite(STaggerContext* context, const CCategoryContainer& categories) {
    if (context == nullptr) {
        throw TaggerException(kSource, __LINE__, Code(platform::kErrorInvalidParameter),
                              TaggerException::kStream, nullptr, "Context is nullptr");
    }
    std::uint32_t position = 0;
    platform::ErrorCode error = platform::SeekTagStreamEnd(context->StreamHandle, position);
    if (position == platform::kInvalidTagValue) {
        throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kStream, context,
                              "SetFilePointer has failed for stream file, error: %d", Code(error));
    }
    for (const CDlpCategory& category : categories.Categories) {
        error = platform::WriteTagRecord(context->StreamHandle, category.Id.Bytes);
        if (error != platform::kErrorSuccess) {
            const std::string name = platform::Utf16ToUtf8(category.DebugLog());
            throw TaggerException(kSource, __LINE__, Code(error), TaggerException::kStream, context,
                                  "Unable to write category %s to stream file, error: %d",
                                  name.c_str(), Code(error));
        }
        context->Size += CGuid::kSize;
    }
}

void CTagger::TagFileClose(STaggerContext* context) noexcept {
    if (context == nullptr) {
        return;
    }
    // The target is closed last, after its times are back: writing the stream moved them.
    ScopeGuard release([context] {
        if (context->CloseFileHandle && IsOpen(context->FileHandle)) {
            platform::CloseTaggedFile(context->FileHandle);
        }
        delete context;
    });
    try {
        if (IsOpen(context->StreamHandle)) {
            platform::CloseTagStream(context->StreamHandle);
        }
        if (context->DeleteStreamOnClose) {
            platform::DeleteTagStream(context->StreamFile);
        }
        if (context->RevertTimes) {
            const platform::FileStamps stamps{context->CreationTime, context->LastAccessTime,
                                              context->LastWriteTime};
            platform::RestoreFileStamps(context->FileHandle, stamps, context->Attributes);
        } else if (context->RevertAttributes) {
            platform::SetPathAttributes(context->File, context->Attributes);
        }
    } catch (...) {
        // Closing reports nothing: a failure to restore leaves the file as it is.
    }
}

}  // namespace Zelmarik
