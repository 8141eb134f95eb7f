// The two serialization helpers, driven by a message whose size and output
// the test chooses: into platform blocks (this program builds its own copy of
// that helper) and into a gNMI context's buffer.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <utility>

#include "common/platform_block.h"
#include "gnmi/gnmi_rpc.h"
#include "support/oxa_blocks.h"

namespace {

using mgmtmsg::BlockLayout;
using mgmtmsg::PlatformBlockSite;
using testsupport::SerializeWith;

// Computes `size` encoded bytes, then caches and writes `written` bytes of 'x',
// as a message changed between the two steps would; counts the size
// computations.
class ChosenMessage final : public google::protobuf::MessageLite {
 public:
  ChosenMessage(size_t size, size_t written) : size(size), written(written) {}
  size_t size;
  size_t written;
  mutable int sizeComputations = 0;

  std::string GetTypeName() const override { return "ChosenMessage"; }
  MessageLite* New(google::protobuf::Arena*) const override { return nullptr; }
  void Clear() override {}
  bool IsInitialized() const override { return true; }
  void CheckTypeAndMergeFrom(const MessageLite&) override {}
  size_t ByteSizeLong() const override {
    ++sizeComputations;
    return size;
  }
  int GetCachedSize() const override { return static_cast<int>(written); }
  const char* _InternalParse(const char* ptr, google::protobuf::internal::ParseContext*) override {
    return ptr;
  }
  uint8_t* _InternalSerialize(uint8_t* target,
                              google::protobuf::io::EpsCopyOutputStream*) const override {
    return static_cast<uint8_t*>(std::memset(target, 'x', written)) + written;
  }
};

constexpr PlatformBlockSite kFramed{BlockLayout::kLengthPrefixed, "framing_module", 10, 20};
constexpr PlatformBlockSite kBare{BlockLayout::kSpareTrailingByte, "bare_module", 30, 40};

// The helper as an entry point calls it, for a ChosenMessage handle.
template <const PlatformBlockSite& kSite>
int32_t SerializeFor(uint32_t ownerId, void* message, void** out, uint32_t* outLen) {
  return mgmtmsg::SerializeToPlatformBlock(*static_cast<ChosenMessage*>(message), ownerId, kSite,
                                           out, outLen);
}

using PlatformBlock = testsupport::OxaTest;

TEST_F(PlatformBlock, SizeIsComputedOnceForEitherLayout) {
  ChosenMessage framed(5, 5);
  const auto frame = SerializeWith(SerializeFor<kFramed>, 42, &framed);
  ASSERT_EQ(frame.result, 1);
  EXPECT_EQ(frame.LengthWord(), 5u);
  EXPECT_EQ(frame.Bytes(4, frame.length - 4), "xxxxx");
  testsupport::ExpectLastMalloc(42, 9, "framing_module", 10);

  ChosenMessage bare(5, 5);
  const auto block = SerializeWith(SerializeFor<kBare>, 43, &bare);
  ASSERT_EQ(block.result, 1);
  EXPECT_EQ(block.Bytes(0, block.length), "xxxxx");
  testsupport::ExpectLastMalloc(43, 6, "bare_module", 30);
  EXPECT_EQ(framed.sizeComputations + bare.sizeComputations, 2);
}

TEST_F(PlatformBlock, EncodingShortOfTheComputedSizeReleasesTheBlock) {
  const std::pair<const PlatformBlockSite*, testsupport::Serializer> sites[] = {
      {&kFramed, SerializeFor<kFramed>}, {&kBare, SerializeFor<kBare>}};
  for (const auto& [site, serialize] : sites) {
    ChosenMessage shorter(5, 4);
    const auto failed = SerializeWith(serialize, 1, &shorter);
    const OxaHostStats stats = OxaHost_Stats();
    EXPECT_EQ(failed.result, 0);
    EXPECT_TRUE(failed.outUntouched);
    EXPECT_EQ(stats.lastFree.block, stats.lastMalloc.block);
    EXPECT_STREQ(stats.lastFree.file, site->module);
    EXPECT_EQ(stats.lastFree.line, site->freeLine);
  }
  EXPECT_EQ(OxaHost_Stats().freeCalls, 2u);
}

// A gNMI context around a ChosenMessage, serialized as every context serializes.
class ChosenRpc final : public GnmiRpcBase {
 public:
  int GnmiParseRpcRequest(const void*, int) override { return 0; }
  int GnmiSerializeRpcResponse(void** out, int* outLen) override {
    return SerializeToBuffer(message, BufferAllocation::kNothrow, out, outLen);
  }
  ChosenMessage message{8, 8};
};

TEST(GnmiRpcBuffer, MessageBeyondTwoGigabytesSetsStatusFourAndKeepsTheBuffer) {
  ChosenRpc rpc;
  void* out = nullptr;
  int outLen = 0;
  ASSERT_EQ(rpc.GnmiSerializeRpcResponse(&out, &outLen), 1);
  void* const previous = out;
  rpc.message.size = size_t{INT_MAX} + 1;
  EXPECT_EQ(rpc.GnmiSerializeRpcResponse(&out, &outLen), 0);
  EXPECT_EQ(rpc.GetSerializeStatus_(), GnmiRpcBase::kStatusSerializeFailed);
  EXPECT_EQ(rpc.GetBufferCapacity_(), 8);
  EXPECT_EQ(out, previous);
  EXPECT_EQ(outLen, 8);
}

}  // namespace
