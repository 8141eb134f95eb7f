// Get, Set and Capabilities: reading the request and building the response
// through the context.
#include <gtest/gtest.h>

#include <stdexcept>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/gnmi_access.h"

namespace {

using testsupport::Decoded;
using testsupport::ExpectIndexedReader;
using testsupport::Make;
using testsupport::ParseInto;
using testsupport::Serialized;

// Each repeated field gets a different count, so a reader of the wrong field
// fails its count or its bounds.
void AddExtensions(google::protobuf::RepeatedPtrField<gnmi_ext::Extension>* list, int count) {
  for (int i = 0; i < count; ++i) {
    list->Add()->mutable_registered_ext()->set_msg(std::to_string(i));
  }
}

TEST(GnmiGetRequest, ReadersSeeTheParsedRequest) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  const gnmi::GetRequest& parsed = *static_cast<GnmiRpcGet*>(ctx.get())->request_;
  gnmi::GetRequest request;
  request.add_path()->set_origin("a");
  request.add_path()->set_origin("b");
  request.add_use_models()->set_name("m");
  AddExtensions(request.mutable_extension(), 3);
  request.set_type(gnmi::GetRequest::OPERATIONAL);
  request.set_encoding(static_cast<gnmi::Encoding>(9));
  ASSERT_TRUE(ParseInto(GNMI_GetRequest_Parse, ctx.get(), request));

  EXPECT_EQ(GNMI_GetRequest_HasPrefix(ctx.get()), 0);
  EXPECT_EQ(GNMI_GetRequest_GetPrefix(ctx.get()), nullptr);
  EXPECT_EQ(GNMI_GetRequest_GetType(ctx.get()), 3);
  EXPECT_EQ(GNMI_GetRequest_GetEncoding(ctx.get()), 9);
  ExpectIndexedReader(ctx.get(), GNMI_GetRequest_GetPath, GNMI_GetRequest_PathSizeof,
                      parsed.path());
  ExpectIndexedReader(ctx.get(), GNMI_GetRequest_GetUseModels, GNMI_GetRequest_UseModelsSizeof,
                      parsed.use_models());
  ExpectIndexedReader(ctx.get(), GNMI_GetRequest_GetExtension, GNMI_GetRequest_ExtensionSizeof,
                      parsed.extension());

  // An empty prefix is still a prefix.
  request.mutable_prefix();
  ASSERT_TRUE(ParseInto(GNMI_GetRequest_Parse, ctx.get(), request));
  EXPECT_EQ(GNMI_GetRequest_HasPrefix(ctx.get()), 1);
  EXPECT_EQ(GNMI_GetRequest_GetPrefix(ctx.get()), &parsed.prefix());

  // A request with nothing in it.
  ASSERT_TRUE(ParseInto(GNMI_GetRequest_Parse, ctx.get(), gnmi::GetRequest()));
  EXPECT_EQ(GNMI_GetRequest_PathSizeof(ctx.get()), 0);
  EXPECT_FATAL_CHECK(GNMI_GetRequest_GetPath(ctx.get(), 0), "gnmi_ex", 1708,
                     testsupport::kPastEndIndex);
}

TEST(GnmiSetRequest, ReadersSeeTheParsedRequest) {
  auto ctx = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  const gnmi::SetRequest& parsed = *static_cast<GnmiRpcSet*>(ctx.get())->request_;
  gnmi::SetRequest request;
  request.mutable_prefix()->set_target("dev");
  request.add_delete_();
  for (int i = 0; i < 2; ++i) request.add_replace();
  for (int i = 0; i < 3; ++i) request.add_update();
  AddExtensions(request.mutable_extension(), 4);
  ASSERT_TRUE(ParseInto(GNMI_SetRequest_Parse, ctx.get(), request));

  EXPECT_EQ(GNMI_SetRequest_HasPrefix(ctx.get()), 1);
  EXPECT_EQ(GNMI_SetRequest_GetPrefix(ctx.get()), &parsed.prefix());
  ExpectIndexedReader(ctx.get(), GNMI_SetRequest_GetDelete, GNMI_SetRequest_DeleteSizeof,
                      parsed.delete_());
  ExpectIndexedReader(ctx.get(), GNMI_SetRequest_GetReplace, GNMI_SetRequest_ReplaceSizeof,
                      parsed.replace());
  ExpectIndexedReader(ctx.get(), GNMI_SetRequest_GetUpdate, GNMI_SetRequest_UpdateSizeof,
                      parsed.update());
  ExpectIndexedReader(ctx.get(), GNMI_SetRequest_GetExtension, GNMI_SetRequest_ExtensionSizeof,
                      parsed.extension());

  ASSERT_TRUE(ParseInto(GNMI_SetRequest_Parse, ctx.get(), gnmi::SetRequest()));
  EXPECT_EQ(GNMI_SetRequest_HasPrefix(ctx.get()), 0);
  EXPECT_EQ(GNMI_SetRequest_GetPrefix(ctx.get()), nullptr);
}

