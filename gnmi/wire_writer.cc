// The notification writer: the wire form of gnmi.Notification inside the
// first field of SubscribeResponse (update) or GetResponse (notification).
#include "gnmi/wire_writer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace mgmtmsg {
namespace {

// Tags: field number and wire type, all one byte (fields below 16).
constexpr uint8_t Tag(uint32_t field, uint32_t wireType) {
  return static_cast<uint8_t>(field << 3 | wireType);
}
constexpr uint32_t kVarint = 0;
constexpr uint32_t kLengthDelimited = 2;
constexpr uint32_t kFixed32 = 5;
constexpr uint8_t kNotificationTag = Tag(1, kLengthDelimited);  // update / notification
constexpr uint8_t kTimestampTag = Tag(1, kVarint);
constexpr uint32_t kPrefixField = 2;
constexpr uint8_t kUpdateTag = Tag(4, kLengthDelimited);
constexpr uint32_t kDeleteField = 5;
constexpr uint32_t kPathField = 1;                     // of Update
constexpr uint8_t kValTag = Tag(3, kLengthDelimited);  // of Update
constexpr uint32_t kMinCapacity = 256;

uint64_t VarintSize(uint64_t value) {
  uint64_t size = 1;
  for (; value >= 0x80; value >>= 7) ++size;
  return size;
}

// A length-delimited field of `len` bytes: tag, length, bytes.
uint64_t FieldSize(uint64_t len) { return 1 + VarintSize(len) + len; }

char* EncodeVarint(char* to, uint64_t value) {
  for (; value >= 0x80; value >>= 7) *to++ = static_cast<char>((value & 0x7f) | 0x80);
  *to++ = static_cast<char>(value);
  return to;
}

uint64_t ValueSize(const WireValue& value) {
  switch (value.kind) {
    case WireValue::Kind::kVarint:
      return VarintSize(value.number);
    case WireValue::Kind::kFixed32:
      return 4;
    case WireValue::Kind::kBytes:
      break;
  }
  return VarintSize(value.len) + value.len;
}

}  // namespace

uint64_t WireWriter::SizeWith(uint64_t extra) const {
  if (!open_) return end_ - start_;
  const uint64_t body = end_ - gapAt_ - kHeaderGap + extra;
  return gapAt_ - start_ + 1 + VarintSize(body) + body;
}

bool WireWriter::Reserve(uint64_t needed) {
  if (needed <= static_cast<uint64_t>(capacity_)) return true;
  // Doubling, but never far beyond what the largest message needs.
  const uint64_t ceiling = kMaxMessageBytes + uint64_t{4} * kHeaderGap;
  const uint64_t grown = std::min<uint64_t>(2 * static_cast<uint64_t>(capacity_), ceiling);
  const uint64_t capacity = std::max<uint64_t>({needed, grown, kMinCapacity});
  char* bytes = new (std::nothrow) char[capacity];
  if (bytes == nullptr) return false;
  if (end_ != 0) std::memcpy(bytes, bytes_, end_);
  delete[] bytes_;
  bytes_ = bytes;
  capacity_ = static_cast<int>(capacity);
  return true;
}

bool WireWriter::Grow(uint64_t bytes) {
  return SizeWith(bytes) <= kMaxMessageBytes && Reserve(end_ + bytes);
}

bool WireWriter::Begin(int64_t timestamp, const WirePath* prefix) {
  const auto stamp = static_cast<uint64_t>(timestamp);
  const uint64_t body =
      (stamp != 0 ? 1 + VarintSize(stamp) : 0) + (prefix != nullptr ? FieldSize(prefix->size) : 0);
  const uint64_t before = oneNotification_ ? 0 : SizeWith(0);
  const uint32_t at = oneNotification_ ? 0 : end_;
  if (before + FieldSize(body) > kMaxMessageBytes || !Reserve(at + kHeaderGap + body)) {
    return false;
  }
  if (oneNotification_) {
    start_ = end_ = 0;  // a new message, the unfinished one dropped
    open_ = false;
  }
  if (open_) Close();
  gapAt_ = end_;
  end_ += kHeaderGap;
  open_ = true;
  deleting_ = false;
  if (stamp != 0) {
    Put(kTimestampTag);
    PutVarint(stamp);
  }
  if (prefix != nullptr) PutBytes(kPrefixField, prefix->Bytes(), prefix->size);
  return true;
}

bool WireWriter::AddUpdate(const WirePath& path, const WireValue& value) {
  const uint64_t valueBody = 1 + ValueSize(value);
  const uint64_t updateBody = FieldSize(path.size) + FieldSize(valueBody);
  if (!open_ || deleting_ || !Grow(FieldSize(updateBody))) return false;
  Put(kUpdateTag);
  PutVarint(updateBody);
  PutBytes(kPathField, path.Bytes(), path.size);
  Put(kValTag);
  PutVarint(valueBody);
  switch (value.kind) {
    case WireValue::Kind::kVarint:
      Put(Tag(value.field, kVarint));
      PutVarint(value.number);
      break;
    case WireValue::Kind::kFixed32:  // little-endian, whatever the host's order
      Put(Tag(value.field, kFixed32));
      for (int shift = 0; shift < 32; shift += 8) Put(static_cast<uint8_t>(value.number >> shift));
      break;
    case WireValue::Kind::kBytes:
      PutBytes(value.field, value.data, value.len);
      break;
  }
  return true;
}

bool WireWriter::AddDelete(const WirePath& path) {
  if (!open_ || !Grow(FieldSize(path.size))) return false;
  PutBytes(kDeleteField, path.Bytes(), path.size);
  deleting_ = true;
  return true;
}

void WireWriter::Close() {
  const uint32_t body = end_ - gapAt_ - kHeaderGap;
  const auto header = static_cast<uint32_t>(1 + VarintSize(body));
  char* at = bytes_ + gapAt_ + kHeaderGap - header;
  *at = static_cast<char>(kNotificationTag);
  EncodeVarint(at + 1, body);
  const uint32_t slack = kHeaderGap - header;
  if (slack != 0 && gapAt_ != start_) {
    std::memmove(bytes_ + start_ + slack, bytes_ + start_, gapAt_ - start_);
  }
  start_ += slack;
  open_ = false;
}

void WireWriter::Finish(char** buffer, int* capacity, void** out, int* outLen) {
  if (open_) Close();
  *out = bytes_ != nullptr ? bytes_ + start_ : nullptr;
  *outLen = static_cast<int>(end_ - start_);
  std::swap(bytes_, *buffer);
  std::swap(capacity_, *capacity);
  start_ = gapAt_ = end_ = 0;
  deleting_ = false;
}

void WireWriter::PutVarint(uint64_t value) {
  end_ = static_cast<uint32_t>(EncodeVarint(bytes_ + end_, value) - bytes_);
}

void WireWriter::PutBytes(uint32_t field, const char* data, uint32_t len) {
  Put(Tag(field, kLengthDelimited));
  PutVarint(len);
  if (len != 0) std::memcpy(bytes_ + end_, data, len);
  end_ += len;
}

}  // namespace mgmtmsg
