#include "common/platform_block.h"

#include <cstring>

#include "oxa_mem.h"

namespace mgmtmsg {

int32_t SerializeToPlatformBlock(const google::protobuf::MessageLite& message, uint32_t ownerId,
                                 const PlatformBlockSite& site, void** out, uint32_t* outLen) {
  const size_t encodedSize = message.ByteSizeLong();  // cached in the message for the encoder
  if (encodedSize > kMaxPlatformMessageBytes) {
    return 0;
  }
  const uint32_t messageBytes = static_cast<uint32_t>(encodedSize);
  const bool prefixed = site.layout == BlockLayout::kLengthPrefixed;
  const uint32_t prefixBytes = prefixed ? sizeof messageBytes : 0;
  const uint32_t blockBytes = prefixBytes + messageBytes + (prefixed ? 0 : 1);
  auto* block = static_cast<uint8_t*>(
      OXA_Malloc_F(ownerId, g_aucOxaMemPt[0], blockBytes, site.module, site.mallocLine));
  if (block == nullptr) {
    return 0;
  }
  std::memcpy(block, &messageBytes, prefixBytes);  // the length word, in host byte order
  uint8_t* const body = block + prefixBytes;
  if (message.SerializeWithCachedSizesToArray(body) != body + messageBytes) {
    OXA_Free_F(block, site.module, site.freeLine);
    return 0;
  }
  *out = block;
  *outLen = prefixBytes + messageBytes;
  return 1;
}

}  // namespace mgmtmsg
