// The south channel's messages as the front end sends and reads them. Frames
// are built and read with the library's GRPCI_ entry points; a frame is the
// 4-byte length word in host order followed by the SouthMsg bytes.
#ifndef MGMTMSG_DEVICE_SOUTH_FRAMES_H
#define MGMTMSG_DEVICE_SOUTH_FRAMES_H

#include <cstdint>
#include <string>

namespace frontend {

// The longest SouthMsg a frame may carry.
constexpr uint32_t kMaxSouthMessage = 52428800;

// Status codes the front end itself puts on the channel or on a call.
enum Code : uint32_t {
  kOk = 0,
  kCancelled = 1,
  kDeadlineExceeded = 4,
  kAlreadyExists = 6,
  kResourceExhausted = 8,
  kUnavailable = 14,
};

// Identity of one message of a call: the client connection, the call, and
// the sender's count of the call's messages.
struct CallId {
  uint32_t connect_id;
  uint32_t rpc_id;
  uint32_t trans_num;
};

// A call as the front end opens it on the channel.
struct CallOpen {
  std::string method;
  std::string user;
  std::string password;
  std::string peer_address;
  uint32_t peer_port;
  std::string my_address;
  uint32_t my_port;
  uint32_t deadline_ms;  // left when the call arrived; 0 = none
  std::string first_request;
};

// Each builder returns the whole frame, or "" when it cannot be built.
std::string OpenFrame(const CallId& id, const CallOpen& open);
std::string DataFrame(const CallId& id, const std::string& data, bool is_over);
std::string CancelFrame(const CallId& id, uint32_t code, const std::string& why);

// What the front end tells the service module of a client call (dial-out),
// each a response on the call: the connection attempt's status (kOpened), a
// message of the module written to the collector (kWritten, trans_num the
// message's), a message of the collector (kReceived, text its bytes), the
// call lost (kLost, code and text why).
enum class ClientNotice { kOpened, kWritten, kReceived, kLost };
std::string ClientFrame(const CallId& id, ClientNotice notice, uint32_t code,
                        const std::string& text);

// A client call the service module asks for.
struct ClientOpen {
  std::string method;
  std::string peer_address;
  uint32_t peer_port = 0;
  bool no_tls = false;
};

// A message from the service module, as far as routing it needs. Replies to
// and ends of server calls; the open, messages and close of client calls.
struct SouthEvent {
  enum Kind { kReply, kEnd, kClientOpen, kClientData, kClientClose, kUnknown } kind = kUnknown;
  uint32_t connect_id = 0;
  uint32_t rpc_id = 0;
  uint32_t trans_num = 0;
  std::string data;  // kReply, kClientData: the message bytes
  bool is_over = false;
  uint32_t result = 0;  // kEnd: the call's status code and message
  std::string description;
  ClientOpen open;  // kClientOpen
};

// Whether the event belongs to a client call.
inline bool ForClientCall(const SouthEvent& event) {
  return event.kind == SouthEvent::kClientOpen || event.kind == SouthEvent::kClientData ||
         event.kind == SouthEvent::kClientClose;
}

// Reads a SouthMsg (the bytes after the length word). false: no valid
// encoding.
bool ReadEvent(const std::string& message, SouthEvent* event);

}  // namespace frontend

#endif
