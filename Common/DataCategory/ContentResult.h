#pragma once
// CContentResult: the content analysis a category may carry, a tree of examined files with the
// definitions, elements and matches found in them. This system only stores and copies it; it
// must read it all the same, for it stands in the middle of a category record.

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "Common/Common/DebugLog.h"
#include "Common/Common/RawSerializer.h"
#include "Common/DataCategory/CopyingPtr.h"
#include "Common/DataCategory/Guid.h"

namespace Zelmarik {

class CContentResult : public virtual ISerializableEx {
public:
    class CacheInfo : public virtual ISerializableEx, public virtual IDebugLog {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;
        std::u16string DebugLog() const override;
        // "NotInitialized", "Miss", ...; empty for an unknown state.
        static std::u16string StateText(std::int32_t state);

        std::int32_t ZelmarikState = -1;
        std::int32_t MetadataState = -1;
        std::int32_t TovrinxState = -1;
    };

    class ElementMatch : public virtual ISerializableEx, public virtual IDebugLog {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;
        std::u16string DebugLog() const override;

        std::u16string First;
        std::u16string Second;
        std::uint32_t Count = 0;
    };

    class ElementResult : public virtual ISerializableEx, public virtual IDebugLog {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;
        std::u16string DebugLog() const override;
        // "NotInitialized", "Algorithm", ...; empty for an unknown kind.
        static std::u16string KindText(std::uint32_t kind);

        std::uint32_t Kind = 0;
        std::vector<ElementMatch> Matches;
        std::uint32_t TotalCount = 0;
    };

    class Definition : public virtual ISerializableEx, public virtual IDebugLog {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;
        std::u16string DebugLog() const override;

        std::uint64_t Id = 0;
        std::u16string Name;
        std::vector<ElementResult> Elements;
        std::uint64_t ContentHitCount = 0;
        std::list<CGuid> Categories;
    };

    class MetadataProperty : public virtual ISerializableEx, public virtual IDebugLog {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;
        std::u16string DebugLog() const override;

        std::u16string Name;
        std::u16string Value;
    };

    class CContentMetadataResult : public virtual ISerializableEx {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::uint32_t Number = 0;
        std::u16string Text;
        std::list<MetadataProperty> Properties;
    };

    class CContentMetadata : public virtual ISerializableEx {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::vector<CContentMetadataResult> Results;
    };

    class CContentSummarizerSubResult : public virtual ISerializableEx {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::u16string First;
        std::u16string Second;
    };

    class CContentSummarizerResult : public virtual ISerializableEx {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::u16string Text;
        std::uint32_t Number1 = 0;
        std::uint32_t Number2 = 0;
        std::uint32_t Number3 = 0;
        std::vector<CContentSummarizerSubResult> SubResults;
    };

    class CContentGroupResult : public virtual ISerializableEx {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::uint32_t Number = 0;
        std::u16string Text;
        std::vector<CContentSummarizerResult> Summaries;
    };

    class CContentCore : public virtual ISerializableEx {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::vector<CContentGroupResult> Groups;
    };

    class FileResult : public virtual ISerializableEx, public virtual IDebugLog {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;
        std::u16string DebugLog() const override;

        std::u16string RelativeName;
        std::list<Definition> Definitions;
        std::list<MetadataProperty> FoundMetadata;
        CContentMetadata Metadata;
        CContentCore Core;
    };

    class CContentProcessingResult : public virtual ISerializableEx {
    public:
        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::int32_t Number1 = -1;
        // Copied with the object, never stored.
        bool Flag = false;
        std::int32_t Number2 = -1;
        std::u16string Text;
        std::vector<FileResult> Files;
    };

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;

    // Stored behind a presence byte.
    CopyingPtr<CContentProcessingResult> ProcessingResult;
    std::uint32_t Number1 = 3;
    std::u16string Text;
    std::int32_t Number2 = -1;
    CacheInfo Cache;
    std::uint8_t Mark = 0;
    std::list<FileResult> Files;
};

}  // namespace Zelmarik
