// gNMI RPC contexts: creation, parsing, the reusable output buffer and the
// status words.
#include <gtest/gtest.h>

#include <typeinfo>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/owned.h"

namespace {

using testsupport::Bytes;
using testsupport::Make;

TEST(GnmiRpcLifecycle, EachInitMakesItsOwnClassWithItsMethodPathAndDeInitIgnoresNull) {
  const struct {
    void* (*init)();
    void (*deinit)(void*);
    const std::type_info& type;
    const char* path;
  } families[] = {
      {GNMI_Capability_Init, GNMI_Capability_DeInit, typeid(GnmiRpcCapability),
       "/gnmi.gNMI/Capabilities"},
      {GNMI_Get_Init, GNMI_Get_DeInit, typeid(GnmiRpcGet), "/gnmi.gNMI/Get"},
      {GNMI_Set_Init, GNMI_Set_DeInit, typeid(GnmiRpcSet), "/gnmi.gNMI/Set"},
      {GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, typeid(GnmiRpcSubscribe),
       "/gnmi.gNMI/Subscribe"},
  };
  for (const auto& family : families) {
    auto* ctx = static_cast<GnmiRpcBase*>(family.init());
    EXPECT_EQ(typeid(*ctx), family.type) << family.path;
    EXPECT_EQ(ctx->GetRpcPath_(), family.path);
    EXPECT_EQ(ctx->GetParseStatus_(), 0);
    EXPECT_EQ(ctx->GetSerializeStatus_(), 0);
    family.deinit(ctx);
    family.deinit(nullptr);
  }
}

TEST(GnmiRpcParse, ReplacesTheRequestAndAFailureSetsStatusThreeForGood) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  const gnmi::GetRequest& request = *static_cast<GnmiRpcGet*>(ctx.get())->request_;
  const auto* rpc = static_cast<GnmiRpcBase*>(ctx.get());
  const std::string bytes("\x12\x00\x18\x02", 4);  // path {}, type STATE
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 4), 1);
  EXPECT_EQ(request.SerializeAsString(), bytes);
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 0), 1);
  EXPECT_EQ(request.ByteSizeLong(), 0u);
  EXPECT_EQ(rpc->GetParseStatus_(), 0);

  const char truncated[] = {0x12, 0x05, 0x12};
  EXPECT_EQ(GNMI_GetRequest_Parse(ctx.get(), truncated, sizeof truncated), 0);
  EXPECT_EQ(rpc->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);
  EXPECT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 4), 1);
  EXPECT_EQ(rpc->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);
  EXPECT_EQ(rpc->GetSerializeStatus_(), 0);
}

TEST(GnmiRpcParse, EntryPointsDispatchByTheContextsClassNotByTheirName) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  ASSERT_EQ(GNMI_SetRequest_Parse(ctx.get(), "\x18\x03", 2), 1);
  EXPECT_EQ(get->request_->type(), gnmi::GetRequest::OPERATIONAL);

  get->response_->add_notification()->set_timestamp(5);
  void* out = nullptr;
  int outLen = 0;
  ASSERT_EQ(GNMI_CapabilityResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(Bytes(out, outLen), get->response_->SerializeAsString());
}

TEST(GnmiRpcSerialize, BufferIsNoneUntilNeededThenGrowsToTheExactSizeAndIsReused) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  void* out = &out;
  int outLen = -1;
  ASSERT_EQ(GNMI_GetResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(outLen, 0);
  EXPECT_EQ(get->GetBufferCapacity_(), 0);

  // Responses of 3, 30 and 2 notifications: the buffer grows once, to the
  // second's size, and then serves the third.
  void* grown = nullptr;
  for (int count : {3, 30, 2}) {
    get->response_->Clear();
    for (int i = 0; i < count; ++i) {
      get->response_->add_notification()->set_timestamp(1000 + i);
    }
    const std::string expected = get->response_->SerializeAsString();
    ASSERT_EQ(GNMI_GetResponse_Serialize(ctx.get(), &out, &outLen), 1);
    EXPECT_EQ(Bytes(out, outLen), expected);
    if (count == 30) {
      grown = out;
      EXPECT_EQ(get->GetBufferCapacity_(), outLen);
    }
  }
  EXPECT_EQ(out, grown);
  EXPECT_GT(get->GetBufferCapacity_(), outLen);
  EXPECT_EQ(get->GetSerializeStatus_(), 0);
}

TEST(GnmiRpcSerialize, SubscribeResponseAndSyncResponseShareOneBuffer) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  auto* subscribe = static_cast<GnmiRpcSubscribe*>(ctx.get());
  subscribe->GetResponse_()->mutable_update()->set_alias("an alias longer than the sync response");
  subscribe->GetSyncResponse_()->set_sync_response(true);
  void* update = nullptr;
  int updateLen = 0;
  ASSERT_EQ(GNMI_SubscribeResponse_Serialize(ctx.get(), &update, &updateLen), 1);
  EXPECT_EQ(Bytes(update, updateLen), subscribe->GetResponse_()->SerializeAsString());

  void* sync = nullptr;
  int syncLen = 0;
  ASSERT_EQ(GNMI_SubscribeSyncResponse_Serialize(ctx.get(), &sync, &syncLen), 1);
  EXPECT_EQ(sync, update);
  EXPECT_EQ(Bytes(sync, syncLen), "\x18\x01");
  EXPECT_EQ(subscribe->GetBufferCapacity_(), updateLen);
}

}  // namespace
