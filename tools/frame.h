// The south IPC frame: a 4-byte length word N, then N bytes of an encoded
// quorix_grpc_ipc.SouthMsg. The length word is in the sender's host order,
// which is big-endian on the device.
#ifndef MGMTMSG_TOOLS_FRAME_H
#define MGMTMSG_TOOLS_FRAME_H

#include <cstdint>
#include <string>
#include <string_view>

namespace mgmtmsgdump {

inline constexpr uint32_t kMaxFrameBody = 52428800;  // 50 MiB
inline constexpr const char* kFrameMessageType = "quorix_grpc_ipc.SouthMsg";

enum class ByteOrder { kBig, kLittle };

ByteOrder HostOrder();
const char* OrderName(ByteOrder order);

// What CheckFrame found. When `error` is empty, `body` holds the N message
// bytes; otherwise `error` says what is wrong with the frame.
struct FrameCheck {
  uint32_t length = 0;
  std::string_view body;
  std::string error;
};

// Checks that `input` is exactly one frame whose length word, read in
// `order`, is within the limit.
FrameCheck CheckFrame(std::string_view input, ByteOrder order);

}  // namespace mgmtmsgdump

#endif
