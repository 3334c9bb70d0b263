// The part of SecureMemory that does not depend on the system.
#include "platform/SecureMemory.h"

namespace platform {

// Never inlined: its frame must lie where the frames of the caller's callees were.
[[gnu::noinline]] void WipeStackBelow() {
    unsigned char area[32 * 1024];
    SecureWipe(area, sizeof area);
}

}  // namespace platform
