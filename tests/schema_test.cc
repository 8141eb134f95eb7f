// The six schemas as the generated classes put them on the wire: oneofs, the
// map, unknown fields, UTF-8 checks, packing, presence, field order, file
// options, services and the registration made when the library is loaded.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "dialout.pb.h"
#include "gnmi/gnmi.pb.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-dialout.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/fatal_capture.h"

namespace {

using google::protobuf::Message;

// Bytes on the wire, written as a list of octets.
std::string Wire(std::initializer_list<int> octets) {
  std::string bytes;
  for (int octet : octets) {
    bytes.push_back(static_cast<char>(octet));
  }
  return bytes;
}

// A fresh message of `type`'s class parsed from `bytes`; null when the parse fails.
std::unique_ptr<Message> Parsed(const Message& type, const std::string& bytes) {
  std::unique_ptr<Message> message(type.New());
  return message->ParseFromString(bytes) ? std::move(message) : nullptr;
}

TEST(Schema, LastOneofMemberAndLastMapEntryWinAndUnknownFieldsAreWrittenBack) {
  const struct {
    const Message& type;
    std::string bytes;
    std::string written;
  } cases[] = {
      // TypedValue: string_val "a" then int_val 5, and the reverse.
      {gnmi::TypedValue::default_instance(), Wire({0x0a, 0x01, 'a', 0x10, 0x05}),
       Wire({0x10, 0x05})},
      {gnmi::TypedValue::default_instance(), Wire({0x10, 0x05, 0x0a, 0x01, 'a'}),
       Wire({0x0a, 0x01, 'a'})},
      // PathElem: key k=v1 then k=v2.
      {gnmi::PathElem::default_instance(),
       Wire({0x12, 0x07, 0x0a, 0x01, 'k', 0x12, 0x02, 'v', '1', 0x12, 0x07, 0x0a, 0x01, 'k', 0x12,
             0x02, 'v', '2'}),
       Wire({0x12, 0x07, 0x0a, 0x01, 'k', 0x12, 0x02, 'v', '2'})},
      // GetRequest: type STATE, then the undeclared field 4 as a varint and as bytes.
      {gnmi::GetRequest::default_instance(), Wire({0x18, 0x02, 0x20, 0x09, 0x22, 0x02, 'h', 'i'}),
       Wire({0x18, 0x02, 0x20, 0x09, 0x22, 0x02, 'h', 'i'})},
      // SubsArgs: request_id 1, then the undeclared fields 3 and 4.
      {quorix_dialin::SubsArgs::default_instance(),
       Wire({0x08, 0x01, 0x18, 0x07, 0x22, 0x01, 'x'}),
       Wire({0x08, 0x01, 0x18, 0x07, 0x22, 0x01, 'x'})},
      // SubscribeRequest: an empty Poll is present and written.
      {gnmi::SubscribeRequest::default_instance(), Wire({0x1a, 0x00}), Wire({0x1a, 0x00})},
      // CapabilityResponse: supported_encodings unpacked is written packed.
      {gnmi::CapabilityResponse::default_instance(), Wire({0x10, 0x01, 0x10, 0x04}),
       Wire({0x12, 0x02, 0x01, 0x04})},
      {gnmi::CapabilityResponse::default_instance(), Wire({0x12, 0x02, 0x01, 0x04}),
       Wire({0x12, 0x02, 0x01, 0x04})},
      // DialoutArgs: an empty Any is present and written.
      {dialout::DialoutArgs::default_instance(), Wire({0x08, 0x01, 0x12, 0x00}),
       Wire({0x08, 0x01, 0x12, 0x00})},
  };
  for (const auto& c : cases) {
    const auto message = Parsed(c.type, c.bytes);
    ASSERT_NE(message, nullptr) << c.type.GetTypeName();
    EXPECT_EQ(message->SerializeAsString(), c.written) << message->DebugString();
  }
  const auto map = Parsed(gnmi::PathElem::default_instance(), cases[2].bytes);
  EXPECT_EQ(static_cast<gnmi::PathElem&>(*map).key_size(), 1);
}

TEST(Schema, InvalidUtf8FailsAStringFieldButNotABytesField) {
  const struct {
    const Message& type;
    std::string bytes;
    const char* failingField;  // null: the bytes parse
  } cases[] = {
      {gnmi::Path::default_instance(), Wire({0x12, 0x01, 0xff}), "gnmi.Path.origin"},
      {gnmi::GetRequest::default_instance(), Wire({0x12, 0x03, 0x12, 0x01, 0xff}),
       "gnmi.Path.origin"},
      {gnmi::PathElem::default_instance(), Wire({0x12, 0x05, 0x0a, 0x01, 0xff, 0x12, 0x00}),
       "gnmi.PathElem.KeyEntry.key"},
      {gnmi::TypedValue::default_instance(), Wire({0x2a, 0x01, 0xff}), nullptr},  // bytes_val
      {gnmi::TypedValue::default_instance(), Wire({0x52, 0x01, 0xff}), nullptr},  // json_val
      {gnmi::TypedValue::default_instance(), Wire({0x5a, 0x01, 0xff}), nullptr},  // json_ietf_val
      {gnmi::TypedValue::default_instance(), Wire({0x6a, 0x01, 0xff}), nullptr},  // proto_bytes
      {quorix_dialin::SubsReply::default_instance(), Wire({0x22, 0x01, 0xff}), nullptr},
      {quorix_dialin::SubsArgs::default_instance(), Wire({0x2a, 0x03, 0x0a, 0x01, 0xff}),
       "quorix_dialin.Path.path"},
      {quorix_grpc_ipc::SouthMsg::default_instance(), Wire({0x4a, 0x01, 0xff}),
       "quorix_grpc_ipc.SouthMsg.result_description"},
      {quorix_grpc_ipc::SouthMsg::default_instance(), Wire({0x52, 0x03, 0x0a, 0x01, 0xff}),
       "quorix_grpc_ipc.LoginAuthenticate.user_name"},
      // login.token, server_rpc.rpc_parament and rpc_data.data are bytes.
      {quorix_grpc_ipc::SouthMsg::default_instance(),
       Wire({0x52, 0x03, 0x22, 0x01, 0xff, 0x62, 0x03, 0x42, 0x01, 0xff, 0x6a, 0x03, 0x0a, 0x01,
             0xff}),
       nullptr},
  };
  for (const auto& c : cases) {
    std::unique_ptr<Message> message;
    const auto log = testsupport::CaptureFatal([&] { message = Parsed(c.type, c.bytes); });
    EXPECT_EQ(message == nullptr, c.failingField != nullptr) << c.type.GetTypeName();
    if (c.failingField != nullptr) {
      EXPECT_NE(log.logged.find(std::string("'") + c.failingField +
                                "' contains invalid UTF-8 data when parsing"),
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

TEST(Schema, ServiceArgsDeclarationOrderDiffersFromWireOrder) {
  const auto* descriptor = quorix_dialout::serviceArgs::descriptor();
  std::vector<std::string> declared;
  for (int i = 0; i < descriptor->field_count(); ++i) {
    declared.push_back(descriptor->field(i)->name() + "=" +
                       std::to_string(descriptor->field(i)->number()));
  }
  EXPECT_EQ(declared, (std::vector<std::string>{"ReqId=1", "data=2", "data_json=4", "errors=3"}));

  quorix_dialout::serviceArgs args;
  args.set_reqid(1);
  args.set_errors("e");
  args.set_data_json("j");
  EXPECT_EQ(args.SerializeAsString(), Wire({0x08, 0x01, 0x1a, 0x01, 'e', 0x22, 0x01, 'j'}));
}

TEST(Schema, GnmiFileOptionAndServiceMethodPaths) {
  const auto* file = gnmi::GetRequest::descriptor()->file();
  EXPECT_EQ(file->options().GetExtension(gnmi::gnmi_service), "0.7.0");
  EXPECT_EQ(file->FindExtensionByName("gnmi_service")->number(), 1001);
  const auto* service = file->FindServiceByName("gNMI");
  ASSERT_NE(service, nullptr);
  std::vector<std::string> paths;
  for (int i = 0; i < service->method_count(); ++i) {
    paths.push_back("/" + service->full_name() + "/" + service->method(i)->name());
  }
  EXPECT_EQ(paths, (std::vector<std::string>{"/gnmi.gNMI/Capabilities", "/gnmi.gNMI/Get",
                                             "/gnmi.gNMI/Set", "/gnmi.gNMI/Subscribe"}));
  EXPECT_TRUE(service->FindMethodByName("Subscribe")->client_streaming());
  EXPECT_TRUE(service->FindMethodByName("Subscribe")->server_streaming());
}

TEST(Schema, AllSixFilesAreInTheGeneratedPoolAtLoad) {
  const auto* pool = google::protobuf::DescriptorPool::generated_pool();
  const std::pair<const char*, const char*> files[] = {
      {"dialout.proto", "dialout.DialoutArgs"},
      {"quorix-grpc-dialin.proto", "quorix_dialin.SubsArgs"},
      {"quorix-grpc-dialout.proto", "quorix_dialout.serviceArgs"},
      {"quorix-grpc-ipc.proto", "quorix_grpc_ipc.SouthMsg"},
      {"github.com/openconfig/gnmi/proto/gnmi/gnmi.proto", "gnmi.GetRequest"},
      {"github.com/openconfig/gnmi/proto/gnmi_ext/gnmi_ext.proto", "gnmi_ext.Extension"},
  };
  for (const auto& [file, message] : files) {
    const auto* type = pool->FindMessageTypeByName(message);
    ASSERT_NE(type, nullptr) << message;
    EXPECT_EQ(type->file(), pool->FindFileByName(file)) << message;
    EXPECT_EQ(type->file()->syntax(), google::protobuf::FileDescriptor::SYNTAX_PROTO3) << file;
    EXPECT_EQ(google::protobuf::MessageFactory::generated_factory()->GetPrototype(type)
                  ->GetDescriptor(),
              type)
        << message;
  }
  EXPECT_EQ(pool->FindFileByName(files[4].first)->dependency(2)->name(), files[5].first);
}

}  // namespace
