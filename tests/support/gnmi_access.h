// Moving gNMI messages in and out of a context through its Parse and
// Serialize entry points, writing them in text format, and checking an
// indexed reader against its field.
#ifndef MGMTMSG_TESTS_SUPPORT_GNMI_ACCESS_H
#define MGMTMSG_TESTS_SUPPORT_GNMI_ACCESS_H

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <initializer_list>
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

// A message written in the message runtime's text format.
template <class Message>
Message FromText(const std::string& text) {
  Message message;
  EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(text, &message)) << text;
  return message;
}

// The context's response bytes, as its Serialize entry point gives them.
inline std::string Serialized(SerializeFn serialize, void* ctx) {
  void* out = nullptr;
  int outLen = 0;
  EXPECT_EQ(serialize(ctx, &out, &outLen), 1);
  return Bytes(out, static_cast<size_t>(outLen));
}

// An indexed reader with its count, and the repeated field `field` of
// `owner` that they read.
struct IndexedReader {
  void* handle;
  void* (*get)(void*, int);
  int (*count)(void*);
  const google::protobuf::Message& owner;
  const char* field;
};

// For each reader: the count is the field's, each element handed out is the
// field's own object, and the indices just outside the field end in the
// fatal checks of `gnmi_ex`.
inline void ExpectIndexedReaders(std::initializer_list<IndexedReader> readers) {
  for (const IndexedReader& reader : readers) {
    const auto* field = reader.owner.GetDescriptor()->FindFieldByName(reader.field);
    const int size = reader.owner.GetReflection()->FieldSize(reader.owner, field);
    EXPECT_EQ(reader.count(reader.handle), size) << field->full_name();
    for (int i = 0; i < size; ++i) {
      EXPECT_EQ(reader.get(reader.handle, i),
                &reader.owner.GetReflection()->GetRepeatedMessage(reader.owner, field, i))
          << field->full_name() << " " << i;
    }
    EXPECT_FATAL_CHECK(reader.get(reader.handle, -1), "gnmi_ex", 1707, kNegativeIndex);
    EXPECT_FATAL_CHECK(reader.get(reader.handle, size), "gnmi_ex", 1708, kPastEndIndex);
  }
}

}  // namespace testsupport

#endif
