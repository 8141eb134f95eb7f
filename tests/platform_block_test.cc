// The two serialization helpers, driven by a message whose size and output
// the test chooses: into platform blocks (this program builds its own copy of
// that helper) and into a gNMI context's buffer.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

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

TEST_F(PlatformBlock, SizeIsComputedOnceAndAShortEncodingReleasesTheBlock) {
  const uint32_t five = 5;  // the length word, in host byte order
  const std::string frame = std::string(reinterpret_cast<const char*>(&five), 4) + "xxxxx";
  const struct {
    const PlatformBlockSite& site;
    testsupport::Serializer serialize;
    uint32_t blockBytes;  // for 5 message bytes
    std::string reported;
  } layouts[] = {{kFramed, SerializeFor<kFramed>, 9, frame},
                 {kBare, SerializeFor<kBare>, 6, "xxxxx"}};
  for (const auto& layout : layouts) {
    ChosenMessage message(5, 5);
    const auto block = SerializeWith(layout.serialize, 42, &message);
    ASSERT_EQ(block.result, 1);
    EXPECT_EQ(message.sizeComputations, 1);
    EXPECT_EQ(block.Bytes(0, block.length), layout.reported);
    testsupport::ExpectLastMalloc(42, layout.blockBytes, layout.site.module,
                                  layout.site.mallocLine);

    ChosenMessage shorter(5, 4);
    const auto failed = SerializeWith(layout.serialize, 1, &shorter);
    const OxaHostStats stats = OxaHost_Stats();
    EXPECT_EQ(failed.result, 0);
    EXPECT_TRUE(failed.outUntouched);
    EXPECT_EQ(stats.lastFree.block, stats.lastMalloc.block);
    EXPECT_STREQ(stats.lastFree.file, layout.site.module);
    EXPECT_EQ(stats.lastFree.line, layout.site.freeLine);
  }
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
