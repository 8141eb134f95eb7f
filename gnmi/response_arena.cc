#include "gnmi/response_arena.h"

namespace {

// The first block of a context's first reset: room for the empty response
// and a reply of a few updates before the arena takes blocks of its own.
constexpr size_t kFirstBlockBytes = 4096;

}  // namespace

bool ResponseArena::Rewind() {
  if (!arena_) {
    return RebuildOver(kFirstBlockBytes);
  }
  const size_t highWater = arena_->SpaceAllocated();
  if (highWater <= blockSize_ || !RebuildOver(highWater)) {
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
