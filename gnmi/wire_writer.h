// The notification writer behind gnmi/gnmi_wire.h: encodes SubscribeResponse
// and GetResponse messages straight into bytes, laid out exactly as the
// message runtime's serializer lays out the same content.
//
// Lengths. Every update, value and path is complete when it is added, so its
// length is known and written before its body. Only a notification's length
// is open while updates are added to it: its tag and length go into a gap of
// kHeaderGap bytes (the tag and the longest length varint of a message within
// the size limit) reserved in front of its body. When the notification
// closes, its header is written at the end of the gap, against the body, so
// the body never moves; what is left of the gap (0 to 3 bytes) is closed by
// moving the notifications before it (for a Get response of several
// notifications) forward. A message's bytes then start inside its buffer,
// at the end of the first gap's unused part.
#ifndef MGMTMSG_GNMI_WIRE_WRITER_H
#define MGMTMSG_GNMI_WIRE_WRITER_H

#include <cstddef>
#include <cstdint>

namespace mgmtmsg {

// A path encoded once (the body of a gnmi.Path message); `size` bytes follow
// the header in the same block.
struct WirePath {
  uint32_t size;
  const char* Bytes() const { return reinterpret_cast<const char*>(this + 1); }
};

// A TypedValue: one member of its oneof, a varint, a 32-bit word or bytes.
struct WireValue {
  enum class Kind { kVarint, kFixed32, kBytes };
  uint32_t field;
  Kind kind;
  uint64_t number;   // kVarint and kFixed32
  const char* data;  // kBytes
  uint32_t len;      // kBytes
};

class WireWriter {
 public:
  // The largest message the writer builds, in bytes.
  static constexpr uint64_t kMaxMessageBytes = 52428800;

  // A Subscribe response holds one notification, a Get response any number.
  explicit WireWriter(bool oneNotification) : oneNotification_(oneNotification) {}
  WireWriter(const WireWriter&) = delete;
  WireWriter& operator=(const WireWriter&) = delete;
  ~WireWriter() { delete[] bytes_; }

  // Each returns false, with the message as it was, when memory runs out or
  // the message would pass kMaxMessageBytes, and for the calls out of order
  // (an update or delete with no notification begun, an update after a
  // delete of the same notification).
  bool Begin(int64_t timestamp, const WirePath* prefix);
  bool AddUpdate(const WirePath& path, const WireValue& value);
  bool AddDelete(const WirePath& path);

  // Closes the message and swaps its buffer with the one given (the
  // context's output buffer), which the writer keeps for the next message.
  // `*out` and `*outLen` receive the message's bytes in their new home.
  void Finish(char** buffer, int* capacity, void** out, int* outLen);

 private:
  static constexpr uint32_t kHeaderGap = 5;

  // The message's size were the open notification's body longer by `extra`.
  uint64_t SizeWith(uint64_t extra) const;
  // Makes the buffer hold at least `needed` bytes, keeping those written;
  // false when memory runs out.
  bool Reserve(uint64_t needed);
  // Checks the limit and makes room for `bytes` more in the open
  // notification; false when either fails.
  bool Grow(uint64_t bytes);
  void Close();
  void Put(uint8_t byte) { bytes_[end_++] = static_cast<char>(byte); }
  void PutVarint(uint64_t value);
  void PutBytes(uint32_t field, const char* data, uint32_t len);

  const bool oneNotification_;
  char* bytes_ = nullptr;
  int capacity_ = 0;
  uint32_t start_ = 0;     // the first byte of the message
  uint32_t gapAt_ = 0;     // the open notification's header gap
  uint32_t end_ = 0;       // the byte after the last
  bool open_ = false;      // a notification is being written
  bool deleting_ = false;  // the open notification has a delete
};

}  // namespace mgmtmsg

#endif
