#include "crypto/KeyFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "crypto/Rsa.h"
#include "crypto/SecurityKey.h"
#include "platform/ErrorCodes.h"
#include "tests/TestFolder.h"

namespace {

using Zelmarik::DCCPrivateKey;
using Zelmarik::DCCSecurityKey;
using Zelmarik::SystemTime;

// 512 digits: `number` repeated.
std::string NumberLine(const std::string& pattern) {
    std::string line;
    while (line.size() < 512) {
        line += pattern;
    }
    return line.substr(0, 512);
}

// The first seven lines of a key file, with five different numbers.
std::string KeyHead(const std::string& eol = "\n") {
    std::string text = "Ren\xC3\xA9 \xE2\x82\xAC" + eol;  // "René €"
    for (int i = 0; i < 5; ++i) {
        text += NumberLine(std::to_string(i + 1) + "0aBcDeF") + eol;
    }
    return text + "format 1" + eol;
}

// The words of a number line made by NumberLine.
DCCPrivateKey::Number Expected(const std::string& line) {
    DCCPrivateKey::Number number{};
    for (std::size_t w = 0; w < 64; ++w) {
        number[w] =
            static_cast<std::uint32_t>(std::stoul(line.substr(512 - 8 * (w + 1), 8), nullptr, 16));
    }
    return number;
}

class KeyFileTest : public ::testing::Test {
protected:
    std::uint32_t Load(const std::string& bytes) {
        const std::u16string path = folder_.Path(u"key.privkey");
        std::ofstream(folder_.Native() / "key.privkey", std::ios::binary | std::ios::trunc)
            << bytes;
        return key_.PrivateFromFile(path.c_str());
    }

    tests::TestFolder folder_;
    DCCSecurityKey key_;
};

TEST_F(KeyFileTest, FullFileFillsEveryField) {
    ASSERT_EQ(Load(KeyHead() + "07.11.2023, 14:05\n5\nignored tail\n"), 0u);
    EXPECT_EQ(key_.Name, u"Ren\u00e9 \u20ac");
    ASSERT_NE(key_.PrivateKey, nullptr);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(key_.PrivateKey->Numbers[i],
                  Expected(NumberLine(std::to_string(i + 1) + "0aBcDeF")))
            << "number " << i;
    }
    EXPECT_EQ(key_.Created, (SystemTime{2023, 11, 0, 7, 14, 5, 0, 0}));
    EXPECT_EQ(key_.ValidityYears, 5);
    EXPECT_EQ(key_.Expires, (SystemTime{2028, 11, 0, 7, 14, 5, 0, 0}));
    EXPECT_EQ(key_.Flags, Zelmarik::KeyHasPrivate | Zelmarik::KeyFromFile);
    EXPECT_TRUE(key_.PrivateKey->HasAllNumbers());
}

TEST_F(KeyFileTest, CrLfAndCaseGiveTheSameKey) {
    ASSERT_EQ(Load(KeyHead() + "1.2.2024, 3:04\n-1\n"), 0u);
    const DCCSecurityKey lf = key_;

    std::string crlf = KeyHead("\r\n") + "1.2.2024, 3:04\r\n-1\r\n";
    for (std::size_t i = crlf.find('\n'); i < crlf.size(); ++i) {
        if (crlf[i] >= 'a' && crlf[i] <= 'f') {
            crlf[i] = static_cast<char>(crlf[i] - 'a' + 'A');
        }
    }
    key_ = DCCSecurityKey{};
    ASSERT_EQ(Load(crlf), 0u);
    EXPECT_EQ(key_.Name, lf.Name);
    EXPECT_EQ(key_.PrivateKey->Numbers, lf.PrivateKey->Numbers);
    EXPECT_EQ(key_.Created, lf.Created);
    EXPECT_EQ(key_.ValidityYears, -1);
    EXPECT_EQ(key_.Expires, key_.Created);  // no end
}

// The optional date pair, the validity read like an integer, the year wrapping in 16 bits, and a
// zero byte ending the text.
TEST_F(KeyFileTest, DateAndValidityLines) {
    const struct {
        std::string tail;
        int validity;
        std::uint16_t expiresYear;
    } rows[] = {
        {"", 7, 0},                   // pair missing: validity kept
        {"07.11.2023, 14:05", 7, 0},  // no line end: not a date line
        {std::string(1, '\0') + "07.11.2023, 14:05\n5\n", 7, 0},
        {"1.1.2024,9:30\n  +12 years\n", 12, 2036},
        {"1.1.2024, 9:30\nnone\n", 0, 2024},
        {"1.1.65535, 9:30\n2\n", 2, 1},
        {"1.1.2026, 9:30\n2147483647\n", 2147483647, static_cast<std::uint16_t>(2026 + 0xFFFF)},
        {"1.1.2026, 9:30\n-2147483648\n", -2147483647 - 1, 2026}};
    for (const auto& row : rows) {
        key_ = DCCSecurityKey{};
        key_.ValidityYears = 7;
        ASSERT_EQ(Load(KeyHead() + row.tail), 0u) << row.tail;
        EXPECT_EQ(key_.ValidityYears, row.validity) << row.tail;
        EXPECT_EQ(key_.Expires.Year, row.expiresYear) << row.tail;
    }
}

