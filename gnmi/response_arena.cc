#include "gnmi/response_arena.h"

#include <algorithm>

namespace {

// The first block of a context's first reset: room for the empty response
// and a reply of a few updates before the arena takes blocks of its own.
constexpr size_t kFirstBlockBytes = 4096;

}  // namespace

bool ResponseArena::Rewind() {
  if (!arena_) {
    return RebuildOver(kFirstBlockBytes);
  }
  // A reply built by several threads took blocks of each beside the first:
  // what it took in all, not the bytes it used, would grow the first block
  // at every reset. What it used, twice over, holds the reply with the
  // runtime's overhead in one block, and bounds the first block by twice the
  // largest reply.
  const size_t allocated = arena_->SpaceAllocated();
  const size_t wanted = std::min<size_t>(allocated, 2 * arena_->SpaceUsed());
  if (allocated <= blockSize_ || wanted <= blockSize_ || !RebuildOver(wanted)) {
    arena_->Reset();
  }
  return true;
}

bool ResponseArena::RebuildOver(size_t size) {
  std::unique_ptr<char[]> block(new (std::nothrow) char[size]);
  if (block == nullptr) {
    return false;
  }
  google::protobuf::ArenaOptions options;
  options.initial_block = block.get();
  options.initial_block_size = size;
  arena_.reset();
  block_ = std::move(block);
  blockSize_ = size;
  arena_.emplace(options);
  return true;
}
