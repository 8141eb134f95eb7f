// The six schemas as the generated classes put them on the wire: oneofs, the
// map, unknown fields, UTF-8 checks, packing, presence, field order, file
// options, services and the registration made when the library is loaded.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "dialout.pb.h"
#include "gnmi/gnmi.pb.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-dialout.pb.h"
#include "quorix-grpc-ipc.pb.h"

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

// Parses `bytes` into a fresh `T`, failing the test when the parse fails.
template <class T>
T Parsed(const std::string& bytes) {
  T message;
  EXPECT_TRUE(message.ParseFromString(bytes)) << T::descriptor()->full_name();
  return message;
}

// What parsing `bytes` and serializing the result writes.
template <class T>
std::string Reencoded(const std::string& bytes) {
  return Parsed<T>(bytes).SerializeAsString();
}

template <class T>
bool Parses(const std::string& bytes) {
  T message;
  return message.ParseFromString(bytes);
}

// Collects what the message runtime logs while it is alive.
class LogCapture {
 public:
  LogCapture() : previous_(google::protobuf::SetLogHandler(&Record)) { lines().clear(); }
  ~LogCapture() { google::protobuf::SetLogHandler(previous_); }
  std::string Text() const {
    std::string text;
    for (const std::string& line : lines()) {
      text += line + "\n";
    }
    return text;
  }

 private:
  static std::vector<std::string>& lines() {
    static std::vector<std::string> captured;
    return captured;
  }
  static void Record(google::protobuf::LogLevel, const char*, int, const std::string& message) {
    lines().push_back(message);
  }
  google::protobuf::LogHandler* previous_;
};

TEST(GnmiSchema, TypedValueKeepsTheLastOneofMemberOnTheWire) {
  const std::string stringThenInt = Wire({0x0a, 0x01, 'a', 0x10, 0x05});
  const auto value = Parsed<gnmi::TypedValue>(stringThenInt);
  EXPECT_EQ(value.value_case(), gnmi::TypedValue::kIntVal);
  EXPECT_EQ(value.int_val(), 5);
  EXPECT_EQ(value.string_val(), "");
  EXPECT_EQ(value.SerializeAsString(), Wire({0x10, 0x05}));

  const auto reversed = Parsed<gnmi::TypedValue>(Wire({0x10, 0x05, 0x0a, 0x01, 'a'}));
  EXPECT_EQ(reversed.value_case(), gnmi::TypedValue::kStringVal);
  EXPECT_EQ(reversed.string_val(), "a");
  EXPECT_EQ(reversed.int_val(), 0);
}

TEST(GnmiSchema, PathElemKeyRepeatedOnTheWireKeepsTheLastValue) {
  const std::string firstEntry = Wire({0x12, 0x07, 0x0a, 0x01, 'k', 0x12, 0x02, 'v', '1'});
  const std::string lastEntry = Wire({0x12, 0x07, 0x0a, 0x01, 'k', 0x12, 0x02, 'v', '2'});
  const auto elem = Parsed<gnmi::PathElem>(firstEntry + lastEntry);
  ASSERT_EQ(elem.key_size(), 1);
  EXPECT_EQ(elem.key().at("k"), "v2");
  EXPECT_EQ(elem.SerializeAsString(), lastEntry);
}

TEST(GnmiSchema, UndeclaredGetRequestFieldFourIsKeptAndWrittenBack) {
  const std::string bytes = Wire({0x18, 0x02, 0x20, 0x09, 0x22, 0x02, 'h', 'i'});
  const auto request = Parsed<gnmi::GetRequest>(bytes);
  EXPECT_EQ(request.type(), gnmi::GetRequest::STATE);
  const auto& unknown = request.GetReflection()->GetUnknownFields(request);
  ASSERT_EQ(unknown.field_count(), 2);
  EXPECT_EQ(unknown.field(0).number(), 4);
  EXPECT_EQ(unknown.field(1).number(), 4);
  EXPECT_EQ(request.SerializeAsString(), bytes);
}

