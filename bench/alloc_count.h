// Counts the program's heap allocations: this program replaces malloc and its
// siblings, so every allocation of the library, the message runtime and the
// C++ runtime's operator new is counted here.
#ifndef MGMTMSG_BENCH_ALLOC_COUNT_H
#define MGMTMSG_BENCH_ALLOC_COUNT_H

#include <cstdint>

namespace bench {

// Allocations made since the program started (malloc, calloc, realloc and
// the aligned forms), platform blocks of the host memory manager included.
uint64_t HeapAllocations();

}  // namespace bench

#endif
