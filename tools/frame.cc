#include "frame.h"

#include <cstring>

namespace mgmtmsgdump {
namespace {

constexpr size_t kLengthWordSize = 4;

uint32_t ReadLengthWord(std::string_view input, ByteOrder order) {
  uint32_t value = 0;
  for (size_t i = 0; i < kLengthWordSize; ++i) {
    const size_t index = order == ByteOrder::kBig ? i : kLengthWordSize - 1 - i;
    value = value << 8 | static_cast<unsigned char>(input[index]);
  }
  return value;
}

ByteOrder Other(ByteOrder order) {
  return order == ByteOrder::kBig ? ByteOrder::kLittle : ByteOrder::kBig;
}

// A capture taken on a host of the other byte order fails the checks; say so
// when the length word read the other way round fits the bytes present.
std::string OtherOrderHint(std::string_view input, ByteOrder order) {
  const ByteOrder other = Other(order);
  if (ReadLengthWord(input, other) != input.size() - kLengthWordSize) {
    return "";
  }
  return std::string("; read as ") + OrderName(other) + " it matches: try --" + OrderName(other);
}

}  // namespace

ByteOrder HostOrder() {
  const uint32_t one = 1;
  unsigned char first = 0;
  std::memcpy(&first, &one, 1);
  return first == 1 ? ByteOrder::kLittle : ByteOrder::kBig;
}

const char* OrderName(ByteOrder order) {
  return order == ByteOrder::kBig ? "big-endian" : "little-endian";
}

FrameCheck CheckFrame(std::string_view input, ByteOrder order) {
  FrameCheck check;
  if (input.size() < kLengthWordSize) {
    check.error =
        "frame too short for its 4-byte length word: " + std::to_string(input.size()) + " byte(s)";
    return check;
  }
  check.length = ReadLengthWord(input, order);
  const size_t present = input.size() - kLengthWordSize;
  const std::string word =
      "length word " + std::to_string(check.length) + " (" + OrderName(order) + ")";
  if (check.length > kMaxFrameBody) {
    check.error = word + " exceeds the limit of " + std::to_string(kMaxFrameBody) +
                  " message bytes" + OtherOrderHint(input, order);
  } else if (check.length != present) {
    check.error = word + " disagrees with the " + std::to_string(present) +
                  " message byte(s) present" + OtherOrderHint(input, order);
  } else {
    check.body = input.substr(kLengthWordSize);
  }
  return check;
}

}  // namespace mgmtmsgdump
