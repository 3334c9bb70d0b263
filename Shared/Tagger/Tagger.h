#pragma once
// CTagger writes the data categories of a file into its tag stream "<file>:ZelTag5", one
// 16-byte identifier per category in container order, and leaves the file's times and
// attributes as it found them.

#include <memory>

#include "Common/DataCategory/CategoryContainer.h"
#include "Shared/Tagger/TaggerContext.h"
#include "Shared/Tagger/TaggerException.h"

namespace Zelmarik {

// The target file, already opened by the caller. A null or invalid handle means there is none.
class CTaggerPrecomputed {
public:
    virtual ~CTaggerPrecomputed() = default;

    TaggerHandle FileHandle = kNoTaggerHandle;
};

// Static operations only; every failure raises TaggerException.
class CTagger {
public:
    CTagger() = delete;

    // Opens, writes and closes: the stream then holds exactly the identifiers of `categories`.
    // A handle in `precomputed` stays open; the object itself is released.
    static void WriteThrow(const char16_t* path, const CCategoryContainer& categories,
                           std::unique_ptr<CTaggerPrecomputed> precomputed);

    // Appends the identifiers of `categories` to the open stream of `context`.
    static void TagFileWrite(STaggerContext* context, const CCategoryContainer& categories);

protected:
    // Opens the target and creates or truncates its stream. Never null; on failure whatever
    // was opened is closed again before the exception leaves.
    static STaggerContext* TagFileOpen(const char16_t* path,
                                       std::unique_ptr<CTaggerPrecomputed> precomputed);
    // Closes the stream, restores what was saved, closes the target and destroys `context`.
    // Null does nothing; failures are ignored.
    static void TagFileClose(STaggerContext* context) noexcept;

private:
    static void OpenTarget(STaggerContext& context);
    static void OpenReadOnlyTarget(STaggerContext& context);
    static void OpenStream(STaggerContext& context);
};

}  // namespace Zelmarik
