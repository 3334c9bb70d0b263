#include "archive/detail/BufferedIo.h"

#include <algorithm>
#include <cstring>

BufferedReader::BufferedReader(platform::File& file, std::size_t capacity)
    : file_(file), buffer_(new std::uint8_t[capacity]), capacity_(capacity) {}

bool BufferedReader::Refill() {
    std::size_t got = 0;
    if (file_.Read(buffer_.get(), capacity_, got) != platform::kErrorSuccess || got == 0) {
        return false;
    }
    begin_ = 0;
    end_ = got;
    return true;
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
    std::uint64_t size = 0;
    std::uint64_t position = 0;
    if (failed_ || file_.Size(size) != platform::kErrorSuccess ||
        file_.Tell(position) != platform::kErrorSuccess || position > size) {
        return 0;
    }
    return size - position + (end_ - begin_);
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