TEST_F(KeyFileTest, NumberLinesMustHaveExactly512Characters) {
    // 512 characters with a space: 511 digits, one digit shorter.
    std::string spaced = KeyHead();
    const std::size_t second = spaced.find('\n') + 1;
    spaced.replace(second, 512, NumberLine("f"));
    spaced[second + 100] = ' ';
    ASSERT_EQ(Load(spaced), 0u);
    DCCPrivateKey::Number expected;
    expected.fill(0xFFFFFFFF);
    expected[63] = 0x0FFFFFFF;
    EXPECT_EQ(key_.PrivateKey->Numbers[0], expected);
}

// Every text that breaks the layout is refused as invalid data, and no private key is in force.
TEST_F(KeyFileTest, BrokenFilesAndPaths) {
    const std::string head = KeyHead();
    const std::size_t second = head.find('\n') + 1;
    std::string zeroInNumber = head;
    zeroInNumber[second + 20] = '\0';
    for (const std::string& broken : {std::string(), std::string("name without line end"),
                                      head.substr(0, head.size() - 1),     // line 7 without its end
                                      std::string(head).erase(second, 1),  // 511 digits
                                      std::string(head).insert(second, "0"),        // 513 digits
                                      zeroInNumber, head + "07.11.2023, 14:05\n5",  // no line end
                                      head + "07.11.2023 14:05\n5\n"}) {            // no comma
        key_ = DCCSecurityKey{};
        EXPECT_EQ(Load(broken), 13u) << broken.size();
        EXPECT_EQ(key_.Flags & Zelmarik::KeyHasPrivate, 0u) << broken.size();
    }

    EXPECT_EQ(key_.PrivateFromFile(nullptr), platform::kErrorInvalidParameter);
    EXPECT_EQ(key_.PrivateFromFile(folder_.Path(u"missing.privkey").c_str()),
              platform::kErrorFileNotFound);
    const std::u16string inMissingFolder =
        folder_.Path(u"no\u00e9dir") + platform::kPathSeparator + u"a.privkey";
    EXPECT_EQ(key_.PrivateFromFile(inMissingFolder.c_str()), platform::kErrorPathNotFound);
    EXPECT_EQ(key_.Flags & Zelmarik::KeyFromFile, 0u);
}

TEST_F(KeyFileTest, FilesLongerThanAnyKeyAreNotRead) {
    // What follows the fields would be ignored; a file this long is refused before it is read.
    const std::string whole = KeyHead() + "07.11.2023, 14:05\n5\n";
    ASSERT_EQ(Load(whole + std::string(Zelmarik::kLongestKeyFile - whole.size(), ' ')), 0u);
    EXPECT_EQ(Load(whole + std::string(Zelmarik::kLongestKeyFile - whole.size() + 1, ' ')), 13u);
}

// Other characters count as nothing; the walk stops after digitCount characters or at a zero
// character; words are counted from half the text's length.
TEST(RsaNumberText, HexDigitsAndBigEndianBytes) {
    std::uint32_t number[130];
    EXPECT_EQ(Zelmarik::DCRSA::NumberFromHex(number, 4, "1-2 3x4", 7), 1u);
    EXPECT_EQ(number[0], 0x1234u);
    EXPECT_EQ(Zelmarik::DCRSA::NumberFromHex(number, 4, "12345", 3), 1u);
    EXPECT_EQ(number[0], 0x123u);
    EXPECT_EQ(Zelmarik::DCRSA::NumberFromHex(number, 128, std::string(1000, '1'), 1000), 125u);
    EXPECT_EQ(Zelmarik::DCRSA::NumberFromHex(number, 130, std::string("ab\0cd", 5), 5), 1u);
    EXPECT_EQ(number[0], 0xABu);

    const std::uint8_t bytes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    number[2] = 7;
    EXPECT_EQ(Zelmarik::DCRSA::NumberFromBytes(number, 3, bytes, 5), 2u);
    EXPECT_EQ(number[0], 0x02030405u);
    EXPECT_EQ(number[1], 0x01u);
    EXPECT_EQ(number[2], 0u);
    EXPECT_EQ(Zelmarik::DCRSA::NumberFromBytes(number, 2, bytes, 10), 2u);  // low words only
    EXPECT_EQ(number[0], 0x0708090Au);
}

}  // namespace
