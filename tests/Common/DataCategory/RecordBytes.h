#pragma once
// Helpers for record tests: the bytes an object writes, expected bytes spelled out field by
// field, and sample objects with every field set.

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "Common/Common/RawSerializer.h"
#include "Common/DataCategory/DlpCategory.h"

namespace tests {

using Bytes = std::vector<std::uint8_t>;

// The record that `object` writes, without the blob's length field.
inline Bytes RecordOf(const Zelmarik::ISerializableEx& object) {
    Zelmarik::CRawSerializer out;
    EXPECT_TRUE(object.Serialize(out));
    if (out.Data() == nullptr) {
        return {};
    }
    return Bytes(out.Data() + 4, out.Data() + out.UsedSize());
}

// Little-endian bytes built by hand, independent of the writer.
class ByteBuilder {
public:
    ByteBuilder& Raw(std::initializer_list<std::uint8_t> bytes) {
        data_.insert(data_.end(), bytes);
        return *this;
    }
    ByteBuilder& Append(std::span<const std::uint8_t> bytes) {
        data_.insert(data_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    ByteBuilder& U8(std::uint8_t value) { return Little(value, 1); }
    ByteBuilder& U32(std::uint32_t value) { return Little(value, 4); }
    ByteBuilder& I32(std::int32_t value) { return U32(static_cast<std::uint32_t>(value)); }
    ByteBuilder& U64(std::uint64_t value) { return Little(value, 8); }
    ByteBuilder& Zeros(std::size_t count) {
        data_.insert(data_.end(), count, 0);
        return *this;
    }
    // Length in units, the units, a zero unit.
    ByteBuilder& Str(std::u16string_view text) {
        U32(static_cast<std::uint32_t>(text.size()));
        for (const char16_t unit : text) {
            Little(unit, 2);
        }
        return Little(0, 2);
    }
    const Bytes& Data() const { return data_; }

private:
    ByteBuilder& Little(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i) {
            data_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
        return *this;
    }

    Bytes data_;
};

// 01234567-89ab-cdef-0123-456789abcdef in memory order.
inline constexpr std::initializer_list<std::uint8_t> kSampleIdBytes = {
    0x67, 0x45, 0x23, 0x01, 0xab, 0x89, 0xef, 0xcd, 0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef};

inline Zelmarik::CGuid SampleId() {
    Zelmarik::CGuid id;
    std::copy(kSampleIdBytes.begin(), kSampleIdBytes.end(), id.Bytes.begin());
    return id;
}

inline Zelmarik::CGuid IdOf(std::uint8_t firstByte) {
    Zelmarik::CGuid id;
    id.Bytes[0] = firstByte;
    return id;
}

// A tree with one element in every list and no field at its default.
Zelmarik::CContentResult::FileResult SampleFileResult(std::u16string_view name = u"a.txt");
Zelmarik::CContentResult SampleTree();
// The record of SampleFileResult() and of SampleTree(), written out by hand.
Bytes SampleFileResultRecord(std::u16string_view name = u"a.txt");
Bytes SampleTreeRecord();

// A category with every stored field away from its default, carrying SampleTree().
Zelmarik::CDlpCategory SampleCategory();
Bytes SampleCategoryRecord();

}  // namespace tests
