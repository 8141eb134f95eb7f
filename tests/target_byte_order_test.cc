// The device is big-endian: the south IPC frame's length word, written in host
// byte order, goes out most significant byte first. Built for big-endian
// targets only.
#include <gtest/gtest.h>

#include <string>

#include "grpci/grpci_ex.h"
#include "support/owned.h"
#include "support/oxa_blocks.h"

static_assert(__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__, "built for big-endian targets only");

namespace {

using testsupport::Make;
using testsupport::SerializeWith;

using TargetByteOrder = testsupport::OxaTest;

TEST_F(TargetByteOrder, SouthFrameLengthWordIsMostSignificantByteFirst) {
  auto msg = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  // A message of a few thousand bytes: a length word with two distinct
  // non-zero bytes, so that either byte order shows.
  const std::string desc(0x1234, 'r');
  GRPCI_SouthMsgSetResultDesc(msg.get(), desc.data(), static_cast<uint32_t>(desc.size()));

  const auto frame = SerializeWith(GRPCI_SouthMsgSerialize, 1, msg.get());
  ASSERT_EQ(frame.result, 1);
  const uint32_t n = frame.length - 4;
  ASSERT_GT(n, desc.size());
  ASSERT_LT(n, 0x10000u);
  EXPECT_EQ(frame.Bytes(0, 4),
            std::string({0, 0, static_cast<char>(n >> 8), static_cast<char>(n)}));
}

}  // namespace