TEST(GnmiSchema, InvalidUtf8FailsAStringFieldButNotABytesField) {
  const std::string badOrigin = Wire({0x12, 0x01, 0xff});
  {
    LogCapture log;
    EXPECT_FALSE(Parses<gnmi::Path>(badOrigin));
    // The same path inside a request fails the whole request.
    EXPECT_FALSE(Parses<gnmi::GetRequest>(Wire({0x12, 0x03}) + badOrigin));
    // A map key is a string too.
    EXPECT_FALSE(Parses<gnmi::PathElem>(Wire({0x12, 0x05, 0x0a, 0x01, 0xff, 0x12, 0x00})));
    EXPECT_NE(log.Text().find("'gnmi.Path.origin' contains invalid UTF-8 data when parsing"),
              std::string::npos)
        << log.Text();
  }

  for (int field : {5, 10, 11, 13}) {  // bytes_val, json_val, json_ietf_val, proto_bytes
    const auto value = Parsed<gnmi::TypedValue>(Wire({field << 3 | 2, 0x01, 0xff}));
    EXPECT_EQ(value.value_case(), field);
  }

  // Writing invalid text is only logged, under the field's full name.
  gnmi::Path path;
  path.set_origin("\xff");
  LogCapture log;
  EXPECT_EQ(path.SerializeAsString(), badOrigin);
  EXPECT_NE(log.Text().find("'gnmi.Path.origin' contains invalid UTF-8 data when serializing"),
            std::string::npos)
      << log.Text();
}

TEST(GnmiSchema, SupportedEncodingsParseBothFormsAndAreWrittenPacked) {
  const std::string packed = Wire({0x12, 0x02, 0x01, 0x04});
  const std::string unpacked = Wire({0x10, 0x01, 0x10, 0x04});
  for (const std::string& bytes : {packed, unpacked}) {
    const auto response = Parsed<gnmi::CapabilityResponse>(bytes);
    ASSERT_EQ(response.supported_encodings_size(), 2);
    EXPECT_EQ(response.supported_encodings(0), gnmi::BYTES);
    EXPECT_EQ(response.supported_encodings(1), gnmi::JSON_IETF);
    EXPECT_EQ(response.SerializeAsString(), packed);
  }
}

TEST(GnmiSchema, EmptyPollIsPresent) {
  const std::string bytes = Wire({0x1a, 0x00});
  const auto request = Parsed<gnmi::SubscribeRequest>(bytes);
  EXPECT_EQ(request.request_case(), gnmi::SubscribeRequest::kPoll);
  EXPECT_TRUE(request.has_poll());
  EXPECT_EQ(request.SerializeAsString(), bytes);
  EXPECT_EQ(gnmi::SubscribeRequest().SerializeAsString(), "");
}

TEST(GnmiSchema, FileCarriesTheGnmiServiceVersionOption) {
  const auto* file = gnmi::GetRequest::descriptor()->file();
  EXPECT_EQ(file->options().GetExtension(gnmi::gnmi_service), "0.7.0");
  const auto* extension = file->FindExtensionByName("gnmi_service");
  ASSERT_NE(extension, nullptr);
  EXPECT_EQ(extension->number(), 1001);
  EXPECT_EQ(extension->containing_type()->full_name(), "google.protobuf.FileOptions");
  EXPECT_EQ(extension->type(), google::protobuf::FieldDescriptor::TYPE_STRING);
}

