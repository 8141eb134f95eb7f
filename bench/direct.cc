// The workloads written with the generated message classes, as a careful C++
// user would: mutable_/add_ accessors, strings assigned into the fields' own
// storage, the size computed once and the encoder run on the cached sizes
// into a buffer that is reused when it is large enough.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "gnmi/gnmi.pb.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "workloads.h"

namespace {

// An output buffer that grows to the exact size asked for and never shrinks.
class Buffer {
 public:
  // Encodes `message` into the buffer and hands the bytes to `sink`.
  size_t Encode(const google::protobuf::MessageLite& message, BenchSink* sink) {
    const size_t size = message.ByteSizeLong();
    if (capacity_ < size) {
      bytes_.reset(new uint8_t[size]);
      capacity_ = size;
    }
    message.SerializeWithCachedSizesToArray(bytes_.get());
    BenchHand(sink, bytes_.get(), size);
    return size;
  }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  size_t capacity_ = 0;
};

// An Arena and a buffer kept from reply to reply, as a server keeps them per
// connection or worker.
struct DirectReplies {
  google::protobuf::Arena arena;
  Buffer buffer;
};

// interfaces / interface[name=ethN] / counters
void BuildCounterPath(gnmi::Path* path, int n) {
  const BenchText name = BenchEthName(n);
  path->add_elem()->set_name("interfaces");
  gnmi::PathElem* elem = path->add_elem();
  elem->set_name("interface");
  (*elem->mutable_key())["name"].assign(name.data, name.len);
  path->add_elem()->set_name("counters");
}

// The update of ours.c: the JSON text for even n, a counter for odd n.
void AppendCounterUpdate(gnmi::Notification* notification, int n, uint64_t counter) {
  gnmi::Update* update = notification->add_update();
  BuildCounterPath(update->mutable_path(), n);
  if (n % 2 == 0) {
    update->mutable_val()->mutable_json_ietf_val()->assign(kBenchJsonValue.data,
                                                           kBenchJsonValue.len);
  } else {
    update->mutable_val()->set_uint_val(counter);
  }
}

// W1's response, into an empty GetResponse.
void BuildGetResponse(gnmi::GetResponse* response) {
  gnmi::Notification* notification = response->add_notification();
  notification->set_timestamp(BenchTimestamp(0));
  gnmi::Path* prefix = notification->mutable_prefix();
  prefix->set_origin("openconfig");
  prefix->add_elem()->set_name("device");
  for (int n = 0; n < kGetUpdates; n++) {
    AppendCounterUpdate(notification, n, BenchCounterValue(n));
  }
}

// Message m of W3, into an empty notification.
void BuildStreamMessage(gnmi::Notification* notification, int m) {
  notification->set_timestamp(BenchTimestamp(m));
  for (int n = 0; n < kStreamUpdates; n++) {
    AppendCounterUpdate(notification, n, BenchCounterValue(m + n));
  }
}

size_t ReadText(const std::string& text, BenchSink* sink) {
  BenchHand(sink, text.data(), text.size());
  return static_cast<unsigned char>(text[0]);
}

}  // namespace

// The buffer is declared before the message so that, as in our context, the
// message is freed before the buffer: glibc merges its small free chunks when
// a large one is freed, and the order changes that work.
size_t DirectW1(BenchSink* sink) {
  Buffer buffer;
  gnmi::GetResponse response;
  BuildGetResponse(&response);
  return buffer.Encode(response, sink);
}

void* DirectRepliesNew(void) { return new DirectReplies; }
void DirectRepliesFree(void* replies) { delete static_cast<DirectReplies*>(replies); }

size_t DirectW1Arena(void* replies, BenchSink* sink) {
  auto* kept = static_cast<DirectReplies*>(replies);
  kept->arena.Reset();
  auto* response = google::protobuf::Arena::CreateMessage<gnmi::GetResponse>(&kept->arena);
  BuildGetResponse(response);
  return kept->buffer.Encode(*response, sink);
}

