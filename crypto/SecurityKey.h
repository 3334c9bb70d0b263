#pragma once
// Key objects: what besides a password can open or seal an archive. A value object: copies own
// their blocks, and every owned object passes through a blob with the key.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/Common/RawSerializer.h"
#include "Common/Common/SystemTime.h"

namespace Zelmarik {

// Bits of DCCSecurityKey::Flags.
inline constexpr std::uint32_t KeyHasPublic = 0x1;
inline constexpr std::uint32_t KeyHasPrivate = 0x2;
inline constexpr std::uint32_t KeyHasBitlocker = 0x4;
inline constexpr std::uint32_t KeyFromFile = 0x8;

// Owner of one 32-bit flag word.
class IFlags {
public:
    virtual ~IFlags() = default;

    std::uint32_t Flags = 0;
};

// The numbers of a private key: entries 0 and 1 are the RSA primes, 2 to 4 are only carried.
class DCCPrivateKey : public ISerializableEx {
public:
    static constexpr std::size_t kNumberCount = 5;
    static constexpr std::size_t kNumberWords = 64;
    static constexpr std::size_t kNumberBytes = kNumberWords * 4;
    using Number = std::array<std::uint32_t, kNumberWords>;  // least significant word first

    DCCPrivateKey() = default;
    DCCPrivateKey(const DCCPrivateKey&) = default;
    DCCPrivateKey& operator=(const DCCPrivateKey&) = default;
    ~DCCPrivateKey() override;  // wipes the numbers

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;

    // True when none of the five numbers is all zero.
    bool HasAllNumbers() const;
    void CopyNumbersFrom(const DCCPrivateKey& other) { Numbers = other.Numbers; }

    std::array<Number, kNumberCount> Numbers{};
};

// An opaque key record that is only created, copied and stored.
class DCCBitlockerKey : public ISerializableEx {
public:
    static constexpr std::size_t kDataBytes = 32;

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;

    std::array<std::uint8_t, kDataBytes> Data{};
};

class DCCSecurityKey : public ISerializableEx, public IFlags {
public:
    // Hexadecimal digits of the modulus in PublicKeyText; the block holds one more zero byte.
    static constexpr std::size_t kPublicKeyDigits = 1024;
    static constexpr std::size_t kPublicKeyBlockSize = kPublicKeyDigits + 1;

    DCCSecurityKey() = default;
    DCCSecurityKey(const DCCSecurityKey& other);
    DCCSecurityKey& operator=(const DCCSecurityKey& other);
    ~DCCSecurityKey() override = default;

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;

    // Loads a *.privkey file; 0 or a Windows error number.
    std::uint32_t PrivateFromFile(const char16_t* path);
    // The parsing step of PrivateFromFile over a zero-terminated text.
    bool ParsePrivateKeyText(const char* text);

    // Gives PublicKeyText a zero-filled block of its own and sets KeyHasPublic.
    void SetPublicKeyText(std::string_view digits);

    std::uint64_t Id = ~std::uint64_t{0};
    std::unique_ptr<char[]> PublicKeyText;  // kPublicKeyBlockSize bytes, zero-terminated
    std::unique_ptr<DCCPrivateKey> PrivateKey;
    std::unique_ptr<DCCBitlockerKey> BitlockerKey;
    std::u16string Name;
    std::u16string Text2;
    std::u16string Text3;
    std::int32_t ValidityYears = -1;  // -1: no end
    SystemTime Created;
    SystemTime Expires;
};

}  // namespace Zelmarik
