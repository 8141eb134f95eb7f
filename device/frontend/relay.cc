#include "relay.h"

#include <chrono>
#include <cstdio>
#include <deque>
#include <optional>

#include "byte_buffer.h"

namespace frontend {
namespace {

constexpr std::chrono::milliseconds kClockSlack(100);

const char* const kMethods[] = {
    "/gnmi.gNMI/Capabilities",
    "/gnmi.gNMI/Get",
    "/gnmi.gNMI/Set",
    "/gnmi.gNMI/Subscribe",
    "/quorix_dialin.gRPCConfigOper/Subscribe",
    "/quorix_dialin.gRPCConfigOper/Cancel",
};

bool Served(const std::string& method) {
  for (const char* served : kMethods) {
    if (method == served) {
      return true;
    }
  }
  return false;
}

std::string Metadata(const grpc::ServerContextBase& ctx, const char* key) {
  auto it = ctx.client_metadata().find(key);
  return it == ctx.client_metadata().end() ? std::string()
                                           : std::string(it->second.data(), it->second.size());
}

// "ipv4:127.0.0.1:5000" or "ipv6:[::1]:5000" into address and port.
void SplitPeer(const std::string& peer, std::string* address, uint32_t* port) {
  size_t start = peer.find(':') + 1;
  size_t colon = peer.rfind(':');
  *address = peer.substr(start, colon > start ? colon - start : std::string::npos);
  *port = colon > start ? static_cast<uint32_t>(std::strtoul(peer.c_str() + colon + 1, nullptr, 10))
                        : 0;
  if (address->size() > 1 && address->front() == '[') {
    *address = address->substr(1, address->size() - 2);
  }
}

uint32_t MillisecondsLeft(std::chrono::system_clock::time_point deadline) {
  if (deadline == std::chrono::system_clock::time_point::max()) {
    return 0;
  }
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                  deadline - std::chrono::system_clock::now())
                  .count();
  return left < 1 ? 1 : left > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(left);
}

}  // namespace

class Relay : public grpc::ServerGenericBidiReactor {
 public:
  Relay(grpc::GenericCallbackServerContext* ctx, CallTable* table) : ctx_(ctx), table_(table) {}

  // Registers the call and starts reading, or ends it at once.
  void Begin(std::shared_ptr<Relay> self) {
    self_ = self;
    if (!Served(ctx_->method())) {
      Finish(grpc::Status(grpc::StatusCode::UNIMPLEMENTED, "method not served"));
      return;
    }
    if (!table_->south()->Connected()) {
      Finish(grpc::Status(grpc::StatusCode::UNAVAILABLE, "service module not connected"));
      return;
    }
    std::lock_guard<std::mutex> lock(mu_);
    auto ids = table_->Add(ctx_->peer(), std::move(self));
    id_ = {ids.first, ids.second, 0};
    registered_ = true;
    StartRead(&request_);
  }

  // A reply of the service module. The last one (is_over), when nothing is
  // waiting before it, is kept to be written together with the end.
  void Deliver(const std::string& data, bool is_over) {
    std::lock_guard<std::mutex> lock(mu_);
    if (finished_) {
      return;
    }
    if (is_over && queue_.empty() && !writing_ && !last_) {
      last_ = data;
      return;
    }
    if (queue_.size() >= table_->settings().max_queued ||
        queued_bytes_ + data.size() > table_->settings().max_queued_bytes) {
      EndLocked(grpc::Status(grpc::StatusCode::RESOURCE_EXHAUSTED, "client is not reading"),
                kResourceExhausted);
      return;
    }
    queue_.push_back(data);
    queued_bytes_ += data.size();
    WriteNextLocked();
  }

  // The end of the call: by the service module once its queued replies are
  // written, or at once (no_wait) when it is gone.
  void End(const grpc::Status& status, bool no_wait) {
    std::lock_guard<std::mutex> lock(mu_);
    if (finished_) {
      return;
    }
    if (last_ && !no_wait) {
      FinishWithLastLocked(status);
    } else if (no_wait || (queue_.empty() && !writing_)) {
      EndLocked(status, 0);
    } else {
      pending_end_ = status;
    }
  }

  void OnReadDone(bool ok) override {
    std::lock_guard<std::mutex> lock(mu_);
    if (finished_) {
      return;
    }
    std::string data = ok ? Bytes(request_) : std::string();
    bool sent = true;
    if (!opened_) {
      sent = SendLocked(OpenFrame(NextId(), OpenOf(data)));
      opened_ = true;
    } else if (ok) {
      sent = SendLocked(DataFrame(NextId(), data, false));
    }
    if (sent && !ok) {
      sent = SendLocked(DataFrame(NextId(), std::string(), true));
    }
    if (!sent) {
      EndLocked(grpc::Status(grpc::StatusCode::UNAVAILABLE, "service module not connected"), 0);
    } else if (ok) {
      StartRead(&request_);
    }
  }

  void OnWriteDone(bool ok) override {
    std::lock_guard<std::mutex> lock(mu_);
    writing_ = false;
    if (finished_ || !ok) {
      return;  // a client gone is ended by OnCancel
    }
    if (!queue_.empty()) {
      WriteNextLocked();
    } else if (pending_end_) {
      EndLocked(*pending_end_, 0);
    }
  }

