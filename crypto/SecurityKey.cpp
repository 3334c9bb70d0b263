#include "crypto/SecurityKey.h"

#include <algorithm>
#include <cstring>

#include "Common/Common/Endian.h"
#include "platform/SecureMemory.h"

namespace Zelmarik {

namespace {

std::unique_ptr<char[]> NewPublicKeyBlock() {
    return std::make_unique<char[]>(DCCSecurityKey::kPublicKeyBlockSize);  // zero-filled
}

// Reads an optional owned object: an object that existed before keeps its place even when its
// own read fails; a new one is kept only when it read well.
template <typename T>
void ReadOptional(CRawReader& in, std::unique_ptr<T>& object) {
    bool present = false;
    if (!in.ReadPresence(present) || !present) {
        object.reset();
        return;
    }
    const bool existed = object != nullptr;
    if (!existed) {
        object = std::make_unique<T>();
    }
    if (!object->Deserialize(in) && !existed) {
        object.reset();
    }
}

// Gives `target` a copy of `source` when `wanted`, and drops it otherwise.
template <typename T, typename Copy>
void CopyOwned(bool wanted, const std::unique_ptr<T>& source, std::unique_ptr<T>& target,
               Copy copy) {
    if (!wanted) {
        target.reset();
        return;
    }
    if (!target) {
        target = std::make_unique<T>();
    }
    if (source) {
        copy(*target, *source);
    }
}

}  // namespace

DCCPrivateKey::~DCCPrivateKey() {
    platform::SecureWipe(Numbers.data(), sizeof Numbers);
}

bool DCCPrivateKey::Serialize(CRawSerializer& out) const {
    std::uint8_t bytes[kNumberBytes];
    for (const Number& number : Numbers) {
        for (std::size_t i = 0; i < kNumberWords; ++i) {
            StoreLittle<std::uint32_t>(bytes + 4 * i, number[i]);
        }
        out.WriteRaw(bytes, sizeof bytes);
    }
    platform::SecureWipe(bytes, sizeof bytes);
    return !out.Failed();
}

bool DCCPrivateKey::Deserialize(CRawReader& in) {
    std::uint8_t bytes[kNumberBytes];
    bool read = true;
    for (Number& number : Numbers) {
        read = in.ReadRaw(bytes, sizeof bytes);
        if (!read) {
            break;
        }
        for (std::size_t i = 0; i < kNumberWords; ++i) {
            number[i] = LoadLittle<std::uint32_t>(bytes + 4 * i);
        }
    }
    platform::SecureWipe(bytes, sizeof bytes);
    return read && !in.Failed();
}

bool DCCPrivateKey::HasAllNumbers() const {
    return std::none_of(Numbers.begin(), Numbers.end(), [](const Number& number) {
        return std::all_of(number.begin(), number.end(), [](std::uint32_t w) { return w == 0; });
    });
}

bool DCCBitlockerKey::Serialize(CRawSerializer& out) const {
    out.WriteRaw(Data.data(), Data.size());
    return !out.Failed();
}

bool DCCBitlockerKey::Deserialize(CRawReader& in) {
    in.ReadRaw(Data.data(), Data.size());
    return !in.Failed();
}

DCCSecurityKey::DCCSecurityKey(const DCCSecurityKey& other)
    : ISerializableEx(other), IFlags(other) {
    *this = other;
}

DCCSecurityKey& DCCSecurityKey::operator=(const DCCSecurityKey& other) {
    if (this == &other) {
        return *this;
    }
    Id = other.Id;
    Name = other.Name;
    Flags = other.Flags;
    Text2 = other.Text2;
    Text3 = other.Text3;
    ValidityYears = other.ValidityYears;
    Created = other.Created;
    Expires = other.Expires;
    PublicKeyText.reset();
    if ((Flags & KeyHasPublic) != 0) {
        PublicKeyText = NewPublicKeyBlock();
        if (other.PublicKeyText) {
            std::memcpy(PublicKeyText.get(), other.PublicKeyText.get(), kPublicKeyDigits);
        }
    }
    CopyOwned(
        (Flags & KeyHasPrivate) != 0, other.PrivateKey, PrivateKey,
        [](DCCPrivateKey& target, const DCCPrivateKey& source) { target.CopyNumbersFrom(source); });
    CopyOwned(
        (Flags & KeyHasBitlocker) != 0, other.BitlockerKey, BitlockerKey,
        [](DCCBitlockerKey& target, const DCCBitlockerKey& source) { target.Data = source.Data; });
    return *this;
}

bool DCCSecurityKey::Serialize(CRawSerializer& out) const {
    out.WriteUInt64(Id);
    out.WriteString(Name);
    out.WriteUInt32(Flags);
    if (PublicKeyText) {
        out.WriteRaw(PublicKeyText.get(), kPublicKeyDigits);
    }
    out.WriteOptional(PrivateKey.get());
    out.WriteOptional(BitlockerKey.get());
    out.WriteString(Text2);
    out.WriteString(Text3);
    out.WriteInt32(ValidityYears);
    out.WriteSystemTime(Created);
    out.WriteSystemTime(Expires);
    return !out.Failed();
}

bool DCCSecurityKey::Deserialize(CRawReader& in) {
    in.ReadUInt64(Id);
    in.ReadString(Name);
    in.ReadUInt32(Flags);
    if (in.Failed()) {
        return false;
    }
    if ((Flags & KeyHasPublic) != 0) {
        if (!PublicKeyText) {
            PublicKeyText = NewPublicKeyBlock();
        }
        in.ReadRaw(PublicKeyText.get(), kPublicKeyDigits);
    }
    ReadOptional(in, PrivateKey);
    ReadOptional(in, BitlockerKey);
    in.ReadString(Text2);
    in.ReadString(Text3);
    in.ReadInt32(ValidityYears);
    in.ReadSystemTime(Created);
    in.ReadSystemTime(Expires);
    return !in.Failed();
}

void DCCSecurityKey::SetPublicKeyText(std::string_view digits) {
    PublicKeyText = NewPublicKeyBlock();
    std::memcpy(PublicKeyText.get(), digits.data(), std::min(digits.size(), kPublicKeyDigits));
    Flags |= KeyHasPublic;
}

}  // namespace Zelmarik
