// gNMI RPC contexts: creation, parsing, the reusable output buffer and the
// status words.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/owned.h"

namespace {

using testsupport::Bytes;
using testsupport::Make;

GnmiRpcBase* Context(void* ctx) { return static_cast<GnmiRpcBase*>(ctx); }

std::string Encode(const google::protobuf::MessageLite& message) {
  return message.SerializeAsString();
}

gnmi::GetResponse ResponseWithNotifications(int count) {
  gnmi::GetResponse response;
  for (int i = 0; i < count; ++i) {
    response.add_notification()->set_timestamp(1000 + i);
  }
  return response;
}

TEST(GnmiRpcInit, EachFamilyMakesItsContextWithItsMethodPath) {
  auto capability = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  auto get = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto set = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  auto subscribe = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();

  EXPECT_NE(dynamic_cast<GnmiRpcCapability*>(Context(capability.get())), nullptr);
  EXPECT_NE(dynamic_cast<GnmiRpcGet*>(Context(get.get())), nullptr);
  EXPECT_NE(dynamic_cast<GnmiRpcSet*>(Context(set.get())), nullptr);
  EXPECT_NE(dynamic_cast<GnmiRpcSubscribe*>(Context(subscribe.get())), nullptr);
  EXPECT_EQ(Context(capability.get())->GetRpcPath_(), "/gnmi.gNMI/Capabilities");
  EXPECT_EQ(Context(get.get())->GetRpcPath_(), "/gnmi.gNMI/Get");
  EXPECT_EQ(Context(set.get())->GetRpcPath_(), "/gnmi.gNMI/Set");
  EXPECT_EQ(Context(subscribe.get())->GetRpcPath_(), "/gnmi.gNMI/Subscribe");
  for (void* ctx : {capability.get(), get.get(), set.get(), subscribe.get()}) {
    EXPECT_EQ(Context(ctx)->GetParseStatus_(), 0);
    EXPECT_EQ(Context(ctx)->GetSerializeStatus_(), 0);
    EXPECT_EQ(Context(ctx)->GetBufferCapacity_(), 0);
  }
}

TEST(GnmiRpcDeInit, NullIsIgnored) {
  GNMI_Capability_DeInit(nullptr);
  GNMI_Get_DeInit(nullptr);
  GNMI_Set_DeInit(nullptr);
  GNMI_Subscribe_DeInit(nullptr);
}

TEST(GnmiRpcParse, ReplacesTheRequestAndRecordsFailureForGood) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  gnmi::GetRequest request;
  request.set_type(gnmi::GetRequest::STATE);
  request.add_path()->set_origin("openconfig");
  const std::string bytes = Encode(request);

  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), static_cast<int>(bytes.size())), 1);
  EXPECT_EQ(get->request_->type(), gnmi::GetRequest::STATE);
  EXPECT_EQ(get->request_->path(0).origin(), "openconfig");

  // A length of 0 parses an empty request.
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 0), 1);
  EXPECT_EQ(get->request_->path_size(), 0);
  EXPECT_EQ(get->GetParseStatus_(), 0);

  // A truncated length-delimited field is malformed.
  const char malformed[] = {0x12, 0x05, 0x12};
  EXPECT_EQ(GNMI_GetRequest_Parse(ctx.get(), malformed, sizeof malformed), 0);
  EXPECT_EQ(get->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);

  // A later success does not reset the status word.
  EXPECT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), static_cast<int>(bytes.size())), 1);
  EXPECT_EQ(get->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);
  EXPECT_EQ(get->GetSerializeStatus_(), 0);
}

TEST(GnmiRpcParse, DispatchFollowsTheContextsClass) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  gnmi::GetRequest request;
  request.set_type(gnmi::GetRequest::OPERATIONAL);
  request.set_encoding(gnmi::JSON_IETF);
  const std::string bytes = Encode(request);

  // The Set family's name on a Get context still parses a GetRequest.
  ASSERT_EQ(GNMI_SetRequest_Parse(ctx.get(), bytes.data(), static_cast<int>(bytes.size())), 1);
  const auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  EXPECT_EQ(get->request_->type(), gnmi::GetRequest::OPERATIONAL);
  EXPECT_EQ(get->request_->encoding(), gnmi::JSON_IETF);

  // And the Capabilities name serializes the Get response.
  get->response_->add_notification()->set_timestamp(5);
  void* out = nullptr;
  int outLen = 0;
  ASSERT_EQ(GNMI_CapabilityResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(Bytes(out, outLen), Encode(*get->response_));
}

