// The six schemas as the generated classes put them on the wire: oneofs, the
// map, unknown fields, UTF-8 checks, packing, presence, field order, file
// options.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "dialout.pb.h"
#include "gnmi/gnmi.pb.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-dialout.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/fatal_capture.h"

namespace {

using google::protobuf::Message;
using namespace std::string_literals;

// A fresh message of `type`'s class parsed from `bytes`; null when the parse fails.
std::unique_ptr<Message> Parsed(const Message& type, const std::string& bytes) {
  std::unique_ptr<Message> message(type.New());
  return message->ParseFromString(bytes) ? std::move(message) : nullptr;
}

TEST(Schema, LastOneofMemberAndLastMapEntryWinUnknownFieldsAreKeptEmptyMembersWritten) {
  const auto& typedValue = gnmi::TypedValue::default_instance();
  const auto& capabilities = gnmi::CapabilityResponse::default_instance();
  const std::string k1 = "\x12\x07\x0a\x01k\x12\x02v1", k2 = "\x12\x07\x0a\x01k\x12\x02v2";
  const struct {
    const Message& type;
    std::string bytes;
    std::string written;  // empty: the bytes as they were read
  } cases[] = {
      {typedValue, "\x0a\x01z\x10\x05", "\x10\x05"},      // string_val then int_val
      {typedValue, "\x10\x05\x0a\x01z", "\x0a\x01z"},     // and the reverse
      {gnmi::PathElem::default_instance(), k1 + k2, k2},  // key k: v1, then v2
      // type STATE, then the undeclared field 4 as a varint and as bytes
      {gnmi::GetRequest::default_instance(), "\x18\x02\x20\x09\x22\x02hi", ""},
      // request_id 1, then the undeclared fields 3 and 4
      {quorix_dialin::SubsArgs::default_instance(), "\x08\x01\x18\x07\x22\x01x", ""},
      {gnmi::SubscribeRequest::default_instance(), "\x1a\x00"s, ""},  // an empty Poll
      {capabilities, "\x10\x01\x10\x04", "\x12\x02\x01\x04"},         // encodings, written packed
      {capabilities, "\x12\x02\x01\x04", ""},
      {dialout::DialoutArgs::default_instance(), "\x08\x01\x12\x00"s, ""},  // an empty Any
  };
  for (const auto& c : cases) {
    const auto message = Parsed(c.type, c.bytes);
    ASSERT_NE(message, nullptr) << c.type.GetTypeName();
    EXPECT_EQ(message->SerializeAsString(), c.written.empty() ? c.bytes : c.written)
        << message->DebugString();
  }
}

TEST(Schema, InvalidUtf8FailsAStringFieldButNotABytesField) {
  const auto& typedValue = gnmi::TypedValue::default_instance();
  const auto& southMsg = quorix_grpc_ipc::SouthMsg::default_instance();
  const struct {
    const Message& type;
    std::string bytes;
    const char* failingField;  // null: the bytes parse
  } cases[] = {
      {gnmi::Path::default_instance(), "\x12\x01\xff", "gnmi.Path.origin"},
      {gnmi::GetRequest::default_instance(), "\x12\x03\x12\x01\xff", "gnmi.Path.origin"},
      {gnmi::PathElem::default_instance(), "\x12\x05\x0a\x01\xff\x12\x00"s,
       "gnmi.PathElem.KeyEntry.key"},
      {typedValue, "\x2a\x01\xff", nullptr},                                    // bytes_val
      {typedValue, "\x52\x01\xff", nullptr},                                    // json_val
      {typedValue, "\x5a\x01\xff", nullptr},                                    // json_ietf_val
      {typedValue, "\x6a\x01\xff", nullptr},                                    // proto_bytes
      {quorix_dialin::SubsReply::default_instance(), "\x22\x01\xff", nullptr},  // message
      {quorix_dialin::SubsArgs::default_instance(), "\x2a\x03\x0a\x01\xff",
       "quorix_dialin.Path.path"},
      {southMsg, "\x4a\x01\xff", "quorix_grpc_ipc.SouthMsg.result_description"},
      {southMsg, "\x52\x03\x0a\x01\xff", "quorix_grpc_ipc.LoginAuthenticate.user_name"},
      // login.token, server_rpc.rpc_parament and rpc_data.data
      {southMsg, "\x52\x03\x22\x01\xff\x62\x03\x42\x01\xff\x6a\x03\x0a\x01\xff", nullptr},
  };
  for (const auto& c : cases) {
    std::unique_ptr<Message> message;
    const auto log = testsupport::CaptureFatal([&] { message = Parsed(c.type, c.bytes); });
    EXPECT_EQ(message == nullptr, c.failingField != nullptr) << c.type.GetTypeName();
    if (c.failingField != nullptr) {
      EXPECT_NE(
          log.logged.find("'"s + c.failingField + "' contains invalid UTF-8 data when parsing"),
          std::string::npos)
          << log.logged;
    }
  }

  // Writing invalid text is only logged.
  gnmi::Path path;
  path.set_origin("\xff");
  const auto log =
      testsupport::CaptureFatal([&] { EXPECT_EQ(path.SerializeAsString(), cases[0].bytes); });
  EXPECT_NE(log.logged.find("'gnmi.Path.origin' contains invalid UTF-8 data when serializing"),
            std::string::npos)
      << log.logged;
}

TEST(Schema, ServiceArgsDeclarationOrderDiffersFromWireOrderAndTheGnmiFileHasItsVersion) {
  const auto* descriptor = quorix_dialout::serviceArgs::descriptor();
  EXPECT_EQ(descriptor->field(2)->full_name(), "quorix_dialout.serviceArgs.data_json");
  EXPECT_EQ(descriptor->field(3)->full_name(), "quorix_dialout.serviceArgs.errors");
  quorix_dialout::serviceArgs args;
  args.set_reqid(1);
  args.set_errors("r");
  args.set_data_json("j");
  EXPECT_EQ(args.SerializeAsString(), "\x08\x01\x1a\x01r\x22\x01j");

  const auto* file = gnmi::GetRequest::descriptor()->file();
  EXPECT_EQ(file->options().GetExtension(gnmi::gnmi_service), "0.7.0");
  EXPECT_EQ(file->FindExtensionByName("gnmi_service")->number(), 1001);
}

}  // namespace
