// Writing messages in text format, and reading a context's response
// through its Serialize entry point.
#ifndef MGMTMSG_TESTS_SUPPORT_GNMI_ACCESS_H
#define MGMTMSG_TESTS_SUPPORT_GNMI_ACCESS_H

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <string>

#include "support/owned.h"

namespace testsupport {

// A message written in the message runtime's text format.
template <class Message>
Message FromText(const std::string& text) {
  Message message;
  EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(text, &message)) << text;
  return message;
}

// The context's response bytes, as its Serialize entry point gives them.
inline std::string Serialized(int (*serialize)(void*, void**, int*), void* ctx) {
  void* out = nullptr;
  int outLen = 0;
  EXPECT_EQ(serialize(ctx, &out, &outLen), 1);
  return Bytes(out, static_cast<size_t>(outLen));
}

}  // namespace testsupport

#endif
