// The process-wide random pool that supplies the random bytes of a new archive: it lives from
// RandomStart to RandomStop, around the making of one key block.
#pragma once

#include <cstdint>

namespace crypto {

// Starts the pool, its poll thread and its event sources. Does nothing while it runs.
void RandomStart();

// Stops the pool, waits for the poll thread and wipes the pool. Does nothing while it is stopped.
void RandomStop();

// Writes count random bytes to buffer. Returns false, writing nothing, when the pool is not
// running (never started, or its start failed): the caller must then fail in order.
bool RandomGetBytes(std::uint8_t* buffer, std::uint32_t count, bool forceSlowPoll);

}  // namespace crypto
