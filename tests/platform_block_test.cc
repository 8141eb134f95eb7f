// Serialization into platform blocks, driven by a message whose size and
// output the test chooses (this program builds its own copy of the helper).
#include <gtest/gtest.h>

#include <cstring>

#include "common/platform_block.h"
#include "support/oxa_blocks.h"

namespace {

using mgmtmsg::BlockLayout;
using mgmtmsg::PlatformBlockSite;

// Computes `size` encoded bytes, then caches and writes `written` bytes of 'x',
// as a message changed between the two steps would; counts the size
// computations.
class ChosenMessage final : public google::protobuf::MessageLite {
 public:
  ChosenMessage(size_t size, size_t written) : size_(size), written_(written) {}
  mutable int sizeComputations = 0;

  std::string GetTypeName() const override { return "ChosenMessage"; }
  MessageLite* New(google::protobuf::Arena*) const override { return nullptr; }
  void Clear() override {}
  bool IsInitialized() const override { return true; }
  void CheckTypeAndMergeFrom(const MessageLite&) override {}
  size_t ByteSizeLong() const override {
    ++sizeComputations;
    return size_;
  }
  int GetCachedSize() const override { return static_cast<int>(written_); }
  const char* _InternalParse(const char* ptr, google::protobuf::internal::ParseContext*) override {
    return ptr;
  }
  uint8_t* _InternalSerialize(uint8_t* target,
                              google::protobuf::io::EpsCopyOutputStream*) const override {
    return static_cast<uint8_t*>(std::memset(target, 'x', written_)) + written_;
  }

 private:
  size_t size_;
  size_t written_;
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
  const auto frame = testsupport::SerializeWith(SerializeFor<kFramed>, 42, &framed);
  ASSERT_EQ(frame.result, 1);
  EXPECT_EQ(framed.sizeComputations, 1);
  EXPECT_EQ(frame.LengthWord(), 5u);
  EXPECT_EQ(frame.Bytes(4, frame.length - 4), "xxxxx");
  testsupport::ExpectLastMalloc(42, 9, "framing_module", 10);

  ChosenMessage bare(5, 5);
  const auto block = testsupport::SerializeWith(SerializeFor<kBare>, 43, &bare);
  ASSERT_EQ(block.result, 1);
  EXPECT_EQ(bare.sizeComputations, 1);
  EXPECT_EQ(block.Bytes(0, block.length), "xxxxx");
  testsupport::ExpectLastMalloc(43, 6, "bare_module", 30);
}

TEST_F(PlatformBlock, EncodingShortOfTheComputedSizeReleasesTheBlock) {
  ChosenMessage framed(5, 4);
  ChosenMessage bare(5, 4);
  const auto failedFrame = testsupport::SerializeWith(SerializeFor<kFramed>, 1, &framed);
  const OxaHostCall frameFree = OxaHost_Stats().lastFree;
  const auto failedBare = testsupport::SerializeWith(SerializeFor<kBare>, 1, &bare);
  const OxaHostStats stats = OxaHost_Stats();
  EXPECT_EQ(failedFrame.result, 0);
  EXPECT_TRUE(failedFrame.outUntouched);
  EXPECT_EQ(failedBare.result, 0);
  EXPECT_TRUE(failedBare.outUntouched);
  EXPECT_EQ(stats.mallocCalls, 2u);
  EXPECT_EQ(stats.freeCalls, 2u);
  EXPECT_STREQ(frameFree.file, "framing_module");
  EXPECT_EQ(frameFree.line, 20u);
  EXPECT_EQ(stats.lastFree.block, stats.lastMalloc.block);
  EXPECT_STREQ(stats.lastFree.file, "bare_module");
  EXPECT_EQ(stats.lastFree.line, 40u);
}

}  // namespace
