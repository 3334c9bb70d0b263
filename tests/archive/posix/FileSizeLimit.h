#pragma once
// A limit on the size of the files that this process writes, so that a write fails at a chosen
// byte as on a full disk.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdint>

namespace tests {

// While it lives, no file of this process grows beyond `bytes`: the write that would fails with
// EFBIG instead of the signal ending the process.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::uint64_t bytes) {
        getrlimit(RLIMIT_FSIZE, &saved_);
        rlimit limited = saved_;
        limited.rlim_cur = static_cast<rlim_t>(bytes);
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
        savedHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, savedHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit saved_{};
    void (*savedHandler_)(int) = SIG_DFL;
};

}  // namespace tests
