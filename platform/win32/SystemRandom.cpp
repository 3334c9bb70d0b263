#include "platform/SystemRandom.h"

#include <windows.h>
// wincrypt.h needs the types of windows.h first.
#include <wincrypt.h>

namespace platform {

bool SystemRandom(void* data, std::size_t size) {
    HCRYPTPROV provider = 0;
    if (!::CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_FULL,
                                CRYPT_VERIFYCONTEXT | CRYPT_SILENT)) {
        return false;
    }
    bool ok = true;
    auto* out = static_cast<BYTE*>(data);
    while (ok && size > 0) {
        const DWORD chunk = size > 0x10000000 ? 0x10000000 : static_cast<DWORD>(size);
        ok = ::CryptGenRandom(provider, chunk, out) != 0;
        out += chunk;
        size -= chunk;
    }
    ::CryptReleaseContext(provider, 0);
    return ok;
}

}  // namespace platform
