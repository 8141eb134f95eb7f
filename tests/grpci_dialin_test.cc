// Dial-in records: the subscribe and cancel requests as read, their replies
// as serialized.
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <string>

#include "common/handles.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-dialin.pb.h"
#include "support/fatal_capture.h"
#include "support/owned.h"
#include "support/oxa_blocks.h"

namespace {

using quorix_dialin::SubsReply;
using testsupport::Make;
using testsupport::SerializeWith;
using namespace std::string_literals;

int32_t Parse(int32_t (*parse)(void*, const void*, int32_t), void* msg, const std::string& bytes) {
  return parse(msg, bytes.data(), static_cast<int32_t>(bytes.size()));
}

TEST(DialinArgs, ReadersSeeEveryFieldOfTheRequestUnderItsNumber) {
  quorix_dialin::SubsArgs source;
  ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(
      R"(request_id: 0x1122334455667788 encoding: 2 sample_interval: 10000000000
         heartbeat_interval: 0x10000000001 path { path: "/cpu" } path { depth: 3 })",
      &source));
  auto args = Make<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>();
  ASSERT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), source.SerializeAsString()), 1);
  EXPECT_EQ(GRPCI_SubsArgsGetRequestId(args.get()), 0x1122334455667788u);
  EXPECT_EQ(GRPCI_SubsArgsGetEncoding(args.get()), 2u);
  EXPECT_EQ(GRPCI_SubsArgsGetSampleInterval(args.get()), 10000000000u);
  EXPECT_EQ(GRPCI_SubsArgsGetHeartbeat(args.get()), 0x10000000001u);
  ASSERT_EQ(GRPCI_SubsArgsPathSizeof(args.get()), 2);
  EXPECT_STREQ(GRPCI_PathGetPath(GRPCI_SubsArgsGetPath(args.get(), 0)), "/cpu");
  EXPECT_EQ(GRPCI_PathGetDepth(GRPCI_SubsArgsGetPath(args.get(), 1)), 3u);
  EXPECT_FATAL_CHECK(GRPCI_SubsArgsGetPath(args.get(), -1), "grpci_grpcdialin_ex", 1707,
                     testsupport::kNegativeIndex);
  EXPECT_FATAL_CHECK(GRPCI_SubsArgsGetPath(args.get(), 2), "grpci_grpcdialin_ex", 1708,
                     testsupport::kPastEndIndex);
  EXPECT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), "\x2a\x05/a"), 0);  // truncated

  // request_id is field 1, subscription_id field 2: the reverse of SubsReply.
  auto cancel = Make<GRPCI_CancelArgsInit, GRPCI_CancelArgsDeInit>();
  ASSERT_EQ(Parse(GRPCI_CancelArgsParse, cancel.get(), "\x08\x2a\x10\x07"), 1);
  EXPECT_EQ(GRPCI_CancelArgsGetRequestId(cancel.get()), 42u);
  EXPECT_EQ(GRPCI_CancelArgsGetSubscriptionId(cancel.get()), 7u);
}

TEST(DialinArgs, SuppressGettersAnswerOnlyForTheMemberLastOnTheWire) {
  const std::string redundant("\x40\x01", 2);
  const std::string delay500("\x48\xf4\x03", 3);
  const struct {
    std::string bytes;
    uint32_t suppressCase;
    uint64_t redundant;
    uint64_t delay;
  } cases[] = {
      {"", 0, 0, 0},
      {redundant + delay500, 9, 0, 500},
      {delay500 + redundant, 8, 1, 0},
      {std::string("\x40\x00", 2), 8, 0, 0},  // a false flag is still the member set
      {std::string("\x48\x01", 2), 9, 0, 1},  // the flag's storage holds 1: not read
  };
  auto args = Make<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>();
  for (const auto& c : cases) {
    ASSERT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), c.bytes), 1);
    EXPECT_EQ(GRPCI_SubsArgsGetSuppressCase(args.get()), c.suppressCase) << c.bytes.size();
    EXPECT_EQ(GRPCI_SubsArgsGetSuppressRedundant(args.get()), c.redundant) << c.bytes.size();
    EXPECT_EQ(GRPCI_SubsArgsGetDelayTime(args.get()), c.delay) << c.bytes.size();
  }
}

using DialinReply = testsupport::OxaTest;

TEST_F(DialinReply, IsTheBareEncodingInABlockOneByteLonger) {
  auto subscribe = Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  GRPCI_SubsReplySetSubscriptionId(subscribe.get(), 5);
  GRPCI_SubsReplySetRequestId(subscribe.get(), uint64_t{1} << 33);
  GRPCI_SubsReplySetResponseCode(subscribe.get(), "ok", 2);
  GRPCI_SubsReplySetMessage(subscribe.get(), "\0\x01\xff", 3);
  auto block = SerializeWith(GRPCI_SubsReplySerialize, 0xAB, subscribe.get());
  ASSERT_EQ(block.result, 1);
  EXPECT_EQ(block.Bytes(0, block.length),
            std::string("\x08\x05\x10\x80\x80\x80\x80\x20\x1a\x02ok\x22\x03\0\x01\xff", 17));
  EXPECT_EQ(OxaHost_Stats().mallocCalls, 1u);
  testsupport::ExpectLastMalloc(0xAB, block.length + 1, "grpci_grpcdialin_ex", 228);

  auto cancel = Make<GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit>();
  GRPCI_CancelReplySetRequestId(cancel.get(), 9);
  GRPCI_CancelReplySetResponseCode(cancel.get(), "ok", 2);
  GRPCI_CancelReplySetMessage(cancel.get(), "x\0y", 3);
  block = SerializeWith(GRPCI_CancelReplySerialize, 0x5150, cancel.get());
  ASSERT_EQ(block.result, 1);
  EXPECT_EQ(block.Bytes(0, block.length), std::string("\x08\x09\x12\x02ok\x1a\x03x\0y", 11));
  testsupport::ExpectLastMalloc(0x5150, block.length + 1, "grpci_grpcdialin_ex", 306);

  auto empty = Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  block = SerializeWith(GRPCI_SubsReplySerialize, 1, empty.get());
  EXPECT_EQ(block.result, 1);
  EXPECT_NE(block.block, nullptr);
  EXPECT_EQ(block.length, 0u);
  EXPECT_EQ(OxaHost_Stats().lastMalloc.size, 1u);
}

TEST(DialinReplyMessage, SetMessageAlwaysChoosesTheBytesMember) {
  SubsReply reply;
  reply.set_message_json("{}");
  GRPCI_SubsReplySetMessage(&reply, "z\0y", 3);
  EXPECT_EQ(reply.SerializeAsString(), "\x22\x03z\0y"s);
}

TEST_F(DialinReply, RepliesOfAtMost52428800BytesAreSerialized) {
  auto reply = Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  // message's tag and 4-byte length: 5 bytes.
  std::string* message = mgmtmsg::As<SubsReply>(reply.get())->mutable_message();
  const auto block =
      testsupport::SerializeAtTheLimit(GRPCI_SubsReplySerialize, reply.get(), message, 5);
  ASSERT_EQ(block.result, 1);
  EXPECT_EQ(block.length, 52428800u);
  EXPECT_EQ(OxaHost_Stats().lastMalloc.size, 52428801u);
  EXPECT_EQ(block.Bytes(52428799, 1), "p");
}

}  // namespace
