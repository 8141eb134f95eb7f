// Serialization into blocks from the device memory manager: the block passes
// to the caller, who releases it with OXA_Free_F.
#ifndef MGMTMSG_COMMON_PLATFORM_BLOCK_H
#define MGMTMSG_COMMON_PLATFORM_BLOCK_H

#include <google/protobuf/message_lite.h>

#include <cstdint>

namespace mgmtmsg {

// The largest encoding handed to the platform (50 MiB); longer ones are
// refused before anything is allocated.
inline constexpr size_t kMaxPlatformMessageBytes = 52428800;

// How the N encoded bytes sit in their block.
enum class BlockLayout {
  // The IPC frame: N as a 32-bit word in host byte order, then the message;
  // N + 4 bytes, all of them reported.
  kLengthPrefixed,
  // The bare message followed by one byte that is never written; N + 1
  // bytes, N reported.
  kSpareTrailingByte,
};

// Who serializes: the layout, and the module name and lines handed to the
// memory manager as the calling place of the allocation and the release.
struct PlatformBlockSite {
  BlockLayout layout;
  const char* module;
  uint32_t mallocLine;
  uint32_t freeLine;
};

// Encodes `message` into one block of owner `ownerId` from the first
// partition of g_aucOxaMemPt. 1 on success, with the block and the reported
// length stored in *out and *outLen; 0 when the encoding is too long, the
// allocation fails or the encoder writes other than the size it computed,
// with the out-arguments untouched and no block left allocated.
int32_t SerializeToPlatformBlock(const google::protobuf::MessageLite& message, uint32_t ownerId,
                                 const PlatformBlockSite& site, void** out, uint32_t* outLen);

}  // namespace mgmtmsg

#endif
