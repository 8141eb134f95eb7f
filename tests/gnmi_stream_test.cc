// Resetting a context's response: a stream of replies from one context, each
// exactly the reply a fresh context gives, with the request and Subscribe's
// sync response kept.
#include <gtest/gtest.h>

#include <string>

#include "support/reply_families.h"

namespace {

using testsupport::Serialized;

TEST(GnmiStream, EachReplyAfterAResetIsExactlyItsOwnWithTheRequestAndTheLastBytesKept) {
  for (const testsupport::ReplyFamily& family : testsupport::kReplyFamilies) {
    SCOPED_TRACE(&family - testsupport::kReplyFamilies);
    const std::unique_ptr<void, void (*)(void*)> ctx(family.init(), family.deinit);
    const auto& request = family.request;
    ASSERT_EQ(family.parse(ctx.get(), request.data(), static_cast<int>(request.size())), 1);
    int done = 0;
    family.Build(ctx.get(), 2, &done);  // on the heap, before any reset
    for (const testsupport::ReplyFamily& other : testsupport::kReplyFamilies) {
      EXPECT_TRUE(&other == &family || other.reset(ctx.get()) == 0);  // a context of another kind
    }
    EXPECT_EQ(Serialized(family.serialize, ctx.get()), family.Fresh(2));
    for (int steps : {1, 300, 0, 4, 500, 2}) {  // past the arena's first block and back
      void* out = nullptr;
      int outLen = 0;
      ASSERT_EQ(family.serialize(ctx.get(), &out, &outLen), 1);
      const std::string last = testsupport::Bytes(out, outLen);
      ASSERT_EQ(family.reset(ctx.get()), 1);
      EXPECT_EQ(testsupport::Bytes(out, outLen), last);  // the last bytes outlive the reset
      EXPECT_EQ(Serialized(family.serialize, ctx.get()), "");
      EXPECT_EQ(family.requestSize(ctx.get()), 2);
      family.Build(ctx.get(), steps, &done);
      EXPECT_EQ(Serialized(family.serialize, ctx.get()), family.Fresh(steps)) << steps;
    }
  }
}

TEST(GnmiStream, SubscribeResetEmptiesTheUpdateOnlyWhateverItHeld) {
  auto ctx = testsupport::Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);
  for (const uint32_t len : {40, 40, 0}) {  // an alias with storage of its own, then none
    ASSERT_EQ(GNMI_SubscribeResponse_Reset(ctx.get()), 1);
    void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
    GNMI_Notification_SetTimestamp(notification, 7);
    GNMI_Notification_SetAlias(notification, std::string(40, 'a').data(), len);
  }
  // update { timestamp: 7 }, then sync_response: true
  EXPECT_EQ(Serialized(GNMI_SubscribeResponse_Serialize, ctx.get()), "\x0a\x02\x08\x07");
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx.get()), "\x18\x01");
}

}  // namespace
