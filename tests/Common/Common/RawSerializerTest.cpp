#include "Common/Common/RawSerializer.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Zelmarik::CRawReader;
using Zelmarik::CRawSerializer;
using Bytes = std::vector<std::uint8_t>;

// A record of every primitive kind, with an optional child.
struct Sample : Zelmarik::ISerializableEx {
    std::uint8_t byte = 0xAB;
    bool flag = true;
    std::uint16_t u16 = 0x1234;
    std::uint32_t u32 = 0x89ABCDEF;
    std::int32_t i32 = -2;
    std::uint64_t u64 = 0x0102030405060708ull;
    Zelmarik::SystemTime time{2024, 2, 3, 4, 5, 6, 7, 8};
    std::u16string text = u"h\u00e9";
    std::uint8_t raw[3] = {9, 8, 7};

    bool Serialize(CRawSerializer& out) const override {
        out.WriteByte(byte);
        out.WriteBool(flag);
        out.WriteUInt16(u16);
        out.WriteUInt32(u32);
        out.WriteInt32(i32);
        out.WriteUInt64(u64);
        out.WriteSystemTime(time);
        out.WriteString(text);
        out.WriteRaw(raw, sizeof raw);
        return !out.Failed();
    }
    bool Deserialize(CRawReader& in) override {
        in.ReadByte(byte);
        in.ReadBool(flag);
        in.ReadUInt16(u16);
        in.ReadUInt32(u32);
        in.ReadInt32(i32);
        in.ReadUInt64(u64);
        in.ReadSystemTime(time);
        in.ReadString(text);
        in.ReadRaw(raw, sizeof raw);
        return !in.Failed();
    }
};

struct OneString : Zelmarik::ISerializableEx {
    std::u16string text;
    bool Serialize(CRawSerializer& out) const override { return out.WriteString(text); }
    bool Deserialize(CRawReader& in) override { return in.ReadString(text); }
};

struct WritesNothing : Zelmarik::ISerializableEx {
    bool Serialize(CRawSerializer&) const override { return true; }
    bool Deserialize(CRawReader&) override { return true; }
};

Bytes ToBytes(const Zelmarik::Blob& blob) {
    return Bytes(blob.Data(), blob.Data() + blob.Size());
}

TEST(Blob, EncodesEveryPrimitiveLittleEndian) {
    const Bytes blob = ToBytes(Zelmarik::SerializeToBlob(Sample{}));
    const Bytes expected = {
        53,   0,    0,    0,                             // total length
        0xAB, 1,    0x34, 0x12, 0xEF, 0xCD, 0xAB, 0x89,  // byte, bool, u16, u32
        0xFE, 0xFF, 0xFF, 0xFF,                          // i32 -2
        8,    7,    6,    5,    4,    3,    2,    1,     // u64
        0xE8, 7,    2,    0,    3,    0,    4,    0,    5, 0, 6, 0, 7, 0, 8, 0,  // SYSTEMTIME
        2,    0,    0,    0,    'h',  0,    0xE9, 0,    0, 0,  // string + terminator
        9,    8,    7};
    EXPECT_EQ(blob, expected);

    Sample read;
    read.byte = 0, read.flag = false, read.u64 = 0, read.text.clear();
    ASSERT_TRUE(Zelmarik::DeserializeFromBlob(blob, read));
    EXPECT_EQ(ToBytes(Zelmarik::SerializeToBlob(read)), blob);
}

// Nothing written gives no blob, and no blob is read.
TEST(Blob, RefusesWhatDoesNotFitExactly) {
    OneString value;
    value.text = u"abc";
    Bytes blob = ToBytes(Zelmarik::SerializeToBlob(value));
    OneString read;
    ASSERT_TRUE(Zelmarik::DeserializeFromBlob(blob, read));

    Bytes longer = blob;  // length field claims one byte more than the object reads
    longer.push_back(0);
    longer[0] += 1;
    EXPECT_FALSE(Zelmarik::DeserializeFromBlob(longer, read));

    Bytes shorter = blob;  // length field cuts the terminator off
    shorter[0] -= 1;
    EXPECT_FALSE(Zelmarik::DeserializeFromBlob(shorter, read));

    EXPECT_FALSE(Zelmarik::DeserializeFromBlob(Bytes{3, 0, 0, 0}, read));  // below its own field
    EXPECT_FALSE(Zelmarik::DeserializeFromBlob({}, read));                 // null blob
    const Zelmarik::Blob nothing = Zelmarik::SerializeToBlob(WritesNothing{});
    EXPECT_EQ(nothing.Size(), 0u);
    EXPECT_EQ(nothing.Data(), nullptr);
}

TEST(Blob, HostileStringLengthFailsWithoutReadingOrAllocating) {
    // Length 0x7FFFFFFF with four bytes behind it: must fail on the count alone.
    const Bytes blob = {12, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F, 'a', 0, 0, 0};
    OneString read;
    EXPECT_FALSE(Zelmarik::DeserializeFromBlob(blob, read));
    EXPECT_TRUE(read.text.empty());
}

TEST(RawReader, FailureIsStickyAndPresenceIsStrict) {
    const Bytes data = {1, 2, 1, 0, 7};
    CRawReader in(data);
    bool present = false;
    EXPECT_TRUE(in.ReadPresence(present));
    EXPECT_TRUE(present);
    EXPECT_FALSE(in.ReadPresence(present));  // 2 is damage
    std::uint8_t byte = 0;
    EXPECT_FALSE(in.ReadByte(byte));  // sticky though the byte is there
    EXPECT_TRUE(in.Failed());

    CRawReader past(Bytes{1, 2});
    std::uint32_t word = 0;
    EXPECT_FALSE(past.ReadUInt32(word));
    EXPECT_EQ(word, 0u);
    EXPECT_LT(past.Remaining(), 0);
}

// Writes past the first allocation keep what came before; a null source fails the writer for
// good and drops what it held.
TEST(RawSerializer, GrowsKeepingItsBytesAndLatchesNullRaw) {
    CRawSerializer out;
    out.WriteByte(1);
    const std::vector<std::uint8_t> big(600, 0x55);
    out.WriteRaw(big.data(), big.size());
    ASSERT_EQ(out.UsedSize(), 605u);
    EXPECT_EQ(out.Data()[4], 1);
    EXPECT_EQ(out.Data()[604], 0x55);

    out.WriteRaw(nullptr, 3);
    EXPECT_TRUE(out.Failed());
    EXPECT_EQ(out.UsedSize(), 0u);
    EXPECT_EQ(out.Data(), nullptr);
    EXPECT_FALSE(out.WriteByte(1));  // nothing after a failure
    std::size_t size = 1;
    EXPECT_EQ(out.Finish(size), nullptr);
    EXPECT_EQ(size, 0u);
}

}  // namespace
