// The records of the content result tree. Each record writes its fields in order with nothing
// between them; the reader and writer latch the first failure, so each field is written or read
// unconditionally and the result is the state of the flag at the end.

#include "Common/DataCategory/ContentResult.h"

#include "Common/DataCategory/RecordSequence.h"

namespace Zelmarik {

using R = CContentResult;

bool R::CacheInfo::Serialize(CRawSerializer& out) const {
    out.WriteInt32(ZelmarikState);
    out.WriteInt32(MetadataState);
    out.WriteInt32(TovrinxState);
    return !out.Failed();
}

bool R::CacheInfo::Deserialize(CRawReader& in) {
    in.ReadInt32(ZelmarikState);
    in.ReadInt32(MetadataState);
    in.ReadInt32(TovrinxState);
    return !in.Failed();
}

bool R::ElementMatch::Serialize(CRawSerializer& out) const {
    out.WriteString(First);
    out.WriteString(Second);
    out.WriteUInt32(Count);
    return !out.Failed();
}

bool R::ElementMatch::Deserialize(CRawReader& in) {
    in.ReadString(First);
    in.ReadString(Second);
    in.ReadUInt32(Count);
    return !in.Failed();
}

bool R::ElementResult::Serialize(CRawSerializer& out) const {
    out.WriteUInt32(Kind);
    WriteRecords(out, Matches);
    out.WriteUInt32(TotalCount);
    return !out.Failed();
}

bool R::ElementResult::Deserialize(CRawReader& in) {
    in.ReadUInt32(Kind);
    ReadRecords(in, Matches);
    in.ReadUInt32(TotalCount);
    return !in.Failed();
}

bool R::Definition::Serialize(CRawSerializer& out) const {
    out.WriteUInt64(Id);
    out.WriteString(Name);
    WriteRecords(out, Elements);
    out.WriteUInt64(ContentHitCount);
    WriteRecords(out, Categories);
    return !out.Failed();
}

bool R::Definition::Deserialize(CRawReader& in) {
    in.ReadUInt64(Id);
    in.ReadString(Name);
    ReadRecords(in, Elements);
    in.ReadUInt64(ContentHitCount);
    ReadRecords(in, Categories);
    return !in.Failed();
}

bool R::MetadataProperty::Serialize(CRawSerializer& out) const {
    out.WriteString(Name);
    out.WriteString(Value);
    return !out.Failed();
}

bool R::MetadataProperty::Deserialize(CRawReader& in) {
    in.ReadString(Name);
    in.ReadString(Value);
    return !in.Failed();
}

bool R::CContentMetadataResult::Serialize(CRawSerializer& out) const {
    out.WriteUInt32(Number);
    out.WriteString(Text);
    WriteRecords(out, Properties);
    return !out.Failed();
}

bool R::CContentMetadataResult::Deserialize(CRawReader& in) {
    in.ReadUInt32(Number);
    in.ReadString(Text);
    ReadRecords(in, Properties);
    return !in.Failed();
}

bool R::CContentMetadata::Serialize(CRawSerializer& out) const {
    return WriteRecords(out, Results);
}

bool R::CContentMetadata::Deserialize(CRawReader& in) {
    return ReadRecords(in, Results);
}

bool R::CContentSummarizerSubResult::Serialize(CRawSerializer& out) const {
    out.WriteString(First);
    out.WriteString(Second);
    return !out.Failed();
}

bool R::CContentSummarizerSubResult::Deserialize(CRawReader& in) {
    in.ReadString(First);
    in.ReadString(Second);
    return !in.Failed();
}

bool R::CContentSummarizerResult::Serialize(CRawSerializer& out) const {
    out.WriteString(Text);
    out.WriteUInt32(Number1);
    out.WriteUInt32(Number2);
    out.WriteUInt32(Number3);
    WriteRecords(out, SubResults);
    return !out.Failed();
}

bool R::CContentSummarizerResult::Deserialize(CRawReader& in) {
    in.ReadString(Text);
    in.ReadUInt32(Number1);
    in.ReadUInt32(Number2);
    in.ReadUInt32(Number3);
    ReadRecords(in, SubResults);
    return !in.Failed();
}

bool R::CContentGroupResult::Serialize(CRawSerializer& out) const {
    out.WriteUInt32(Number);
    out.WriteString(Text);
    WriteRecords(out, Summaries);
    return !out.Failed();
}

bool R::CContentGroupResult::Deserialize(CRawReader& in) {
    in.ReadUInt32(Number);
    in.ReadString(Text);
    ReadRecords(in, Summaries);
    return !in.Failed();
}

bool R::CContentCore::Serialize(CRawSerializer& out) const {
    return WriteRecords(out, Groups);
}

bool R::CContentCore::Deserialize(CRawReader& in) {
    return ReadRecords(in, Groups);
}

bool R::FileResult::Serialize(CRawSerializer& out) const {
    out.WriteString(RelativeName);
    WriteRecords(out, Definitions);
    WriteRecords(out, FoundMetadata);
    Metadata.Serialize(out);
    Core.Serialize(out);
    return !out.Failed();
}

bool R::FileResult::Deserialize(CRawReader& in) {
    in.ReadString(RelativeName);
    ReadRecords(in, Definitions);
    ReadRecords(in, FoundMetadata);
    Metadata.Deserialize(in);
    Core.Deserialize(in);
    return !in.Failed();
}

bool R::CContentProcessingResult::Serialize(CRawSerializer& out) const {
    out.WriteInt32(Number1);
    out.WriteInt32(Number2);
    out.WriteString(Text);
    WriteRecords(out, Files);
    return !out.Failed();
}

bool R::CContentProcessingResult::Deserialize(CRawReader& in) {
    in.ReadInt32(Number1);
    in.ReadInt32(Number2);
    in.ReadString(Text);
    ReadRecords(in, Files);
    return !in.Failed();
}

bool CContentResult::Serialize(CRawSerializer& out) const {
    out.WriteOptional(ProcessingResult.get());
    out.WriteUInt32(Number1);
    out.WriteString(Text);
    out.WriteInt32(Number2);
    Cache.Serialize(out);
    out.WriteByte(Mark);
    WriteRecords(out, Files);
    return !out.Failed();
}

bool CContentResult::Deserialize(CRawReader& in) {
    bool hasProcessingResult = false;
    if (in.ReadPresence(hasProcessingResult)) {
        if (hasProcessingResult) {
            ProcessingResult.GetOrCreate().Deserialize(in);
        } else {
            ProcessingResult.reset();
        }
    }
    in.ReadUInt32(Number1);
    in.ReadString(Text);
    in.ReadInt32(Number2);
    Cache.Deserialize(in);
    in.ReadByte(Mark);
    ReadRecords(in, Files);
    return !in.Failed();
}

}  // namespace Zelmarik
