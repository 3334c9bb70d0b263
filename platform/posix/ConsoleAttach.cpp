#include "platform/Console.h"

namespace platform {

bool AttachProcessConsole() {
    return true;
}  // a POSIX program always has its streams

}  // namespace platform
