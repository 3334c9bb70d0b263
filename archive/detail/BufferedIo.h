#pragma once
// Large-block buffering over platform::File, so that the record and block reads of an image and
// the writes of a target cost one system call per buffer, not one per cipher block. The buffers
// are not cleared when they are made: a small file touches only the pages it uses.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/File.h"

inline constexpr std::size_t kIoBufferSize = 256 * 1024;

// Reads a file forward from its current position. Not owning the file; nothing else may move
// its position meanwhile. The position and the size are asked of the system once, not per call.
class BufferedReader {
public:
    explicit BufferedReader(platform::File& file, std::size_t capacity = kIoBufferSize);

    // Fills all of `out` or fails; after a failure nothing more can be read, until SeekTo.
    bool Read(std::span<std::uint8_t> out);
    // Bytes left between the reading position and the end of the file, as large as it was when
    // first asked; 0 when unknown.
    std::uint64_t Remaining();
    // The offset in the file of the next byte Read gives.
    std::uint64_t Position() const { return fileOffset_ - (end_ - begin_); }
    // Goes back (or on) to `position`, clearing a failure; false when the file can't seek there.
    bool SeekTo(std::uint64_t position);

private:
    bool Refill();

    platform::File& file_;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t capacity_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::uint64_t fileOffset_ = 0;  // where the buffer's end lies in the file
    bool located_ = false;          // fileOffset_ is known
    std::uint64_t size_ = 0;
    bool sized_ = false;
    bool failed_ = false;
};

// Reads a record of `size` bytes that the file promises; false when fewer remain, so that a
// hostile length never makes us allocate what the file can't hold.
bool ReadPromised(BufferedReader& source, std::uint64_t size, std::vector<std::uint8_t>& out);

// Collects writes to a file and passes them on a buffer at a time. Not owning the file.
class BufferedWriter {
public:
    explicit BufferedWriter(platform::File& file, std::size_t capacity = kIoBufferSize);
    // Passes on what is pending; a failure here is lost, so callers Flush first.
    ~BufferedWriter();
    BufferedWriter(const BufferedWriter&) = delete;
    BufferedWriter& operator=(const BufferedWriter&) = delete;

    bool Write(std::span<const std::uint8_t> data);
    bool Flush();

private:
    platform::File& file_;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t capacity_;
    std::size_t used_ = 0;
    bool failed_ = false;
};
