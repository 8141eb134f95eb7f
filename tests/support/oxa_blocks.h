// Blocks handed over by the GRPCI_ serializers, held until the test ends and
// then released with OXA_Free_F, and a fixture that clears the host memory
// manager's counters before each test.
#ifndef MGMTMSG_TESTS_SUPPORT_OXA_BLOCKS_H
#define MGMTMSG_TESTS_SUPPORT_OXA_BLOCKS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "oxa_mem_host.h"

namespace testsupport {

struct OxaFree {
  void operator()(void* block) const { OXA_Free_F(block, "test", 0); }
};

// What a serializer gave back. The out-arguments start as sentinels, so that
// a failed call can be seen to have left them alone.
struct Block {
  int32_t result = 0;
  std::unique_ptr<void, OxaFree> block;
  uint32_t length = 0;
  bool outUntouched = false;

  // The `count` bytes of the block from `offset` on.
  std::string Bytes(size_t offset, size_t count) const {
    return std::string(static_cast<const char*>(block.get()) + offset, count);
  }
  // The IPC frame's length word, read in host byte order.
  uint32_t LengthWord() const {
    uint32_t word;
    std::memcpy(&word, block.get(), sizeof word);
    return word;
  }
};

using Serializer = int32_t (*)(uint32_t ownerId, void* message, void** out, uint32_t* outLen);

inline Block SerializeWith(Serializer serialize, uint32_t ownerId, void* message) {
  static char sentinel;
  constexpr uint32_t kSentinelLength = 0xA5A5A5A5u;
  void* out = &sentinel;
  uint32_t length = kSentinelLength;
  Block serialized;
  serialized.result = serialize(ownerId, message, &out, &length);
  serialized.outUntouched = out == &sentinel && length == kSentinelLength;
  if (serialized.result == 1) {
    serialized.block.reset(out);
    serialized.length = length;
  }
  return serialized;
}

// Expects the last OXA_Malloc_F call to have had these arguments and the host
// memory manager's first partition, 7.
inline void ExpectLastMalloc(uint32_t ownerId, uint32_t size, const char* file, uint32_t line) {
  const OxaHostCall call = OxaHost_Stats().lastMalloc;
  EXPECT_EQ(call.ownerId, ownerId);
  EXPECT_EQ(call.partition, 7);
  EXPECT_EQ(call.size, size);
  EXPECT_STREQ(call.file, file);
  EXPECT_EQ(call.line, line);
}

// Fills `payload` so that the message's encoding, `overhead` bytes longer, is
// one byte over the 52428800-byte limit, and expects it refused without any
// allocation; then serializes it one byte shorter, at the limit.
inline Block SerializeAtTheLimit(Serializer serialize, void* message, std::string* payload,
                                 size_t overhead) {
  payload->assign(52428800 - overhead + 1, 'p');
  OxaHost_Reset();
  const Block refused = SerializeWith(serialize, 1, message);
  EXPECT_EQ(refused.result, 0);
  EXPECT_TRUE(refused.outUntouched);
  EXPECT_EQ(OxaHost_Stats().mallocCalls, 0u);
  payload->pop_back();
  return SerializeWith(serialize, 1, message);
}

// Starts every test with the memory manager's counters cleared and ends it
// with every block released.
class OxaTest : public ::testing::Test {
 protected:
  void SetUp() override { OxaHost_Reset(); }
  void TearDown() override { EXPECT_EQ(OxaHost_Stats().liveBlocks, 0u); }
};

}  // namespace testsupport

#endif
