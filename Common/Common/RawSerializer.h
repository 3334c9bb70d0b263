#pragma once
// Objects as length-prefixed little-endian blobs: ISerializableEx, the writer CRawSerializer,
// the reader CRawReader, and SerializeToBlob / DeserializeFromBlob.
//
// Both directions latch their first failure in a sticky flag, so an object may go on writing
// or reading after a failure without effect and check once at the end.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "Common/Common/SystemTime.h"

namespace Zelmarik {

class CRawSerializer;
class CRawReader;

class ISerializableEx {
public:
    virtual ~ISerializableEx() = default;
    // Both return true when the writer's or reader's failed flag is clear.
    virtual bool Serialize(CRawSerializer& out) const = 0;
    virtual bool Deserialize(CRawReader& in) = 0;
};

class CRawSerializer {
public:
    static constexpr std::size_t kGrowthStep = 256;

    CRawSerializer() = default;
    virtual ~CRawSerializer();
    CRawSerializer(const CRawSerializer&) = delete;
    CRawSerializer& operator=(const CRawSerializer&) = delete;

    bool WriteByte(std::uint8_t value);
    bool WriteBool(bool value);
    bool WriteUInt16(std::uint16_t value);
    bool WriteUInt32(std::uint32_t value);
    bool WriteInt32(std::int32_t value);
    bool WriteUInt64(std::uint64_t value);
    bool WriteSystemTime(const SystemTime& value);
    // 32-bit length in characters, the characters, a terminating zero unit.
    bool WriteString(std::u16string_view value);
    // `size` bytes from `data`; a null `data` fails and drops everything written.
    bool WriteRaw(const void* data, std::size_t size);
    // An object pointer that may be null: a presence byte, then the object's own fields.
    bool WriteOptional(const ISerializableEx* object);

    bool Failed() const { return failed_; }
    std::size_t UsedSize() const { return used_; }
    std::size_t Capacity() const { return capacity_; }
    // Bytes written, the length field included.
    std::uint32_t Total() const { return total_; }
    const std::uint8_t* Data() const { return buffer_.get(); }

    // Hands the buffer over, writing the total into the length field when not failed.
    std::unique_ptr<std::uint8_t[]> Finish(std::size_t& size);

private:
    bool MakeRoom(std::size_t size);
    void Fail();

    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t used_ = 0;
    std::size_t capacity_ = 0;
    std::uint32_t total_ = 0;
    bool failed_ = false;
};

class CRawReader {
public:
    // A reader over `data`, bounds checked.
    explicit CRawReader(std::span<const std::uint8_t> data);

    bool ReadByte(std::uint8_t& value);
    bool ReadBool(bool& value);
    bool ReadUInt16(std::uint16_t& value);
    bool ReadUInt32(std::uint32_t& value);
    bool ReadInt32(std::int32_t& value);
    bool ReadUInt64(std::uint64_t& value);
    bool ReadSystemTime(SystemTime& value);
    bool ReadString(std::u16string& value);
    bool ReadRaw(void* data, std::size_t size);
    // Reads the presence byte of an optional object: 0 or 1; any other value is damage.
    bool ReadPresence(bool& present);

    bool Failed() const { return failed_; }
    void SetFailed() { failed_ = true; }
    std::int64_t Remaining() const { return remaining_; }
    // Bytes consumed since the start.
    std::size_t Position() const { return static_cast<std::size_t>(cursor_ - base_); }

private:
    // Subtracts `size` from the remaining bytes first, then checks; on success gives the bytes.
    // 64 bits wide so that a string length cannot wrap on a 32-bit build.
    const std::uint8_t* Take(std::uint64_t size);

    const std::uint8_t* base_;
    const std::uint8_t* cursor_;
    std::int64_t remaining_;
    bool failed_ = false;
};

// A blob: the buffer of a finished serializer with its length field in front.
class Blob {
public:
    Blob() = default;
    Blob(std::unique_ptr<std::uint8_t[]> data, std::size_t size)
        : data_(std::move(data)), size_(size) {}
    const std::uint8_t* Data() const { return data_.get(); }
    std::size_t Size() const { return size_; }
    std::span<const std::uint8_t> Bytes() const { return {data_.get(), size_}; }

private:
    std::unique_ptr<std::uint8_t[]> data_;
    std::size_t size_ = 0;
};

// Size 0 and no data when nothing was written or the writer failed.
Blob SerializeToBlob(const ISerializableEx& object);
// `blob` holds at least the bytes that its length field claims; anything short, left over or
// unreadable is refused.
bool DeserializeFromBlob(std::span<const std::uint8_t> blob, ISerializableEx& object);

}  // namespace Zelmarik
