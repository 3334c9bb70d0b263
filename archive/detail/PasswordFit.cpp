#include "archive/Archive.h"
#include "archive/detail/DcfRecords.h"

PasswordFit FitPassword(std::u16string_view password) {
    const auto bytes = dcf::PasswordBytes(password);
    if (!bytes) {
        return PasswordFit::TooLong;
    }
    return bytes->empty() ? PasswordFit::Empty : PasswordFit::Fits;
}
