#pragma once
// Large-block buffering over platform::File, so that the record and block reads of an image and
// the writes of a target cost one system call per buffer, not one per cipher block. The buffers
// are not cleared when they are made: a small file touches only the pages it uses.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/File.h"

inline constexpr std::size_t kIoBufferSize = 256 * 1024;

// Reads a file forward from its current position. Not owning the file.
class BufferedReader {
public:
    explicit BufferedReader(platform::File& file, std::size_t capacity = kIoBufferSize);

    // Fills all of `out` or fails; after a failure nothing more can be read.
    bool Read(std::span<std::uint8_t> out);
    // Bytes left between the reading position and the end of the file; 0 when unknown.
    std::uint64_t Remaining();

private:
    bool Refill();

    platform::File& file_;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t capacity_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool failed_ = false;
};

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
