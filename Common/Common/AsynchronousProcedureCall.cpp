#include "Common/Common/AsynchronousProcedureCall.h"

namespace Zelmarik {

bool SAsyncInfo::Serialize(CRawSerializer& out) const {
    out.WriteUInt32(Result);
    return out.WriteUInt32(State);
}

bool SAsyncInfo::Deserialize(CRawReader& in) {
    in.ReadUInt32(Result);
    return in.ReadUInt32(State);
}

std::int64_t SteadyClockNow() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace Zelmarik