TEST(GnmiSchema, ServiceDescribesTheFourMethodPaths) {
  const auto* service = gnmi::GetRequest::descriptor()->file()->FindServiceByName("gNMI");
  ASSERT_NE(service, nullptr);
  std::vector<std::string> paths;
  paths.reserve(service->method_count());
  for (int i = 0; i < service->method_count(); ++i) {
    paths.push_back("/" + service->full_name() + "/" + service->method(i)->name());
  }
  EXPECT_EQ(paths, (std::vector<std::string>{"/gnmi.gNMI/Capabilities", "/gnmi.gNMI/Get",
                                             "/gnmi.gNMI/Set", "/gnmi.gNMI/Subscribe"}));
  const auto* subscribe = service->FindMethodByName("Subscribe");
  EXPECT_TRUE(subscribe->client_streaming());
  EXPECT_TRUE(subscribe->server_streaming());
  EXPECT_FALSE(service->FindMethodByName("Get")->client_streaming());
  EXPECT_EQ(service->FindMethodByName("Get")->output_type(), gnmi::GetResponse::descriptor());
}

TEST(DialinSchema, SuppressOneofKeepsTheLastMemberEvenWhenFalse) {
  const std::string suppressFalse = Wire({0x40, 0x00});
  const std::string delayFive = Wire({0x48, 0x05});
  const auto delayLast = Parsed<quorix_dialin::SubsArgs>(suppressFalse + delayFive);
  EXPECT_EQ(delayLast.Suppress_case(), quorix_dialin::SubsArgs::kDelayTime);
  EXPECT_EQ(delayLast.delay_time(), 5u);

  const auto suppressLast = Parsed<quorix_dialin::SubsArgs>(delayFive + suppressFalse);
  EXPECT_EQ(suppressLast.Suppress_case(), quorix_dialin::SubsArgs::kSuppressRedundant);
  EXPECT_FALSE(suppressLast.suppress_redundant());
  EXPECT_EQ(suppressLast.delay_time(), 0u);
  // A member set to its default is present and so written.
  EXPECT_EQ(suppressLast.SerializeAsString(), suppressFalse);
}

TEST(DialinSchema, SubsArgsKeepsUndeclaredFieldsThreeAndFourAndMayHaveNoPath) {
  const std::string bytes = Wire({0x08, 0x01, 0x18, 0x07, 0x22, 0x01, 'x'});
  const auto args = Parsed<quorix_dialin::SubsArgs>(bytes);
  EXPECT_EQ(args.request_id(), 1u);
  EXPECT_EQ(args.path_size(), 0);
  const auto& unknown = args.GetReflection()->GetUnknownFields(args);
  ASSERT_EQ(unknown.field_count(), 2);
  EXPECT_EQ(unknown.field(0).number(), 3);
  EXPECT_EQ(unknown.field(1).number(), 4);
  EXPECT_EQ(args.SerializeAsString(), bytes);
}

TEST(DialinSchema, SubsReplyMessageMembersClearEachOther) {
  quorix_dialin::SubsReply reply;
  reply.set_message("\xff");
  reply.set_message_json("j");
  EXPECT_EQ(reply.MessageData_case(), quorix_dialin::SubsReply::kMessageJson);
  EXPECT_EQ(reply.message(), "");
  EXPECT_EQ(reply.SerializeAsString(), Wire({0x2a, 0x01, 'j'}));
  reply.set_message("\xff");
  EXPECT_EQ(reply.MessageData_case(), quorix_dialin::SubsReply::kMessage);
  EXPECT_EQ(reply.message_json(), "");
  EXPECT_EQ(reply.SerializeAsString(), Wire({0x22, 0x01, 0xff}));

  // message is bytes, the sensor path is text.
  EXPECT_TRUE(Parses<quorix_dialin::SubsReply>(Wire({0x22, 0x01, 0xff})));
  LogCapture log;
  EXPECT_FALSE(Parses<quorix_dialin::SubsArgs>(Wire({0x2a, 0x03, 0x0a, 0x01, 0xff})));
  EXPECT_NE(log.Text().find("'quorix_dialin.Path.path'"), std::string::npos) << log.Text();
}

