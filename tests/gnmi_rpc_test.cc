// gNMI RPC contexts: creation, parsing, the reusable output buffer and the
// status words; and what the end-to-end exchanges leave out of the readers and
// builders of Get, Set and Capabilities.
#include <gtest/gtest.h>

#include <stdexcept>
#include <typeinfo>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/gnmi_access.h"

namespace {

using testsupport::Bytes;
using testsupport::FromText;
using testsupport::Make;
using testsupport::ParseInto;

TEST(GnmiRpcLifecycle, EachInitMakesItsOwnClassWithItsMethodPathAndDeInitIgnoresNull) {
  const struct {
    void* (*init)();
    void (*deinit)(void*);
    const std::type_info& type;
    const char* path;
  } families[] = {
      {GNMI_Capability_Init, GNMI_Capability_DeInit, typeid(GnmiRpcCapability), "Capabilities"},
      {GNMI_Get_Init, GNMI_Get_DeInit, typeid(GnmiRpcGet), "Get"},
      {GNMI_Set_Init, GNMI_Set_DeInit, typeid(GnmiRpcSet), "Set"},
      {GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, typeid(GnmiRpcSubscribe), "Subscribe"},
  };
  for (const auto& family : families) {
    auto* ctx = static_cast<GnmiRpcBase*>(family.init());
    EXPECT_EQ(typeid(*ctx), family.type) << family.path;
    EXPECT_EQ(ctx->GetRpcPath_(), std::string("/gnmi.gNMI/") + family.path);
    family.deinit(ctx);
    family.deinit(nullptr);
  }
}

TEST(GnmiRpcParse, ReplacesTheRequestSetsStatusThreeForGoodAndDispatchesByClass) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  const std::string bytes("\x12\x00\x18\x02", 4);  // path {}, type STATE
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 4), 1);
  EXPECT_EQ(get->request_->SerializeAsString(), bytes);
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 0), 1);
  EXPECT_EQ(get->request_->ByteSizeLong(), 0u);
  EXPECT_EQ(get->GetParseStatus_(), 0);

  const char truncated[] = {0x12, 0x05, 0x12};
  EXPECT_EQ(GNMI_GetRequest_Parse(ctx.get(), truncated, sizeof truncated), 0);
  EXPECT_EQ(get->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);
  // Another family's name on a Get context still parses a GetRequest.
  EXPECT_EQ(GNMI_SetRequest_Parse(ctx.get(), "\x18\x03", 2), 1);
  EXPECT_EQ(get->request_->type(), gnmi::GetRequest::OPERATIONAL);
  EXPECT_EQ(get->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);
  EXPECT_EQ(get->GetSerializeStatus_(), 0);

  // And serializes the Get response.
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

  // Responses of about 30, 300 and 20 bytes: the buffer grows to the second's
  // exact size, and then serves the third.
  void* grown = nullptr;
  for (size_t count : {30, 300, 20}) {
    get->response_->Clear();
    get->response_->add_notification()->set_alias(std::string(count, 'a'));
    const std::string expected = get->response_->SerializeAsString();
    ASSERT_EQ(GNMI_GetResponse_Serialize(ctx.get(), &out, &outLen), 1);
    EXPECT_EQ(Bytes(out, outLen), expected);
    if (count == 300) {
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

// Each list holds a count of its own, so that a reader of the wrong list
// fails its count or its bounds.
TEST(GnmiRequests, IndexedReadersHandOutTheirOwnListsElementsAndPrefixesArePresentWhenEmpty) {
  auto get = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto set = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  auto capability = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  ASSERT_TRUE(
      ParseInto(GNMI_GetRequest_Parse, get.get(),
                FromText<gnmi::GetRequest>("path {} use_models {} use_models {} extension {} "
                                           "extension {} extension {} encoding: 9")));
  ASSERT_TRUE(ParseInto(GNMI_SetRequest_Parse, set.get(),
                        FromText<gnmi::SetRequest>("prefix {} delete {} replace {} replace {} "
                                                   "update {} update {} update {} extension {} "
                                                   "extension {} extension {} extension {}")));
  ASSERT_TRUE(ParseInto(GNMI_CapabilityRequest_Parse, capability.get(),
                        FromText<gnmi::CapabilityRequest>("extension {} extension {}")));
  const auto& getRequest = *static_cast<GnmiRpcGet*>(get.get())->request_;
  const auto& setRequest = *static_cast<GnmiRpcSet*>(set.get())->request_;

  EXPECT_EQ(GNMI_GetRequest_GetEncoding(get.get()), 9);  // outside the enumeration, kept
  EXPECT_EQ(GNMI_GetRequest_HasPrefix(get.get()), 0);
  EXPECT_EQ(GNMI_GetRequest_GetPrefix(get.get()), nullptr);
  EXPECT_EQ(GNMI_SetRequest_HasPrefix(set.get()), 1);
  EXPECT_EQ(GNMI_SetRequest_GetPrefix(set.get()), &setRequest.prefix());
  const auto& capabilityRequest = *static_cast<GnmiRpcCapability*>(capability.get())->request_;
  void* g = get.get();
  void* s = set.get();
  testsupport::ExpectIndexedReaders({
      {g, GNMI_GetRequest_GetPath, GNMI_GetRequest_PathSizeof, getRequest, "path"},
      {g, GNMI_GetRequest_GetUseModels, GNMI_GetRequest_UseModelsSizeof, getRequest, "use_models"},
      {g, GNMI_GetRequest_GetExtension, GNMI_GetRequest_ExtensionSizeof, getRequest, "extension"},
      {s, GNMI_SetRequest_GetDelete, GNMI_SetRequest_DeleteSizeof, setRequest, "delete"},
      {s, GNMI_SetRequest_GetReplace, GNMI_SetRequest_ReplaceSizeof, setRequest, "replace"},
      {s, GNMI_SetRequest_GetUpdate, GNMI_SetRequest_UpdateSizeof, setRequest, "update"},
      {s, GNMI_SetRequest_GetExtension, GNMI_SetRequest_ExtensionSizeof, setRequest, "extension"},
      {capability.get(), GNMI_CapabilityRequest_GetExtension,
       GNMI_CapabilityRequest_ExtensionSizeof, capabilityRequest, "extension"},
  });

  ASSERT_TRUE(ParseInto(GNMI_SetRequest_Parse, set.get(), gnmi::SetRequest()));
  EXPECT_EQ(GNMI_SetRequest_HasPrefix(set.get()), 0);
  EXPECT_EQ(GNMI_SetRequest_GetPrefix(set.get()), nullptr);
}

TEST(GnmiCapabilityResponse, EncodingsArePackedAsGivenAndVersionIsByteExact) {
  auto ctx = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  // More values than the list's first storage holds, one outside the enumeration.
  for (int encoding : {4, 0, 9, 2, 3, 1}) {
    GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), encoding);
  }
  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), "0.7\0x", 5);
  EXPECT_THROW(GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), nullptr, 1), std::logic_error);
  EXPECT_EQ(testsupport::Serialized(GNMI_CapabilityResponse_Serialize, ctx.get()),
            std::string("\x12\x06\x04\x00\x09\x02\x03\x01\x1a\x05"
                        "0.7\0x",
                        15));
}

}  // namespace
