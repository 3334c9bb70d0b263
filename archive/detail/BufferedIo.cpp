#include "archive/detail/BufferedIo.h"

#include <algorithm>
#include <cstring>
#include <limits>

BufferedReader::BufferedReader(platform::File& file, std::size_t capacity)
    : file_(file), buffer_(new std::uint8_t[capacity]), capacity_(capacity) {
    located_ = file_.Tell(fileOffset_) == platform::kErrorSuccess;
}

bool BufferedReader::Refill() {
    std::size_t got = 0;
    if (file_.Read(buffer_.get(), capacity_, got) != platform::kErrorSuccess || got == 0) {
        return false;
    }
    begin_ = 0;
    end_ = got;
    fileOffset_ += got;
    return true;
}

bool BufferedReader::SeekTo(std::uint64_t position) {
    const std::uint64_t bufferStart = fileOffset_ - end_;
    if (located_ && position >= bufferStart && position <= fileOffset_) {
        begin_ = static_cast<std::size_t>(position - bufferStart);
        failed_ = false;
        return true;
    }
    begin_ = end_ = 0;
    located_ = file_.Seek(position) == platform::kErrorSuccess;
    fileOffset_ = position;
    failed_ = !located_;
    return located_;
}

bool BufferedReader::Read(std::span<std::uint8_t> out) {
    std::size_t done = 0;
    while (!failed_ && done < out.size()) {
        if (begin_ == end_ && !Refill()) {
            failed_ = true;
            break;
        }
        const std::size_t take = std::min(out.size() - done, end_ - begin_);
        std::memcpy(out.data() + done, buffer_.get() + begin_, take);
        begin_ += take;
        done += take;
    }
    return !failed_;
}

std::uint64_t BufferedReader::Remaining() {
    if (!sized_) {
        sized_ = file_.Size(size_) == platform::kErrorSuccess;
    }
    const std::uint64_t position = Position();
    if (failed_ || !located_ || !sized_ || position > size_) {
        return 0;
    }
    return size_ - position;
}

bool ReadPromised(BufferedReader& source, std::uint64_t size, std::vector<std::uint8_t>& out) {
    if (size > std::numeric_limits<std::uint32_t>::max() || size > source.Remaining()) {
        return false;
    }
    out.resize(static_cast<std::size_t>(size));
    return source.Read(out);
}

BufferedWriter::BufferedWriter(platform::File& file, std::size_t capacity)
    : file_(file), buffer_(new std::uint8_t[capacity]), capacity_(capacity) {}

BufferedWriter::~BufferedWriter() {
    Flush();
}

bool BufferedWriter::Write(std::span<const std::uint8_t> data) {
    if (failed_) {
        return false;
    }
    if (data.empty()) {
        return true;
    }
    if (used_ + data.size() > capacity_) {
        if (!Flush()) {
            return false;
        }
        if (data.size() >= capacity_) {
            failed_ = file_.Write(data.data(), data.size()) != platform::kErrorSuccess;
            return !failed_;
        }
    }
    std::memcpy(buffer_.get() + used_, data.data(), data.size());
    used_ += data.size();
    return true;
}

bool BufferedWriter::Flush() {
    if (!failed_ && used_ != 0) {
        failed_ = file_.Write(buffer_.get(), used_) != platform::kErrorSuccess;
        used_ = 0;
    }
    return !failed_;
}
