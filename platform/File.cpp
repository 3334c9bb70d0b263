// The parts of File that do not depend on the system: ownership of the handle.
#include "platform/File.h"

namespace platform {

File::~File() {
    Close();
}

File::File(File&& other) noexcept : handle_(other.handle_) {
    other.handle_ = -1;
}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        Close();
        handle_ = other.handle_;
        other.handle_ = -1;
    }
    return *this;
}

}  // namespace platform
