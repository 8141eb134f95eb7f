// Message types of the library's schemas and their decoding into protobuf
// text format.
#ifndef MGMTMSG_TOOLS_DECODE_H
#define MGMTMSG_TOOLS_DECODE_H

#include <string>
#include <string_view>
#include <vector>

#include <google/protobuf/descriptor.h>

namespace mgmtmsgdump {

// The full names of the message types of the library's schemas, sorted.
std::vector<std::string> KnownMessageTypes();

// The packages of those types, sorted.
std::vector<std::string> KnownPackages();

// The generated type of that full name, or null.
const google::protobuf::Descriptor* FindMessageType(const std::string& name);

// The decoding of `bytes` as a `type`: its text format (unknown fields
// included, bytes escaped) when `error` is empty, else what is wrong.
struct Decoded {
  std::string text;
  std::string error;
};

Decoded DecodeToText(const google::protobuf::Descriptor& type, std::string_view bytes);

}  // namespace mgmtmsgdump

#endif