TEST(DialoutSchema, ServiceArgsDeclarationOrderDiffersFromWireOrder) {
  const auto* descriptor = quorix_dialout::serviceArgs::descriptor();
  std::vector<std::string> names;
  std::vector<int> numbers;
  for (int i = 0; i < descriptor->field_count(); ++i) {
    names.push_back(descriptor->field(i)->name());
    numbers.push_back(descriptor->field(i)->number());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"ReqId", "data", "data_json", "errors"}));
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 4, 3}));

  quorix_dialout::serviceArgs args;
  args.set_reqid(1);
  args.set_data("d");
  args.set_errors("e");
  EXPECT_EQ(args.SerializeAsString(), Wire({0x08, 0x01, 0x12, 0x01, 'd', 0x1a, 0x01, 'e'}));
  args.set_data_json("j");
  EXPECT_EQ(args.MessageData_case(), quorix_dialout::serviceArgs::kDataJson);
  EXPECT_EQ(args.data(), "");
  EXPECT_EQ(args.SerializeAsString(), Wire({0x08, 0x01, 0x1a, 0x01, 'e', 0x22, 0x01, 'j'}));
  args.set_data("d");
  EXPECT_EQ(args.MessageData_case(), quorix_dialout::serviceArgs::kData);
  EXPECT_EQ(args.data_json(), "");
}

TEST(DialoutSchema, DialoutArgsWritesAnEmptyAnyButNotAMissingOne) {
  dialout::DialoutArgs args;
  args.set_reqid(1);
  EXPECT_EQ(args.SerializeAsString(), Wire({0x08, 0x01}));
  args.mutable_data();
  EXPECT_EQ(args.SerializeAsString(), Wire({0x08, 0x01, 0x12, 0x00}));
  EXPECT_TRUE(Parsed<dialout::DialoutArgs>(Wire({0x12, 0x00})).has_data());
  EXPECT_FALSE(Parsed<dialout::DialoutArgs>(Wire({0x08, 0x01})).has_data());
}

TEST(SouthSchema, PayloadsAreIndependentlyPresent) {
  const auto bare = Parsed<quorix_grpc_ipc::SouthMsg>(Wire({0x08, 0x01}));
  EXPECT_FALSE(bare.has_login());
  EXPECT_FALSE(bare.has_client_rpc());
  EXPECT_FALSE(bare.has_server_rpc());
  EXPECT_FALSE(bare.has_rpc_data());

  // client_rpc {peer_port: 5} and rpc_data {is_over: true}
  const std::string both = Wire({0x5a, 0x02, 0x10, 0x05, 0x6a, 0x02, 0x10, 0x01});
  const auto msg = Parsed<quorix_grpc_ipc::SouthMsg>(both);
  EXPECT_TRUE(msg.has_client_rpc());
  EXPECT_TRUE(msg.has_rpc_data());
  EXPECT_FALSE(msg.has_server_rpc());
  EXPECT_EQ(msg.client_rpc().peer_port(), 5u);
  EXPECT_TRUE(msg.rpc_data().is_over());
  EXPECT_EQ(msg.SerializeAsString(), both);
}

TEST(SouthSchema, DefaultsOnlyEnvelopeEncodesToNothing) {
  quorix_grpc_ipc::SouthMsg msg;
  msg.set_connect_id(0);
  msg.set_req_type(quorix_grpc_ipc::REQTYPE_INVALID);
  msg.set_result_description("");
  EXPECT_EQ(msg.ByteSizeLong(), 0u);
  EXPECT_EQ(msg.SerializeAsString(), "");
  // Defaults that a sender wrote explicitly are dropped when written again.
  EXPECT_EQ(Reencoded<quorix_grpc_ipc::SouthMsg>(Wire({0x08, 0x00, 0x4a, 0x00})), "");
}

