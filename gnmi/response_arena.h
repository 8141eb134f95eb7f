// The region a context's response moves into when the context is first
// reset: a message runtime Arena over a first block that the context owns.
// Each later reset rewinds the arena; when the previous reply took more than
// the first block, the first block is replaced by a larger one, so that a
// stream of replies of one shape settles into the first block and allocates
// no block at all.
//
// The runtime's arena hands each thread blocks of its own, and its first
// block only to the thread that built or rewound it. A reply is built by
// whichever thread holds the context, which need not be the thread that
// reset it: the first access to the response through the context after a
// reset (Claim) rewinds the arena once more on the accessing thread when that
// is another thread, so that the first block serves the thread that builds.
#ifndef MGMTMSG_GNMI_RESPONSE_ARENA_H
#define MGMTMSG_GNMI_RESPONSE_ARENA_H

#include <google/protobuf/arena.h>
#include <google/protobuf/message_lite.h>

#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <thread>

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
      Response* empty = CreateEmpty<Response>();
      if (onHeap) {
        delete *response;
      }
      *response = empty;
      resetBy_ = std::this_thread::get_id();
      return 1;
    } catch (const std::bad_alloc&) {
      return 0;
    }
  }

  // The response for building: when this is the first access since a reset
  // and it comes from another thread than the reset, the still empty response
  // is made again on an arena rewound by this thread.
  template <class Response>
  Response* Claim(Response** response) {
    if (resetBy_ != std::thread::id()) {
      if (resetBy_ != std::this_thread::get_id()) {
        arena_->Reset();
        *response = CreateEmpty<Response>();
      }
      resetBy_ = std::thread::id();
    }
    return *response;
  }

  // Frees a response that lives on the heap; one on the arena is freed with it.
  static void Delete(google::protobuf::MessageLite* response) {
    if (response->GetArena() == nullptr) {
      delete response;
    }
  }

 private:
  // The arena's first block is empty and larger than any message: this
  // creation takes no block from the heap.
  template <class Response>
  Response* CreateEmpty() {
    return google::protobuf::Arena::CreateMessage<Response>(&*arena_);
  }
  // Makes the arena empty: built on the first call, rebuilt over a larger
  // first block when the last reply outgrew it (kept as it is when that block
  // cannot be had), else rewound. False, with nothing changed, only when the
  // first call cannot have its block.
  bool Rewind();
  // Rebuilds the arena over a new first block of `size` bytes. False, with
  // nothing changed, when that block cannot be had.
  bool RebuildOver(size_t size);

  std::unique_ptr<char[]> block_;
  size_t blockSize_ = 0;
  std::optional<google::protobuf::Arena> arena_;  // destroyed before its block
  std::thread::id resetBy_;  // the thread of the last reset, until the first Claim
};

#endif