  void OnCancel() override {
    std::lock_guard<std::mutex> lock(mu_);
    if (finished_) {
      return;
    }
    // The call's timer and the system clock differ by some milliseconds.
    bool late = ctx_->deadline() <= std::chrono::system_clock::now() + kClockSlack;
    EndLocked(grpc::Status(grpc::StatusCode::CANCELLED, late ? "deadline exceeded" : "cancelled"),
              late ? kDeadlineExceeded : kCancelled);
  }

  void OnDone() override {
    std::shared_ptr<Relay> keep = std::move(self_);  // frees the call on return
  }

 private:
  CallId NextId() { return {id_.connect_id, id_.rpc_id, ++id_.trans_num}; }

  CallOpen OpenOf(const std::string& first_request) const {
    CallOpen open;
    open.method = ctx_->method();
    open.user = Metadata(*ctx_, "username");
    open.password = Metadata(*ctx_, "password");
    SplitPeer(ctx_->peer(), &open.peer_address, &open.peer_port);
    open.my_address = table_->settings().my_address;
    open.my_port = table_->settings().my_port;
    open.deadline_ms = MillisecondsLeft(ctx_->deadline());
    open.first_request = first_request;
    return open;
  }

  bool SendLocked(const std::string& frame) { return table_->south()->Send(frame); }

  void WriteNextLocked() {
    if (writing_ || queue_.empty()) {
      return;
    }
    grpc::Slice slice(queue_.front());
    queued_bytes_ -= queue_.front().size();
    queue_.pop_front();
    reply_ = grpc::ByteBuffer(&slice, 1);
    writing_ = true;
    StartWrite(&reply_);
  }

  // Writes the kept last reply and ends the call in one operation.
  void FinishWithLastLocked(const grpc::Status& status) {
    finished_ = true;
    if (registered_) {
      table_->Remove(ctx_->peer(), id_.rpc_id);
    }
    grpc::Slice slice(*last_);
    last_.reset();
    reply_ = grpc::ByteBuffer(&slice, 1);
    StartWriteAndFinish(&reply_, grpc::WriteOptions(), status);
  }

  // Ends the call with the status; cancel_code != 0 tells the service module
  // why, when it knows the call.
  void EndLocked(const grpc::Status& status, uint32_t cancel_code) {
    finished_ = true;
    queue_.clear();
    last_.reset();
    queued_bytes_ = 0;
    if (cancel_code != 0 && opened_) {
      SendLocked(CancelFrame(NextId(), cancel_code, status.error_message()));
    }
    if (registered_) {
      table_->Remove(ctx_->peer(), id_.rpc_id);
    }
    Finish(status);
  }

  grpc::GenericCallbackServerContext* ctx_;
  CallTable* table_;
  std::shared_ptr<Relay> self_;
  std::mutex mu_;
  CallId id_{0, 0, 0};
  bool registered_ = false;
  bool opened_ = false;
  bool writing_ = false;
  bool finished_ = false;
  grpc::ByteBuffer request_;
  grpc::ByteBuffer reply_;
  std::deque<std::string> queue_;
  size_t queued_bytes_ = 0;
  std::optional<grpc::Status> pending_end_;
  std::optional<std::string> last_;
};

grpc::ServerGenericBidiReactor* CallTable::Create(grpc::GenericCallbackServerContext* ctx) {
  auto relay = std::make_shared<Relay>(ctx, this);
  relay->Begin(relay);
  return relay.get();
}

std::pair<uint32_t, uint32_t> CallTable::Add(const std::string& peer,
                                             std::shared_ptr<Relay> relay) {
  std::lock_guard<std::mutex> lock(mu_);
  auto& known = peers_[peer];
  if (known.second++ == 0) {
    known.first = ++last_connect_id_;
  }
  calls_[++last_rpc_id_] = std::move(relay);
  return {known.first, last_rpc_id_};
}

void CallTable::Remove(const std::string& peer, uint32_t rpc_id) {
  std::lock_guard<std::mutex> lock(mu_);
  calls_.erase(rpc_id);
  auto it = peers_.find(peer);
  if (it != peers_.end() && --it->second.second == 0) {
    peers_.erase(it);
  }
}

std::shared_ptr<Relay> CallTable::Find(uint32_t rpc_id) {
  std::lock_guard<std::mutex> lock(mu_);
  auto it = calls_.find(rpc_id);
  return it == calls_.end() ? nullptr : it->second;
}

size_t CallTable::Live() {
  std::lock_guard<std::mutex> lock(mu_);
  return calls_.size();
}

void CallTable::OnEvent(const SouthEvent& event) {
  std::shared_ptr<Relay> relay = Find(event.rpc_id);
  if (relay && event.kind == SouthEvent::kReply) {
    relay->Deliver(event.data, event.is_over);
  } else if (relay && event.kind == SouthEvent::kEnd) {
    // A code outside gRPC's is passed on as UNKNOWN.
    auto code = event.result <= grpc::StatusCode::UNAUTHENTICATED
                    ? static_cast<grpc::StatusCode>(event.result)
                    : grpc::StatusCode::UNKNOWN;
    relay->End(grpc::Status(code, event.description), false);
  } else if (event.kind == SouthEvent::kUnknown) {
    std::fprintf(stderr, "south: message of no known kind for call %u dropped\n", event.rpc_id);
  }
}

void CallTable::EndAll(const grpc::Status& status) {
  std::vector<std::shared_ptr<Relay>> open;
  {
    std::lock_guard<std::mutex> lock(mu_);
    for (auto& call : calls_) {
      open.push_back(call.second);
    }
  }
  for (auto& relay : open) {
    relay->End(status, true);
  }
}

}  // namespace frontend