TEST(SouthSchema, ClientNameAndOutOfRangeEnumsSurviveAParse) {
  // client_rpc {client_name: "cli", client_id: 9}, then req_type 7.
  const std::string bytes = Wire({0x5a, 0x07, 0x52, 0x03, 'c', 'l', 'i', 0x58, 0x09, 0x20, 0x07}) +
                            Wire({0x28, 0x63});  // op_type 99
  const auto msg = Parsed<quorix_grpc_ipc::SouthMsg>(bytes);
  EXPECT_EQ(msg.client_rpc().client_name(), "cli");
  EXPECT_EQ(msg.req_type(), 7);
  EXPECT_EQ(msg.op_type(), 99);
  EXPECT_EQ(msg.SerializeAsString(),
            Wire({0x20, 0x07, 0x28, 0x63, 0x5a, 0x07, 0x52, 0x03, 'c', 'l', 'i', 0x58, 0x09}));
}

TEST(SouthSchema, InvalidUtf8FailsTheEnvelopeOnlyInTextFields) {
  {
    LogCapture log;
    EXPECT_FALSE(Parses<quorix_grpc_ipc::SouthMsg>(Wire({0x4a, 0x01, 0xff})));
    // login {user_name: "\xff"}
    EXPECT_FALSE(Parses<quorix_grpc_ipc::SouthMsg>(Wire({0x52, 0x03, 0x0a, 0x01, 0xff})));
    EXPECT_NE(log.Text().find("'quorix_grpc_ipc.LoginAuthenticate.user_name'"), std::string::npos)
        << log.Text();
  }
  // login {token: "\xff"}, server_rpc {rpc_parament: "\xff"}, rpc_data {data: "\xff"}
  const auto msg = Parsed<quorix_grpc_ipc::SouthMsg>(Wire(
      {0x52, 0x03, 0x22, 0x01, 0xff, 0x62, 0x03, 0x42, 0x01, 0xff, 0x6a, 0x03, 0x0a, 0x01, 0xff}));
  EXPECT_EQ(msg.login().token(), "\xff");
  EXPECT_EQ(msg.server_rpc().rpc_parament(), "\xff");
  EXPECT_EQ(msg.rpc_data().data(), "\xff");
}

TEST(SchemaRegistration, AllSixFilesAreInTheGeneratedPoolAtLoad) {
  const auto* pool = google::protobuf::DescriptorPool::generated_pool();
  const std::vector<std::pair<std::string, std::string>> files = {
      {"dialout.proto", "dialout.DialoutArgs"},
      {"quorix-grpc-dialin.proto", "quorix_dialin.SubsArgs"},
      {"quorix-grpc-dialout.proto", "quorix_dialout.serviceArgs"},
      {"quorix-grpc-ipc.proto", "quorix_grpc_ipc.SouthMsg"},
      {"github.com/openconfig/gnmi/proto/gnmi/gnmi.proto", "gnmi.GetRequest"},
      {"github.com/openconfig/gnmi/proto/gnmi_ext/gnmi_ext.proto", "gnmi_ext.Extension"},
  };
  for (const auto& [file, message] : files) {
    const auto* descriptor = pool->FindFileByName(file);
    ASSERT_NE(descriptor, nullptr) << file;
    EXPECT_EQ(descriptor->syntax(), google::protobuf::FileDescriptor::SYNTAX_PROTO3) << file;
    const auto* type = pool->FindMessageTypeByName(message);
    ASSERT_NE(type, nullptr) << message;
    EXPECT_EQ(type->file(), descriptor) << message;
    // The prototype the runtime hands out is the generated class's.
    const Message* prototype =
        google::protobuf::MessageFactory::generated_factory()->GetPrototype(type);
    ASSERT_NE(prototype, nullptr) << message;
    EXPECT_EQ(prototype->GetDescriptor(), type) << message;
  }
  const auto* gnmiFile = pool->FindFileByName(files[4].first);
  ASSERT_EQ(gnmiFile->dependency_count(), 3);
  EXPECT_EQ(gnmiFile->dependency(2)->name(), files[5].first);
}

}  // namespace
