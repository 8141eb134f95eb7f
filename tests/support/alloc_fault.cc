#include "support/alloc_fault.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace allocfault {
namespace {

std::atomic<int64_t> countdown{-1};
std::atomic<bool> fired{false};
std::atomic<int64_t> live{0};

void* Allocate(std::size_t size) {
  if (countdown.load() >= 0 && countdown-- == 0) {
    fired = true;
    return nullptr;
  }
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block != nullptr) {
    live++;
  }
  return block;
}

void Release(void* block) {
  if (block != nullptr) {
    live--;
    std::free(block);
  }
}

void* AllocateOrThrow(std::size_t size) {
  void* block = Allocate(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

}  // namespace

void FailAfter(int64_t n) {
  fired = false;
  countdown = n;
}
void Disarm() { countdown = -1; }
bool Fired() { return fired; }
int64_t Live() { return live; }

}  // namespace allocfault

void* operator new(std::size_t size) { return allocfault::AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocfault::AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocfault::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocfault::Allocate(size);
}
void operator delete(void* block) noexcept { allocfault::Release(block); }
void operator delete[](void* block) noexcept { allocfault::Release(block); }
void operator delete(void* block, std::size_t) noexcept { allocfault::Release(block); }
void operator delete[](void* block, std::size_t) noexcept { allocfault::Release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { allocfault::Release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { allocfault::Release(block); }