BenchText DirectW2Request(void) {
  static const std::string encoded = [] {
    gnmi::SetRequest request;
    for (int n = 0; n < kSetUpdates; n++) {
      gnmi::Update* update = request.add_update();
      BuildCounterPath(update->mutable_path(), n);
      update->mutable_val()->mutable_json_val()->assign(kBenchJsonValue.data, kBenchJsonValue.len);
    }
    return request.SerializeAsString();
  }();
  return BenchText{encoded.data(), static_cast<uint32_t>(encoded.size())};
}

size_t DirectW2(BenchText request, BenchSink* sink) {
  gnmi::SetRequest parsed;
  size_t digest = 0;
  if (parsed.ParseFromArray(request.data, static_cast<int>(request.len))) {
    for (const gnmi::Update& update : parsed.update()) {
      for (const gnmi::PathElem& elem : update.path().elem()) {
        digest += ReadText(elem.name(), sink);
        for (const auto& [key, value] : elem.key()) {
          digest += ReadText(key, sink) + ReadText(value, sink);
        }
      }
      digest += ReadText(update.val().json_val(), sink);
    }
  }
  return digest;
}

size_t DirectW3(BenchSink* sink) {
  Buffer buffer;  // freed after the message, as in DirectW1
  gnmi::SubscribeResponse response;
  size_t produced = 0;
  for (int m = 0; m < kStreamMessages; m++) {
    gnmi::Notification* notification = response.mutable_update();
    notification->Clear();
    BuildStreamMessage(notification, m);
    produced += buffer.Encode(response, sink);
  }
  return produced;
}

size_t DirectW3Arena(BenchSink* sink) {
  DirectReplies replies;
  size_t produced = 0;
  for (int m = 0; m < kStreamMessages; m++) {
    replies.arena.Reset();
    auto* response =
        google::protobuf::Arena::CreateMessage<gnmi::SubscribeResponse>(&replies.arena);
    BuildStreamMessage(response->mutable_update(), m);
    produced += replies.buffer.Encode(*response, sink);
  }
  return produced;
}

size_t DirectW4Copy(void* to, const void* from, size_t frameBytes) {
  std::memcpy(to, from, frameBytes);
  return frameBytes;
}

size_t DirectW4Frame(uint32_t payloadBytes, BenchSink* sink) {
  quorix_grpc_ipc::SouthMsg msg;
  msg.set_connect_id(12);
  msg.set_rpc_id(3);
  msg.set_trans_num(41);
  msg.set_req_type(quorix_grpc_ipc::REQTYPE_REQUEST);
  msg.set_msg_type(quorix_grpc_ipc::MSGTYPE_RPC_DATA);
  msg.mutable_rpc_data()->mutable_data()->assign(BenchPayload(), payloadBytes);
  msg.mutable_rpc_data()->set_is_over(true);
  const uint32_t size = static_cast<uint32_t>(msg.ByteSizeLong());
  std::vector<uint8_t> frame(sizeof size + size);
  std::memcpy(frame.data(), &size, sizeof size);
  msg.SerializeWithCachedSizesToArray(frame.data() + sizeof size);
  BenchHand(sink, frame.data(), frame.size());
  return frame.size();
}

void* DirectW5Build(void) {
  auto* reply = new quorix_dialin::SubsReply;
  reply->set_subscription_id(7);
  reply->set_request_id(1001);
  reply->set_response_code("ok");
  reply->mutable_message()->assign(BenchPayload(), kReplyBytes);
  return reply;
}

void DirectW5Free(void* reply) { delete static_cast<quorix_dialin::SubsReply*>(reply); }

size_t DirectW5(void* reply, int runs, BenchSink* sink) {
  const auto& message = *static_cast<const quorix_dialin::SubsReply*>(reply);
  size_t produced = 0;
  for (int run = 0; run < runs; run++) {
    const size_t size = message.ByteSizeLong();
    auto* block = static_cast<uint8_t*>(std::malloc(size + 1));
    if (block == nullptr) {
      return 0;
    }
    message.SerializeWithCachedSizesToArray(block);
    BenchHand(sink, block, size);
    std::free(block);
    produced += size;
  }
  return produced;
}