TEST(GnmiCapabilityRequest, ExtensionReaders) {
  auto ctx = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  gnmi::CapabilityRequest request;
  AddExtensions(request.mutable_extension(), 2);
  ASSERT_TRUE(ParseInto(GNMI_CapabilityRequest_Parse, ctx.get(), request));
  ExpectIndexedReader(ctx.get(), GNMI_CapabilityRequest_GetExtension,
                      GNMI_CapabilityRequest_ExtensionSizeof,
                      static_cast<GnmiRpcCapability*>(ctx.get())->request_->extension());
}

TEST(GnmiSetResponse, BuildersFillTheResponse) {
  auto ctx = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  void* prefix = GNMI_SetResponse_AddPrefix(ctx.get());
  EXPECT_EQ(GNMI_SetResponse_AddPrefix(ctx.get()), prefix);
  void* first = GNMI_SetResponse_AppendUpdateResult(ctx.get());
  void* second = GNMI_SetResponse_AppendUpdateResult(ctx.get());
  EXPECT_NE(first, second);
  GNMI_UpdateResult_SetOp(second, gnmi::UpdateResult::DELETE);
  GNMI_SetResponse_SetTimestamp(ctx.get(), -7);
  GNMI_SetResponse_AppendExtension(ctx.get());

  const auto response =
      Decoded<gnmi::SetResponse>(Serialized(GNMI_SetResponse_Serialize, ctx.get()));
  EXPECT_TRUE(response.has_prefix());
  ASSERT_EQ(response.response_size(), 2);
  EXPECT_EQ(response.response(0).op(), gnmi::UpdateResult::INVALID);
  EXPECT_EQ(response.response(1).op(), gnmi::UpdateResult::DELETE);
  EXPECT_EQ(response.timestamp(), -7);
  EXPECT_EQ(response.extension_size(), 1);
}

TEST(GnmiGetResponse, EachAppendAddsANotification) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(ctx.get()), 1);
  GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(ctx.get()), 2);
  const auto response =
      Decoded<gnmi::GetResponse>(Serialized(GNMI_GetResponse_Serialize, ctx.get()));
  ASSERT_EQ(response.notification_size(), 2);
  EXPECT_EQ(response.notification(0).timestamp(), 1);
  EXPECT_EQ(response.notification(1).timestamp(), 2);
}

TEST(GnmiCapabilityResponse, EncodingsArePackedAsGivenAndVersionIsByteExact) {
  auto ctx = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  // More values than the list's first storage holds, one unknown to the enum.
  const int encodings[] = {gnmi::JSON_IETF, gnmi::JSON, 9, gnmi::PROTO, gnmi::ASCII, gnmi::BYTES};
  for (int encoding : encodings) {
    GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), encoding);
  }
  const std::string packed("\x12\x06\x04\x00\x09\x02\x03\x01", 8);
  EXPECT_EQ(Serialized(GNMI_CapabilityResponse_Serialize, ctx.get()), packed);

  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), "0.6.0", 5);
  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), "0.7\0x", 5);
  auto response =
      Decoded<gnmi::CapabilityResponse>(Serialized(GNMI_CapabilityResponse_Serialize, ctx.get()));
  EXPECT_EQ(response.gnmi_version(), std::string("0.7\0x", 5));

  EXPECT_THROW(GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), nullptr, 1), std::logic_error);
  // The empty version is not sent at all.
  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), nullptr, 0);
  EXPECT_EQ(Serialized(GNMI_CapabilityResponse_Serialize, ctx.get()), packed);

  void* model = GNMI_CapabilityResponse_AppendSupportedModels(ctx.get());
  GNMI_ModelData_SetName(model, "m", 1);
  GNMI_CapabilityResponse_AppendExtension(ctx.get());
  response =
      Decoded<gnmi::CapabilityResponse>(Serialized(GNMI_CapabilityResponse_Serialize, ctx.get()));
  ASSERT_EQ(response.supported_models_size(), 1);
  EXPECT_EQ(response.supported_models(0).name(), "m");
  EXPECT_EQ(response.extension_size(), 1);
}

}  // namespace
