// Get, Set and Capabilities: what the end-to-end exchanges leave out of the
// readers of the requests and the builders of the responses.
#include <gtest/gtest.h>

#include <stdexcept>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/gnmi_access.h"

namespace {

using testsupport::ExpectIndexedReader;
using testsupport::Make;
using testsupport::ParseInto;
using testsupport::Serialized;

// Adds `count` empty elements: each list gets a count of its own, so that a
// reader of the wrong list fails its count or its bounds.
template <class List>
void Fill(List* list, int count) {
  for (int i = 0; i < count; ++i) {
    list->Add();
  }
}

TEST(GnmiRequests, IndexedReadersHandOutTheElementsOfTheirOwnList) {
  auto get = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto set = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  auto capability = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  gnmi::GetRequest getRequest;
  Fill(getRequest.mutable_path(), 1);
  Fill(getRequest.mutable_use_models(), 2);
  Fill(getRequest.mutable_extension(), 3);
  getRequest.set_encoding(static_cast<gnmi::Encoding>(9));  // outside the enumeration
  gnmi::SetRequest setRequest;
  Fill(setRequest.mutable_delete_(), 1);
  Fill(setRequest.mutable_replace(), 2);
  Fill(setRequest.mutable_update(), 3);
  Fill(setRequest.mutable_extension(), 4);
  gnmi::CapabilityRequest capabilityRequest;
  Fill(capabilityRequest.mutable_extension(), 2);
  ASSERT_TRUE(ParseInto(GNMI_GetRequest_Parse, get.get(), getRequest));
  ASSERT_TRUE(ParseInto(GNMI_SetRequest_Parse, set.get(), setRequest));
  ASSERT_TRUE(ParseInto(GNMI_CapabilityRequest_Parse, capability.get(), capabilityRequest));
  const auto& parsedGet = *static_cast<GnmiRpcGet*>(get.get())->request_;
  const auto& parsedSet = *static_cast<GnmiRpcSet*>(set.get())->request_;

  EXPECT_EQ(GNMI_GetRequest_GetEncoding(get.get()), 9);
  ExpectIndexedReader(get.get(), GNMI_GetRequest_GetPath, GNMI_GetRequest_PathSizeof,
                      parsedGet.path());
  ExpectIndexedReader(get.get(), GNMI_GetRequest_GetUseModels, GNMI_GetRequest_UseModelsSizeof,
                      parsedGet.use_models());
  ExpectIndexedReader(get.get(), GNMI_GetRequest_GetExtension, GNMI_GetRequest_ExtensionSizeof,
                      parsedGet.extension());
  ExpectIndexedReader(set.get(), GNMI_SetRequest_GetDelete, GNMI_SetRequest_DeleteSizeof,
                      parsedSet.delete_());
  ExpectIndexedReader(set.get(), GNMI_SetRequest_GetReplace, GNMI_SetRequest_ReplaceSizeof,
                      parsedSet.replace());
  ExpectIndexedReader(set.get(), GNMI_SetRequest_GetUpdate, GNMI_SetRequest_UpdateSizeof,
                      parsedSet.update());
  ExpectIndexedReader(set.get(), GNMI_SetRequest_GetExtension, GNMI_SetRequest_ExtensionSizeof,
                      parsedSet.extension());
  ExpectIndexedReader(capability.get(), GNMI_CapabilityRequest_GetExtension,
                      GNMI_CapabilityRequest_ExtensionSizeof,
                      static_cast<GnmiRpcCapability*>(capability.get())->request_->extension());
}

// An absent prefix reads as 0 and null, an empty one as present.
template <class Request>
void ExpectPrefixPresence(void* ctx, const Request& parsed, testsupport::ParseFn parse,
                          int (*has)(void*), void* (*get)(void*)) {
  Request request;
  ASSERT_TRUE(ParseInto(parse, ctx, request));
  EXPECT_EQ(has(ctx), 0);
  EXPECT_EQ(get(ctx), nullptr);
  request.mutable_prefix();
  ASSERT_TRUE(ParseInto(parse, ctx, request));
  EXPECT_EQ(has(ctx), 1);
  EXPECT_EQ(get(ctx), &parsed.prefix());
}

TEST(GnmiRequests, PrefixIsNullWhenAbsentAndPresentWhenEmpty) {
  auto get = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto set = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  ExpectPrefixPresence(get.get(), *static_cast<GnmiRpcGet*>(get.get())->request_,
                       GNMI_GetRequest_Parse, GNMI_GetRequest_HasPrefix, GNMI_GetRequest_GetPrefix);
  ExpectPrefixPresence(set.get(), *static_cast<GnmiRpcSet*>(set.get())->request_,
                       GNMI_SetRequest_Parse, GNMI_SetRequest_HasPrefix, GNMI_SetRequest_GetPrefix);
}

TEST(GnmiCapabilityResponse, EncodingsArePackedAsGivenAndVersionIsByteExact) {
  auto ctx = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  // More values than the list's first storage holds, one outside the enumeration.
  for (int encoding : {4, 0, 9, 2, 3, 1}) {
    GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), encoding);
  }
  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), "0.7\0x", 5);
  EXPECT_THROW(GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), nullptr, 1), std::logic_error);
  EXPECT_EQ(Serialized(GNMI_CapabilityResponse_Serialize, ctx.get()),
            std::string("\x12\x06\x04\x00\x09\x02\x03\x01\x1a\x05"
                        "0.7\0x",
                        15));
}

}  // namespace
