#pragma once

#include <malloc.h>

#include <cstddef>

// Bytes the C heap has handed out and not taken back, allocator overhead included: what a
// take really costs in memory, beyond what the model accounts for.
inline size_t HeapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
