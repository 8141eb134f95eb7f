// Moving gNMI messages in and out of a context through its Parse and
// Serialize entry points, and checking an indexed reader against its field.
#ifndef MGMTMSG_TESTS_SUPPORT_GNMI_ACCESS_H
#define MGMTMSG_TESTS_SUPPORT_GNMI_ACCESS_H

#include <gtest/gtest.h>

#include <string>

#include "support/fatal_capture.h"
#include "support/owned.h"

namespace testsupport {

using ParseFn = int (*)(void*, const void*, int);
using SerializeFn = int (*)(void*, void**, int*);

// Encodes `request` with the message runtime and parses it into the context.
template <class Message>
bool ParseInto(ParseFn parse, void* ctx, const Message& request) {
  const std::string bytes = request.SerializeAsString();
  return parse(ctx, bytes.data(), static_cast<int>(bytes.size())) == 1;
}

// The context's response bytes, as its Serialize entry point gives them.
inline std::string Serialized(SerializeFn serialize, void* ctx) {
  void* out = nullptr;
  int outLen = 0;
  EXPECT_EQ(serialize(ctx, &out, &outLen), 1);
  return Bytes(out, static_cast<size_t>(outLen));
}

// Decodes bytes into a message with the message runtime.
template <class Message>
Message Decoded(const std::string& bytes) {
  Message message;
  EXPECT_TRUE(message.ParseFromString(bytes));
  return message;
}

// An indexed reader with its count over `field`: the count is the field's,
// each element handed out is the field's own object, and the indices just
// outside the field end in the fatal checks of `gnmi_ex`.
template <class Field>
void ExpectIndexedReader(void* handle, void* (*get)(void*, int), int (*count)(void*),
                         const Field& field) {
  ASSERT_EQ(count(handle), field.size());
  for (int i = 0; i < field.size(); ++i) {
    EXPECT_EQ(get(handle, i), &field.Get(i)) << "index " << i;
  }
  EXPECT_FATAL_CHECK(get(handle, -1), "gnmi_ex", 1707, kNegativeIndex);
  EXPECT_FATAL_CHECK(get(handle, field.size()), "gnmi_ex", 1708, kPastEndIndex);
}

}  // namespace testsupport

#endif
