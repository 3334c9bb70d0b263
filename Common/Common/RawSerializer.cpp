#include "Common/Common/RawSerializer.h"

#include <cstring>
#include <new>

#include "Common/Common/Endian.h"

namespace Zelmarik {
namespace {

constexpr std::size_t kLengthField = 4;
constexpr std::uint32_t kLengthPlaceholder = 0xFFFFFFFF;

template <typename T>
bool WriteInteger(CRawSerializer& out, T value) {
    std::uint8_t bytes[sizeof(T)];
    StoreLittle<T>(bytes, value);
    return out.WriteRaw(bytes, sizeof bytes);
}

template <typename T>
bool ReadInteger(CRawReader& in, T& value) {
    std::uint8_t bytes[sizeof(T)];
    if (!in.ReadRaw(bytes, sizeof bytes)) {
        return false;
    }
    value = LoadLittle<T>(bytes);
    return true;
}

}  // namespace

CRawSerializer::~CRawSerializer() = default;

void CRawSerializer::Fail() {
    buffer_.reset();
    used_ = 0;
    capacity_ = 0;
    failed_ = true;
}

bool CRawSerializer::MakeRoom(std::size_t size) {
    if (failed_) {
        return false;
    }
    if (capacity_ - used_ >= size) {
        return true;
    }
    const bool first = used_ == 0;
    std::size_t capacity = capacity_;
    if (first) {
        capacity += kGrowthStep + kLengthField;
        if (capacity - kLengthField < size) {
            capacity += size;
        }
    } else {
        capacity += kGrowthStep;
        if (capacity - used_ < size) {
            capacity += size;
        }
    }
    std::unique_ptr<std::uint8_t[]> grown(new (std::nothrow) std::uint8_t[capacity]);
    if (!grown) {
        Fail();
        return false;
    }
    if (first) {
        StoreLittle<std::uint32_t>(grown.get(), kLengthPlaceholder);
        used_ = kLengthField;
        total_ = kLengthField;
    } else {
        std::memcpy(grown.get(), buffer_.get(), used_);
    }
    buffer_ = std::move(grown);
    capacity_ = capacity;
    return true;
}

bool CRawSerializer::WriteRaw(const void* data, std::size_t size) {
    if (data == nullptr) {
        Fail();
        return false;
    }
    if (!MakeRoom(size)) {
        return false;
    }
    if (size != 0) {
        std::memcpy(buffer_.get() + used_, data, size);
    }
    used_ += size;
    total_ += static_cast<std::uint32_t>(size);
    return true;
}

bool CRawSerializer::WriteByte(std::uint8_t value) {
    return WriteRaw(&value, 1);
}
bool CRawSerializer::WriteBool(bool value) {
    return WriteByte(value ? 1 : 0);
}
bool CRawSerializer::WriteUInt16(std::uint16_t value) {
    return WriteInteger(*this, value);
}
bool CRawSerializer::WriteUInt32(std::uint32_t value) {
    return WriteInteger(*this, value);
}
bool CRawSerializer::WriteInt32(std::int32_t value) {
    return WriteInteger(*this, static_cast<std::uint32_t>(value));
}
bool CRawSerializer::WriteUInt64(std::uint64_t value) {
    return WriteInteger(*this, value);
}

bool CRawSerializer::WriteSystemTime(const SystemTime& value) {
    for (const std::uint16_t field : {value.Year, value.Month, value.DayOfWeek, value.Day,
                                      value.Hour, value.Minute, value.Second, value.Milliseconds}) {
        WriteUInt16(field);
    }
    return !failed_;
}

bool CRawSerializer::WriteString(std::u16string_view value) {
    WriteUInt32(static_cast<std::uint32_t>(value.size()));
    for (const char16_t unit : value) {
        WriteUInt16(unit);
    }
    return WriteUInt16(0);
}

bool CRawSerializer::WriteOptional(const ISerializableEx* object) {
    WriteBool(object != nullptr);
    if (object != nullptr) {
        object->Serialize(*this);
    }
    return !failed_;
}

std::unique_ptr<std::uint8_t[]> CRawSerializer::Finish(std::size_t& size) {
    if (!failed_ && buffer_) {
        StoreLittle<std::uint32_t>(buffer_.get(), total_);
    }
    size = failed_ ? 0 : used_;
    used_ = 0;
    capacity_ = 0;
    return failed_ ? nullptr : std::move(buffer_);
}

CRawReader::CRawReader(std::span<const std::uint8_t> data)
    : base_(data.data()),
      cursor_(data.data()),
      remaining_(static_cast<std::int64_t>(data.size())) {}

const std::uint8_t* CRawReader::Take(std::uint64_t size) {
    remaining_ -= static_cast<std::int64_t>(size);
    if (failed_ || cursor_ == nullptr || remaining_ < 0) {
        failed_ = true;
        return nullptr;
    }
    const std::uint8_t* at = cursor_;
    cursor_ += size;
    return at;
}

bool CRawReader::ReadRaw(void* data, std::size_t size) {
    const std::uint8_t* at = Take(size);
    if (at == nullptr) {
        return false;
    }
    if (size != 0) {
        std::memcpy(data, at, size);
    }
    return true;
}

bool CRawReader::ReadByte(std::uint8_t& value) {
    return ReadRaw(&value, 1);
}

bool CRawReader::ReadBool(bool& value) {
    std::uint8_t byte = 0;
    if (!ReadByte(byte)) {
        return false;
    }
    value = byte != 0;
    return true;
}

bool CRawReader::ReadPresence(bool& present) {
    std::uint8_t byte = 0;
    if (!ReadByte(byte)) {
        return false;
    }
    if (byte > 1) {
        failed_ = true;
        return false;
    }
    present = byte == 1;
    return true;
}

bool CRawReader::ReadUInt16(std::uint16_t& value) {
    return ReadInteger(*this, value);
}
bool CRawReader::ReadUInt32(std::uint32_t& value) {
    return ReadInteger(*this, value);
}
bool CRawReader::ReadInt32(std::int32_t& value) {
    std::uint32_t raw = 0;
    if (!ReadInteger(*this, raw)) {
        return false;
    }
    value = static_cast<std::int32_t>(raw);
    return true;
}
bool CRawReader::ReadUInt64(std::uint64_t& value) {
    return ReadInteger(*this, value);
}

bool CRawReader::ReadSystemTime(SystemTime& value) {
    for (std::uint16_t* field : {&value.Year, &value.Month, &value.DayOfWeek, &value.Day,
                                 &value.Hour, &value.Minute, &value.Second, &value.Milliseconds}) {
        ReadUInt16(*field);
    }
    return !failed_;
}

bool CRawReader::ReadString(std::u16string& value) {
    std::uint32_t length = 0;
    if (!ReadUInt32(length)) {
        return false;
    }
    // The whole string is accounted for before a single character is touched, so a hostile
    // length fails here without an allocation of its size.
    const std::uint64_t bytes = 2 * static_cast<std::uint64_t>(length) + 2;
    const std::uint8_t* at = Take(bytes);
    if (at == nullptr) {
        return false;
    }
    value.resize(length);
    for (std::uint32_t i = 0; i < length; ++i) {
        value[i] = LoadLittle<std::uint16_t>(at + 2 * static_cast<std::size_t>(i));
    }
    return true;
}

Blob SerializeToBlob(const ISerializableEx& object) {
    CRawSerializer out;
    object.Serialize(out);
    std::size_t size = 0;
    auto data = out.Finish(size);
    return Blob(std::move(data), size);
}

bool DeserializeFromBlob(std::span<const std::uint8_t> blob, ISerializableEx& object) {
    if (blob.data() == nullptr || blob.size() < kLengthField) {
        return false;
    }
    const std::uint32_t length = LoadLittle<std::uint32_t>(blob.data());
    if (length < 1) {
        return false;
    }
    const std::int64_t remaining = static_cast<std::int64_t>(length) - 4;
    if (remaining < 0 || length > blob.size()) {
        return false;
    }
    CRawReader in(blob.subspan(kLengthField, static_cast<std::size_t>(remaining)));
    const bool ok = object.Deserialize(in);
    return ok && !in.Failed() && in.Remaining() == 0;
}

}  // namespace Zelmarik
