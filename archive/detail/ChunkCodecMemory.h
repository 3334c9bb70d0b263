#pragma once
// Memory for the compression libraries, whose windows and buffers hold plaintext: wiped when
// it is freed. The libraries free by address alone, so each block carries its size in front.

#include <cstddef>

// Like malloc; null when there is no memory.
void* AllocateWiped(std::size_t size);
// Like free, after wiping the block; null does nothing.
void FreeWiped(void* block);
