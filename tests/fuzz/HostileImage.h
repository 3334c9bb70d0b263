#pragma once
// A valid DCF image kept as its plain records, so that a fuzzer's edits land behind the
// encryption: each edit changes a record's plain bytes, and the image is encrypted afterwards
// with the right keys. The reader then gets past the key block and meets the damage in the
// folder header, the names, the file headers, the tag blocks or the chunk chain.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tests/archive/ImageBuilder.h"

namespace fuzz {

using tests::Bytes;

class HostileImage {
public:
    // Sealed with `password`: two folders, a tagged file of three chunks, an empty file and a
    // small tagged file.
    explicit HostileImage(const std::u16string& password);

    // The image with `edits` applied. The edits are a sequence of commands, each
    //   op, record, offset (2 bytes, little-endian), length, then `length` bytes of payload
    // where op picks overwrite, insert, erase or cut; record and offset wrap around what
    // exists. Cut ends the whole encrypted image at the chosen place.
    Bytes Assemble(std::span<const std::uint8_t> edits) const;

    // The image as a valid writer would make it.
    Bytes Valid() const { return Assemble({}); }

private:
    enum class Protection { Plain, Region, Stream };
    struct Record {
        Protection protection;
        bool startsStream;  // the first record of an entry's data stream restarts the chain
        Bytes plain;
    };

    void Add(Protection protection, Bytes plain, bool startsStream = false);
    void AddEntry(const Bytes& content, const Bytes& categoryBlock);
    Bytes Encrypt(std::vector<Record> records, std::vector<std::size_t>& starts) const;

    tests::ImageBuilder builder_;  // holds the keys of the image
    std::vector<Record> records_;
};

// `image` behind a stand-in for the stub, with the trailer that points to it.
Bytes SelfExtracting(const Bytes& image);

}  // namespace fuzz
