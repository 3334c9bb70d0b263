#pragma once
// The stub as built, found from the tests beside it in the build tree.

#include <string>

#include "platform/Module.h"

namespace tests {

inline std::u16string BuiltStubPath() {
    std::u16string path = platform::ModulePath();
    path.resize(path.find_last_of(u'\\') + 1);
    return path + u"..\\..\\frontend\\Vomdrel.exe";
}

}  // namespace tests
