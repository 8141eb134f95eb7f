// Dial-in records: the subscribe and cancel requests as read, their replies
// as serialized.
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
using testsupport::OxaTest;
using testsupport::SerializeWith;

auto NewSubsArgs() { return Make<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>(); }
auto NewSubsReply() { return Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>(); }
auto NewCancelReply() { return Make<GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit>(); }

int32_t Parse(int32_t (*parse)(void*, const void*, int32_t), void* msg, const std::string& bytes) {
  return parse(msg, bytes.data(), static_cast<int32_t>(bytes.size()));
}

TEST(SubsArgs, ReadsEveryFieldOfTheRequest) {
  quorix_dialin::SubsArgs source;
  source.set_request_id(0x1122334455667788u);
  source.set_encoding(2);
  source.set_sample_interval(10000000000u);
  source.set_heartbeat_interval((uint64_t{1} << 40) + 1);
  auto* first = source.add_path();
  first->set_path("/interfaces/interface/state/counters");
  first->set_depth(3);
  source.add_path()->set_path("/cpu");

  auto args = NewSubsArgs();
  ASSERT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), source.SerializeAsString()), 1);
  EXPECT_EQ(GRPCI_SubsArgsGetRequestId(args.get()), 0x1122334455667788u);
  EXPECT_EQ(GRPCI_SubsArgsGetEncoding(args.get()), 2u);
  EXPECT_EQ(GRPCI_SubsArgsGetSampleInterval(args.get()), 10000000000u);
  EXPECT_EQ(GRPCI_SubsArgsGetHeartbeat(args.get()), (uint64_t{1} << 40) + 1);
  EXPECT_EQ(GRPCI_SubsArgsGetSuppressCase(args.get()), 0u);
  ASSERT_EQ(GRPCI_SubsArgsPathSizeof(args.get()), 2);
  EXPECT_STREQ(GRPCI_PathGetPath(GRPCI_SubsArgsGetPath(args.get(), 0)),
               "/interfaces/interface/state/counters");
  EXPECT_EQ(GRPCI_PathGetDepth(GRPCI_SubsArgsGetPath(args.get(), 0)), 3u);
  EXPECT_STREQ(GRPCI_PathGetPath(GRPCI_SubsArgsGetPath(args.get(), 1)), "/cpu");
  EXPECT_EQ(GRPCI_PathGetDepth(GRPCI_SubsArgsGetPath(args.get(), 1)), 0u);

  // A new parse replaces everything; malformed bytes are refused.
  ASSERT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), std::string("\x10\x01", 2)), 1);
  EXPECT_EQ(GRPCI_SubsArgsPathSizeof(args.get()), 0);
  EXPECT_EQ(GRPCI_SubsArgsGetRequestId(args.get()), 0u);
  EXPECT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), std::string("\x2a\x05/a", 4)), 0);
}

TEST(SubsArgs, SuppressGettersAnswerOnlyForTheMemberLastOnTheWire) {
  struct Case {
    std::string bytes;
    uint32_t suppressCase;
    uint64_t redundant;
    uint64_t delay;
  };
  const std::string redundant("\x40\x01", 2);
  const std::string delay500("\x48\xf4\x03", 3);
  const Case cases[] = {
      {"", 0, 0, 0},
      {redundant, 8, 1, 0},
      {delay500, 9, 0, 500},
      {redundant + delay500, 9, 0, 500},
      {delay500 + redundant, 8, 1, 0},
      {std::string("\x40\x00", 2), 8, 0, 0},  // a false flag is still the member set
      {std::string("\x48\x01", 2), 9, 0, 1},  // the flag's storage holds 1: not read
  };
  auto args = NewSubsArgs();
  for (const Case& c : cases) {
    ASSERT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), c.bytes), 1);
    EXPECT_EQ(GRPCI_SubsArgsGetSuppressCase(args.get()), c.suppressCase) << c.bytes.size();
    EXPECT_EQ(GRPCI_SubsArgsGetSuppressRedundant(args.get()), c.redundant) << c.bytes.size();
    EXPECT_EQ(GRPCI_SubsArgsGetDelayTime(args.get()), c.delay) << c.bytes.size();
  }
}