TEST(GnmiRpcSerialize, EmptyResponseOnAFreshContextGivesNoBuffer) {
  auto ctx = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  void* out = &out;
  int outLen = -1;
  ASSERT_EQ(GNMI_SetResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(outLen, 0);
  EXPECT_EQ(Context(ctx.get())->GetBufferCapacity_(), 0);
}

TEST(GnmiRpcSerialize, BufferGrowsToExactSizeAndIsReusedWhenSmaller) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  void* out = nullptr;
  int outLen = 0;

  *get->response_ = ResponseWithNotifications(3);
  ASSERT_EQ(GNMI_GetResponse_Serialize(ctx.get(), &out, &outLen), 1);
  const std::string small = Encode(*get->response_);
  EXPECT_EQ(Bytes(out, outLen), small);
  EXPECT_EQ(get->GetBufferCapacity_(), static_cast<int>(small.size()));

  *get->response_ = ResponseWithNotifications(30);
  ASSERT_EQ(GNMI_GetResponse_Serialize(ctx.get(), &out, &outLen), 1);
  const std::string large = Encode(*get->response_);
  EXPECT_EQ(Bytes(out, outLen), large);
  EXPECT_EQ(get->GetBufferCapacity_(), static_cast<int>(large.size()));
  void* largeBuffer = out;

  *get->response_ = ResponseWithNotifications(2);
  ASSERT_EQ(GNMI_GetResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(out, largeBuffer);
  EXPECT_EQ(Bytes(out, outLen), Encode(*get->response_));
  EXPECT_EQ(get->GetBufferCapacity_(), static_cast<int>(large.size()));

  // Serializing again without changes gives the same bytes.
  ASSERT_EQ(GNMI_GetResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(Bytes(out, outLen), Encode(*get->response_));
  EXPECT_EQ(get->GetSerializeStatus_(), 0);
}

TEST(GnmiRpcSerialize, SubscribeResponsesShareOneBuffer) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  auto* subscribe = static_cast<GnmiRpcSubscribe*>(ctx.get());
  auto* notification = subscribe->GetResponse_()->mutable_update();
  notification->set_timestamp(42);
  notification->set_alias("a-fairly-long-alias-to-make-it-larger");
  subscribe->GetSyncResponse_()->set_sync_response(true);

  void* update = nullptr;
  int updateLen = 0;
  ASSERT_EQ(GNMI_SubscribeResponse_Serialize(ctx.get(), &update, &updateLen), 1);
  EXPECT_EQ(Bytes(update, updateLen), Encode(*subscribe->GetResponse_()));

  void* sync = nullptr;
  int syncLen = 0;
  ASSERT_EQ(GNMI_SubscribeSyncResponse_Serialize(ctx.get(), &sync, &syncLen), 1);
  EXPECT_EQ(sync, update);
  EXPECT_EQ(Bytes(sync, syncLen), std::string("\x18\x01", 2));
  EXPECT_EQ(subscribe->GetBufferCapacity_(), updateLen);
}

// A message of a chosen encoded size, made of that many 'x' bytes.
class SizedMessage final : public google::protobuf::MessageLite {
 public:
  size_t size = 0;

  std::string GetTypeName() const override { return "SizedMessage"; }
  MessageLite* New(google::protobuf::Arena*) const override { return nullptr; }
  void Clear() override {}
  bool IsInitialized() const override { return true; }
  void CheckTypeAndMergeFrom(const MessageLite&) override {}
  size_t ByteSizeLong() const override { return size; }
  int GetCachedSize() const override { return static_cast<int>(size); }
  const char* _InternalParse(const char* ptr, google::protobuf::internal::ParseContext*) override {
    return ptr;
  }
  uint8_t* _InternalSerialize(uint8_t* target,
                              google::protobuf::io::EpsCopyOutputStream*) const override {
    return static_cast<uint8_t*>(memset(target, 'x', size)) + size;
  }
};

// A context around that message, serialized as every context serializes.
class SizedRpc final : public GnmiRpcBase {
 public:
  int GnmiParseRpcRequest(const void*, int) override { return 0; }
  int GnmiSerializeRpcResponse(void** out, int* outLen) override {
    return SerializeToBuffer(message, BufferAllocation::kNothrow, out, outLen);
  }
  SizedMessage message;
};

TEST(GnmiRpcSerialize, MessageBeyondTwoGigabytesSetsStatusFourAndKeepsTheBuffer) {
  SizedRpc rpc;
  void* out = nullptr;
  int outLen = 0;
  rpc.message.size = 8;
  ASSERT_EQ(rpc.GnmiSerializeRpcResponse(&out, &outLen), 1);
  EXPECT_EQ(Bytes(out, outLen), "xxxxxxxx");

  void* const previous = out;
  rpc.message.size = size_t{INT_MAX} + 1;
  EXPECT_EQ(rpc.GnmiSerializeRpcResponse(&out, &outLen), 0);
  EXPECT_EQ(rpc.GetSerializeStatus_(), GnmiRpcBase::kStatusSerializeFailed);
  EXPECT_EQ(rpc.GetBufferCapacity_(), 8);
  EXPECT_EQ(out, previous);
  EXPECT_EQ(outLen, 8);
}

}  // namespace
