#include "alloc_count.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

// glibc's own allocator, which the replacements below forward to, under the
// names glibc gives it.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

// The benchmarks run on one thread: a relaxed increment that needs no locked
// instruction is enough.
std::atomic<uint64_t> allocations{0};

void Count() {
  allocations.store(allocations.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

}  // namespace

namespace bench {

uint64_t HeapAllocations() { return allocations.load(std::memory_order_relaxed); }

}  // namespace bench

extern "C" {

void* malloc(size_t size) noexcept {
  Count();
  return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept {
  Count();
  return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) noexcept {
  Count();
  return __libc_realloc(block, size);
}

void* memalign(size_t alignment, size_t size) noexcept {
  Count();
  return __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) noexcept {
  Count();
  return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size) noexcept {
  if (alignment < sizeof(void*) || (alignment & (alignment - 1)) != 0) {
    return EINVAL;
  }
  Count();
  void* aligned = __libc_memalign(alignment, size);
  if (aligned == nullptr) {
    return ENOMEM;
  }
  *block = aligned;
  return 0;
}

void free(void* block) noexcept { __libc_free(block); }

}  // extern "C"