TEST(SubsArgs, PathIndexOutsideTheListIsAFatalCheck) {
  auto args = NewSubsArgs();
  EXPECT_EQ(GRPCI_SubsArgsPathSizeof(args.get()), 0);
  EXPECT_FATAL_CHECK(GRPCI_SubsArgsGetPath(args.get(), 0), "grpci_grpcdialin_ex", 1708,
                     testsupport::kPastEndIndex);

  ASSERT_EQ(Parse(GRPCI_SubsArgsParse, args.get(), std::string("\x2a\x00\x2a\x00", 4)), 1);
  EXPECT_FATAL_CHECK(GRPCI_SubsArgsGetPath(args.get(), -1), "grpci_grpcdialin_ex", 1707,
                     testsupport::kNegativeIndex);
  EXPECT_FATAL_CHECK(GRPCI_SubsArgsGetPath(args.get(), 2), "grpci_grpcdialin_ex", 1708,
                     testsupport::kPastEndIndex);
  const auto inside = testsupport::CaptureFatal([&] { GRPCI_SubsArgsGetPath(args.get(), 1); });
  EXPECT_FALSE(inside.raised) << inside;
}

TEST(CancelArgs, ReadsRequestAndSubscriptionUnderTheirNumbers) {
  auto args = Make<GRPCI_CancelArgsInit, GRPCI_CancelArgsDeInit>();
  // request_id is field 1, subscription_id field 2: the reverse of SubsReply.
  ASSERT_EQ(Parse(GRPCI_CancelArgsParse, args.get(), std::string("\x08\x2a\x10\x07", 4)), 1);
  EXPECT_EQ(GRPCI_CancelArgsGetRequestId(args.get()), 42u);
  EXPECT_EQ(GRPCI_CancelArgsGetSubscriptionId(args.get()), 7u);
  EXPECT_EQ(Parse(GRPCI_CancelArgsParse, args.get(), std::string("\x08", 1)), 0);
}

using DialinReply = OxaTest;

TEST_F(DialinReply, SubsReplyIsTheBareEncodingInABlockOneByteLonger) {
  auto reply = NewSubsReply();
  GRPCI_SubsReplySetSubscriptionId(reply.get(), 5);
  GRPCI_SubsReplySetRequestId(reply.get(), uint64_t{1} << 33);
  GRPCI_SubsReplySetResponseCode(reply.get(), "ok", 2);
  GRPCI_SubsReplySetMessage(reply.get(), "\0\x01\xff", 3);

  const auto block = SerializeWith(GRPCI_SubsReplySerialize, 0xAB, reply.get());
  ASSERT_EQ(block.result, 1);
  const std::string expected("\x08\x05\x10\x80\x80\x80\x80\x20\x1a\x02ok\x22\x03\0\x01\xff", 17);
  ASSERT_EQ(block.length, expected.size());
  EXPECT_EQ(block.Bytes(0, block.length), expected);
  EXPECT_EQ(OxaHost_Stats().mallocCalls, 1u);
  testsupport::ExpectLastMalloc(0xAB, block.length + 1, "grpci_grpcdialin_ex", 228);
}

TEST_F(DialinReply, EmptySubsReplyIsAOneByteBlockOfLengthZero) {
  auto reply = NewSubsReply();
  const auto block = SerializeWith(GRPCI_SubsReplySerialize, 1, reply.get());
  EXPECT_EQ(block.result, 1);
  EXPECT_NE(block.block, nullptr);
  EXPECT_EQ(block.length, 0u);
  EXPECT_EQ(OxaHost_Stats().lastMalloc.size, 1u);
}

