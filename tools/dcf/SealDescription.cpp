#include "tools/dcf/SealDescription.h"

#include <vector>

#include "crypto/CipherSuite.h"

namespace dcftool {

std::string SuiteInWords(std::uint32_t suite) {
    const auto suites = crypto::SuiteTable();
    std::vector<std::string> names;
    std::vector<std::uint32_t> bits;
    if (suite < suites.size()) {
        for (const std::uint32_t cipher : suites[suite].ciphers) {
            for (const crypto::CipherInfo& info : crypto::CipherTable()) {
                if (cipher != 0 && info.id == cipher) {
                    names.emplace_back(info.name);
                    bits.push_back(info.keySize * 8);
                }
            }
        }
    }
    if (names.empty()) {
        return "unknown suite " + std::to_string(suite);
    }
    if (names.size() == 1) {
        return names[0] + " with a " + std::to_string(bits[0]) + "-bit key";
    }
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0                  ? ""
                 : i + 1 == names.size() ? " and "
                                         : ", ") +
                names[i] + " (" + std::to_string(bits[i]) + "-bit key)";
    }
    return text + " in cascade";
}

std::string KeyBlockInWords() {
    return "a password slot and a recipient key slot; an unused recipient slot holds random "
           "bytes, so which of them opens the archive, and its cipher suite, show only when a key "
           "opens it ('dcf test')";
}

}  // namespace dcftool
