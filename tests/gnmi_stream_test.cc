// Resetting a context's response: a stream of replies from one context, each
// exactly the reply a fresh context gives, with the request and Subscribe's
// sync response kept.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>

#include "gnmi/gnmi_path.h"

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
    family.Build(ctx.get(), 2, &done);          // on the heap, before any reset
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

// Each reset given a context of another kind, and each path call a handle
// to another message or a context, returns 0 and changes nothing.
TEST(GnmiStream, ResetsAndPathCallsRefuseHandlesOfAnotherKind) {
  const auto get = testsupport::Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  const auto set = testsupport::Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  const auto subscribe = testsupport::Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  const auto capability = testsupport::Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  void* update = GNMI_Notification_AppendUpdate(GNMI_GetResponse_AppendNotification(get.get()));
  void* path = GNMI_Update_SetPath(update);
  ASSERT_EQ(GNMI_Path_FromString(path, "/a", 2, nullptr), 1);
  const std::string before = Serialized(GNMI_GetResponse_Serialize, get.get());
  char buf[4] = "xyz";
  uint32_t at = 7;
  const std::function<uint32_t()> calls[] = {
      [&] { return GNMI_SubscribeResponse_Reset(get.get()); },
      [&] { return GNMI_SubscribeResponse_Reset(capability.get()); },
      [&] { return GNMI_GetResponse_Reset(subscribe.get()); },
      [&] { return GNMI_GetResponse_Reset(set.get()); },
      [&] { return GNMI_SetResponse_Reset(get.get()); },
      [&] { return GNMI_Path_FromString(update, "/b", 2, &at); },
      [&] { return GNMI_Path_FromString(get.get(), "/b", 2, &at); },
      [&] { return GNMI_Path_ToString(update, buf, sizeof buf); },
      [&] { return GNMI_Path_CopyFrom(path, update); },
      [&] { return GNMI_Path_CopyFrom(update, path); },
      [&] { return GNMI_Path_AppendElems(path, get.get()); },
      [&] { return GNMI_Path_AppendElems(get.get(), path); },
      [&] { return GNMI_Path_Covers(update, path); },
      [&] { return GNMI_Path_Covers(path, update); },
  };
  for (const auto& call : calls) EXPECT_EQ(call(), 0U) << &call - calls;
  EXPECT_EQ(Serialized(GNMI_GetResponse_Serialize, get.get()), before);
  EXPECT_EQ(std::make_tuple(std::string(buf), at), std::make_tuple("xyz", 7U));
}

}  // namespace
