// The region a context's response moves into when the context is first
// reset: a message runtime Arena over a first block that the context owns.
// Each later reset rewinds the arena; when the previous message needed more
// than the first block, the first block is replaced by one of the arena's
// high-water size, so that a stream of replies of one shape settles into the
// first block and allocates no block at all.
#ifndef MGMTMSG_GNMI_RESPONSE_ARENA_H
#define MGMTMSG_GNMI_RESPONSE_ARENA_H

#include <google/protobuf/arena.h>
#include <google/protobuf/message_lite.h>

#include <cstddef>
#include <memory>
#include <new>
#include <optional>

class ResponseArena {
 public:
  // Replaces `*response` by a new empty message of its type on the arena,
  // freeing the old one. 1 on success; 0 when memory could not be had, with
  // `*response` and everything in it as they were. Throws nothing.
  template <class Response>
  int Reset(Response** response) noexcept {
    try {
      // Read before the rewind, which frees a response on the arena.
      const bool onHeap = (*response)->GetArena() == nullptr;
      if (!Rewind()) {
        return 0;
      }
      // The arena's first block is empty and larger than any message: this
      // creation takes no block from the heap.
      Response* empty = google::protobuf::Arena::CreateMessage<Response>(&*arena_);
      if (onHeap) {
        delete *response;
      }
      *response = empty;
      return 1;
    } catch (const std::bad_alloc&) {
      return 0;
    }
  }

  // Frees a response that lives on the heap; one on the arena is freed with it.
  static void Delete(google::protobuf::MessageLite* response) {
    if (response->GetArena() == nullptr) {
      delete response;
    }
  }

 private:
  // Makes the arena empty: built on the first call, rebuilt over a first
  // block of its high-water size when it outgrew its block (kept as it is
  // when that block cannot be had), else rewound. False, with nothing
  // changed, only when the first call cannot have its block.
  bool Rewind();
  // Rebuilds the arena over a new first block of `size` bytes. False, with
  // nothing changed, when that block cannot be had.
  bool RebuildOver(size_t size);

  std::unique_ptr<char[]> block_;
  size_t blockSize_ = 0;
  std::optional<google::protobuf::Arena> arena_;  // destroyed before its block
};

#endif
