// The named codes of common/mgmtmsg_codes.h against the enumerations they
// name: the schemas' descriptors, and gRPC's own status codes where its
// headers are at hand.
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <string>

#include "common/mgmtmsg_codes.h"
#include "gnmi/gnmi.pb.h"
#include "quorix-grpc-ipc.pb.h"

#if __has_include(<grpcpp/support/status_code_enum.h>)
#include <grpcpp/support/status_code_enum.h>
#define MGMTMSG_HAVE_GRPC_STATUS 1
#endif

namespace {

using Names = std::map<std::string, int>;

// The value names of an enumeration with their numbers.
Names ValuesOf(const google::protobuf::EnumDescriptor* type) {
  Names values;
  for (int i = 0; i < type->value_count(); ++i) {
    values[type->value(i)->name()] = type->value(i)->number();
  }
  return values;
}

// The members of TypedValue's oneof, named in upper case, with NONE for 0.
Names TypedValueMembers() {
  Names members{{"NONE", 0}};
  const auto* oneof = gnmi::TypedValue::descriptor()->FindOneofByName("value");
  for (int i = 0; i < oneof->field_count(); ++i) {
    std::string name = oneof->field(i)->name();
    for (char& c : name) {
      c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    members[name] = oneof->field(i)->number();
  }
  return members;
}

#define CODE(prefix, name) \
  { #name, prefix##name }

TEST(NamedCodes, EachGroupNamesExactlyTheValuesOfItsEnumeration) {
  const std::pair<Names, Names> groups[] = {
      {ValuesOf(quorix_grpc_ipc::ReqType_descriptor()),
       {CODE(GRPCI_, REQTYPE_INVALID), CODE(GRPCI_, REQTYPE_REQUEST),
        CODE(GRPCI_, REQTYPE_RESPONSE), CODE(GRPCI_, REQTYPE_NOTIFICATION)}},
      {ValuesOf(quorix_grpc_ipc::OpType_descriptor()),
       {CODE(GRPCI_, OPTYPE_INVALID), CODE(GRPCI_, OPTYPE_CREATE), CODE(GRPCI_, OPTYPE_DELETE),
        CODE(GRPCI_, OPTYPE_MODIFY), CODE(GRPCI_, OPTYPE_NOTIFY)}},
      {ValuesOf(quorix_grpc_ipc::MsgType_descriptor()),
       {CODE(GRPCI_, MSGTYPE_INVALID), CODE(GRPCI_, MSGTYPE_CLIENT_RPC),
        CODE(GRPCI_, MSGTYPE_SERVER_RPC), CODE(GRPCI_, MSGTYPE_RPC_DATA)}},
      {ValuesOf(gnmi::Encoding_descriptor()),
       {CODE(GNMI_ENCODING_, JSON), CODE(GNMI_ENCODING_, BYTES), CODE(GNMI_ENCODING_, PROTO),
        CODE(GNMI_ENCODING_, ASCII), CODE(GNMI_ENCODING_, JSON_IETF)}},
      {ValuesOf(gnmi::GetRequest::DataType_descriptor()),
       {CODE(GNMI_DATATYPE_, ALL), CODE(GNMI_DATATYPE_, CONFIG), CODE(GNMI_DATATYPE_, STATE),
        CODE(GNMI_DATATYPE_, OPERATIONAL)}},
      {ValuesOf(gnmi::SubscriptionList::Mode_descriptor()),
       {CODE(GNMI_SUBSCRIPTIONLIST_, STREAM), CODE(GNMI_SUBSCRIPTIONLIST_, ONCE),
        CODE(GNMI_SUBSCRIPTIONLIST_, POLL)}},
      {ValuesOf(gnmi::SubscriptionMode_descriptor()),
       {CODE(GNMI_SUBSCRIPTIONMODE_, TARGET_DEFINED), CODE(GNMI_SUBSCRIPTIONMODE_, ON_CHANGE),
        CODE(GNMI_SUBSCRIPTIONMODE_, SAMPLE)}},
      {ValuesOf(gnmi::UpdateResult::Operation_descriptor()),
       {CODE(GNMI_UPDATERESULT_, INVALID), CODE(GNMI_UPDATERESULT_, DELETE),
        CODE(GNMI_UPDATERESULT_, REPLACE), CODE(GNMI_UPDATERESULT_, UPDATE)}},
      {TypedValueMembers(),
       {CODE(GNMI_TYPEDVALUE_, NONE), CODE(GNMI_TYPEDVALUE_, STRING_VAL),
        CODE(GNMI_TYPEDVALUE_, INT_VAL), CODE(GNMI_TYPEDVALUE_, UINT_VAL),
        CODE(GNMI_TYPEDVALUE_, BOOL_VAL), CODE(GNMI_TYPEDVALUE_, BYTES_VAL),
        CODE(GNMI_TYPEDVALUE_, FLOAT_VAL), CODE(GNMI_TYPEDVALUE_, DECIMAL_VAL),
        CODE(GNMI_TYPEDVALUE_, LEAFLIST_VAL), CODE(GNMI_TYPEDVALUE_, ANY_VAL),
        CODE(GNMI_TYPEDVALUE_, JSON_VAL), CODE(GNMI_TYPEDVALUE_, JSON_IETF_VAL),
        CODE(GNMI_TYPEDVALUE_, ASCII_VAL), CODE(GNMI_TYPEDVALUE_, PROTO_BYTES)}},
  };
  for (const auto& [schema, named] : groups) {
    EXPECT_EQ(named, schema);
  }
}

TEST(NamedCodes, StatusCodesAreGrpcs) {
#ifdef MGMTMSG_HAVE_GRPC_STATUS
  const std::pair<int, int> codes[] = {
      {MGMTMSG_STATUS_OK, grpc::OK},
      {MGMTMSG_STATUS_CANCELLED, grpc::CANCELLED},
      {MGMTMSG_STATUS_UNKNOWN, grpc::UNKNOWN},
      {MGMTMSG_STATUS_INVALID_ARGUMENT, grpc::INVALID_ARGUMENT},
      {MGMTMSG_STATUS_DEADLINE_EXCEEDED, grpc::DEADLINE_EXCEEDED},
      {MGMTMSG_STATUS_NOT_FOUND, grpc::NOT_FOUND},
      {MGMTMSG_STATUS_ALREADY_EXISTS, grpc::ALREADY_EXISTS},
      {MGMTMSG_STATUS_PERMISSION_DENIED, grpc::PERMISSION_DENIED},
      {MGMTMSG_STATUS_RESOURCE_EXHAUSTED, grpc::RESOURCE_EXHAUSTED},
      {MGMTMSG_STATUS_FAILED_PRECONDITION, grpc::FAILED_PRECONDITION},
      {MGMTMSG_STATUS_ABORTED, grpc::ABORTED},
      {MGMTMSG_STATUS_OUT_OF_RANGE, grpc::OUT_OF_RANGE},
      {MGMTMSG_STATUS_UNIMPLEMENTED, grpc::UNIMPLEMENTED},
      {MGMTMSG_STATUS_INTERNAL, grpc::INTERNAL},
      {MGMTMSG_STATUS_UNAVAILABLE, grpc::UNAVAILABLE},
      {MGMTMSG_STATUS_DATA_LOSS, grpc::DATA_LOSS},
      {MGMTMSG_STATUS_UNAUTHENTICATED, grpc::UNAUTHENTICATED},
  };
  for (const auto& [ours, grpcs] : codes) {
    EXPECT_EQ(ours, grpcs);
  }
#else
  GTEST_SKIP() << "no gRPC headers for this target";
#endif
}

}  // namespace
