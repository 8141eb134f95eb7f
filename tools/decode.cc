#include "decode.h"

#include <google/protobuf/message.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/text_format.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <set>

#include "dialout.pb.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi_ext/gnmi_ext.pb.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-dialout.pb.h"
#include "quorix-grpc-ipc.pb.h"

namespace mgmtmsgdump {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FileDescriptor;

// One message of each schema file of the library stands for its file.
std::vector<const FileDescriptor*> SchemaFiles() {
  return {gnmi::GetRequest::descriptor()->file(),
          gnmi_ext::Extension::descriptor()->file(),
          quorix_dialin::SubsArgs::descriptor()->file(),
          quorix_dialout::serviceArgs::descriptor()->file(),
          dialout::DialoutArgs::descriptor()->file(),
          quorix_grpc_ipc::SouthMsg::descriptor()->file()};
}

void AddWithNested(const Descriptor& type, std::vector<std::string>* names) {
  if (!type.options().map_entry()) {
    names->push_back(type.full_name());
  }
  for (int i = 0; i < type.nested_type_count(); ++i) {
    AddWithNested(*type.nested_type(i), names);
  }
}

// What the message runtime logs while a parse runs: the reason it gives for a
// failure (invalid UTF-8 in a string field names the field).
std::string runtimeLog;

void RecordRuntimeLog(google::protobuf::LogLevel /*level*/, const char* /*file*/, int /*line*/,
                      const std::string& message) {
  runtimeLog +=
      (runtimeLog.empty() ? "" : "; ") + message.substr(0, message.find_last_not_of(' ') + 1);
}

// Parses `bytes` into `message`; returns why that failed, or "".
std::string Parse(std::string_view bytes, google::protobuf::Message* message) {
  if (bytes.size() > INT_MAX) {
    return "too large";
  }
  runtimeLog.clear();
  google::protobuf::LogHandler* previous = google::protobuf::SetLogHandler(&RecordRuntimeLog);
  const bool parsed = message->ParseFromArray(bytes.data(), static_cast<int>(bytes.size()));
  google::protobuf::SetLogHandler(previous);
  if (parsed) {
    return "";
  }
  return runtimeLog.empty() ? "malformed wire data" : runtimeLog;
}

}  // namespace

std::vector<std::string> KnownMessageTypes() {
  std::vector<std::string> names;
  for (const FileDescriptor* file : SchemaFiles()) {
    for (int i = 0; i < file->message_type_count(); ++i) {
      AddWithNested(*file->message_type(i), &names);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> KnownPackages() {
  std::set<std::string> packages;
  for (const FileDescriptor* file : SchemaFiles()) {
    packages.insert(file->package());
  }
  return {packages.begin(), packages.end()};
}

const Descriptor* FindMessageType(const std::string& name) {
  return google::protobuf::DescriptorPool::generated_pool()->FindMessageTypeByName(name);
}

Decoded DecodeToText(const Descriptor& type, std::string_view bytes) {
  Decoded decoded;
  std::unique_ptr<google::protobuf::Message> message(
      google::protobuf::MessageFactory::generated_factory()->GetPrototype(&type)->New());
  const std::string failure = Parse(bytes, message.get());
  if (!failure.empty()) {
    decoded.error = "not a valid " + type.full_name() + " encoding (" +
                    std::to_string(bytes.size()) + " bytes): " + failure;
    return decoded;
  }
  google::protobuf::TextFormat::Printer printer;
  printer.SetUseUtf8StringEscaping(true);
  printer.SetExpandAny(true);
  printer.PrintToString(*message, &decoded.text);
  return decoded;
}

}  // namespace mgmtmsgdump