TEST_F(DialinReply, SubsReplyMessageIsAlwaysTheBytesMember) {
  auto reply = NewSubsReply();
  auto& object = *mgmtmsg::As<SubsReply>(reply.get());
  object.set_message_json("{\"from\":\"elsewhere\"}");

  GRPCI_SubsReplySetMessage(reply.get(), "a\0b", 3);
  EXPECT_EQ(object.MessageData_case(), SubsReply::kMessage);
  EXPECT_EQ(object.message_json(), "");
  auto block = SerializeWith(GRPCI_SubsReplySerialize, 1, reply.get());
  EXPECT_EQ(block.Bytes(0, block.length), std::string("\x22\x03\x61\0\x62", 5));

  GRPCI_SubsReplySetMessage(reply.get(), "z", 1);
  EXPECT_EQ(object.MessageData_case(), SubsReply::kMessage);
  block = SerializeWith(GRPCI_SubsReplySerialize, 1, reply.get());
  EXPECT_EQ(block.Bytes(0, block.length), "\x22\x01z");

  GRPCI_SubsReplySetMessage(reply.get(), nullptr, 0);
  block = SerializeWith(GRPCI_SubsReplySerialize, 1, reply.get());
  EXPECT_EQ(block.Bytes(0, block.length), std::string("\x22\x00", 2));  // present, empty
}

TEST_F(DialinReply, CancelReplyCarriesItsThreeFields) {
  auto reply = NewCancelReply();
  GRPCI_CancelReplySetRequestId(reply.get(), 9);
  GRPCI_CancelReplySetResponseCode(reply.get(), "ok", 2);
  GRPCI_CancelReplySetMessage(reply.get(), "x\0y", 3);

  const auto block = SerializeWith(GRPCI_CancelReplySerialize, 0x5150, reply.get());
  ASSERT_EQ(block.result, 1);
  const std::string expected("\x08\x09\x12\x02ok\x1a\x03x\0y", 11);
  EXPECT_EQ(block.Bytes(0, block.length), expected);
  testsupport::ExpectLastMalloc(0x5150, block.length + 1, "grpci_grpcdialin_ex", 306);
}

TEST_F(DialinReply, RepliesOfAtMost52428800BytesAreSerialized) {
  auto reply = NewSubsReply();
  // message's tag and 4-byte length: 5 bytes.
  std::string* message = mgmtmsg::As<SubsReply>(reply.get())->mutable_message();
  const auto block =
      testsupport::SerializeAtTheLimit(GRPCI_SubsReplySerialize, reply.get(), message, 5);
  ASSERT_EQ(block.result, 1);
  EXPECT_EQ(block.length, 52428800u);
  EXPECT_EQ(OxaHost_Stats().lastMalloc.size, 52428801u);
  EXPECT_EQ(block.Bytes(0, 1), "\x22");
  EXPECT_EQ(block.Bytes(52428799, 1), "p");
}

TEST_F(DialinReply, AllocationFailureReturnsZeroAndLeavesNothing) {
  auto subscribe = NewSubsReply();
  auto cancel = NewCancelReply();
  GRPCI_CancelReplySetRequestId(cancel.get(), 3);
  OxaHost_FailNextMallocs(2);
  const auto subscribeFailed = SerializeWith(GRPCI_SubsReplySerialize, 1, subscribe.get());
  const auto cancelFailed = SerializeWith(GRPCI_CancelReplySerialize, 1, cancel.get());
  EXPECT_EQ(subscribeFailed.result, 0);
  EXPECT_TRUE(subscribeFailed.outUntouched);
  EXPECT_EQ(cancelFailed.result, 0);
  EXPECT_TRUE(cancelFailed.outUntouched);
  EXPECT_EQ(OxaHost_Stats().mallocCalls, 2u);
  EXPECT_EQ(OxaHost_Stats().freeCalls, 0u);
}

TEST(DialinLifecycle, DeInitIgnoresNull) {
  GRPCI_SubsArgsDeInit(nullptr);
  GRPCI_CancelArgsDeInit(nullptr);
  GRPCI_SubsReplyDeInit(nullptr);
  GRPCI_CancelReplyDeInit(nullptr);
}

}  // namespace
