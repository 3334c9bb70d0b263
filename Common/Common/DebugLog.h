#pragma once
// Objects that print themselves as one line of wide text, for inspection and exception texts.

#include <string>

namespace Zelmarik {

class IDebugLog {
public:
    virtual ~IDebugLog() = default;
    virtual std::u16string DebugLog() const = 0;
};

}  // namespace Zelmarik
