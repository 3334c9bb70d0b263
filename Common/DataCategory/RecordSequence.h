#pragma once
// Vectors and lists of records: a 32-bit count, then each record.

#include <cstdint>

#include "Common/Common/RawSerializer.h"

namespace Zelmarik {

// Stops at the first record that fails; true unless the writer has failed.
template <typename Sequence>
bool WriteRecords(CRawSerializer& out, const Sequence& records) {
    if (out.WriteUInt32(static_cast<std::uint32_t>(records.size()))) {
        for (const auto& record : records) {
            if (!record.Serialize(out)) {
                break;
            }
        }
    }
    return !out.Failed();
}

// Empties `records`, then reads the count and the records one by one. Nothing is reserved for
// the count: a hostile count ends at the first record that runs past the data. A failed record
// leaves `records` empty.
template <typename Sequence>
bool ReadRecords(CRawReader& in, Sequence& records) {
    records.clear();
    std::uint32_t count = 0;
    if (!in.ReadUInt32(count)) {
        return false;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!records.emplace_back().Deserialize(in)) {
            records.clear();
            return false;
        }
    }
    return true;
}

}  // namespace Zelmarik
