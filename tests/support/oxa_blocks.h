// Blocks handed over by the GRPCI_ serializers, held until the test ends and
// then released with OXA_Free_F, and a fixture that clears the host memory
// manager's counters before each test and expects every block back after it.
#ifndef MGMTMSG_TESTS_SUPPORT_OXA_BLOCKS_H
#define MGMTMSG_TESTS_SUPPORT_OXA_BLOCKS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>

#include "oxa_mem_host.h"

namespace testsupport {

// What a serializer gave back. The out-arguments start as sentinels, so that
// a failed call can be seen to have left them alone.
struct Block {
  int32_t result = 0;
  std::unique_ptr<void, void (*)(void*)> block{nullptr, [](void* b) { OXA_Free_F(b, "test", 0); }};
  uint32_t length = 0;
  bool outUntouched = false;
  std::string Bytes() const { return std::string(static_cast<const char*>(block.get()), length); }
};

using Serializer = int32_t (*)(uint32_t ownerId, void* message, void** out, uint32_t* outLen);

inline Block SerializeWith(Serializer serialize, uint32_t ownerId, void* message) {
  static char sentinel;
  void* out = &sentinel;
  uint32_t length = 0xA5A5A5A5u;
  Block serialized;
  serialized.result = serialize(ownerId, message, &out, &length);
  serialized.outUntouched = out == &sentinel && length == 0xA5A5A5A5u;
  serialized.block.reset(serialized.result == 1 ? out : nullptr);
  serialized.length = serialized.result == 1 ? length : 0;
  return serialized;
}

class OxaTest : public ::testing::Test {
 protected:
  void SetUp() override { OxaHost_Reset(); }
  void TearDown() override { EXPECT_EQ(OxaHost_Stats().liveBlocks, 0u); }
};

}  // namespace testsupport

#endif
