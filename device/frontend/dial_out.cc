#include "dial_out.h"

#include <grpcpp/generic/generic_stub.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <deque>
#include <optional>
#include <utility>

#include "byte_buffer.h"

namespace frontend {
namespace {

using Clock = std::chrono::system_clock;

// How long one wait on a connection's state lasts: a close or a stop is
// noticed within it.
constexpr std::chrono::milliseconds kWatchStep(250);

std::string Target(const ClientOpen& open) {
  bool v6 = open.peer_address.find(':') != std::string::npos;
  return (v6 ? "[" + open.peer_address + "]" : open.peer_address) + ":" +
         std::to_string(open.peer_port);
}

std::shared_ptr<grpc::Channel> ChannelTo(const ClientOpen& open, const DialOutSettings& settings) {
  grpc::ChannelArguments args;
  // A channel of its own per call, so that no earlier failure's backoff
  // delays this attempt.
  args.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
  args.SetMaxSendMessageSize(static_cast<int>(kMaxSouthMessage));
  args.SetMaxReceiveMessageSize(static_cast<int>(kMaxSouthMessage / 2));
  grpc::SslCredentialsOptions tls;
  tls.pem_root_certs = settings.ca_pem;
  return grpc::CreateCustomChannel(
      Target(open), open.no_tls ? grpc::InsecureChannelCredentials() : grpc::SslCredentials(tls),
      args);
}

}  // namespace

class ClientCall : public grpc::ClientBidiReactor<grpc::ByteBuffer, grpc::ByteBuffer>,
                   public std::enable_shared_from_this<ClientCall> {
 public:
  ClientCall(DialOut* owner, const SouthEvent& open)
      : owner_(owner),
        id_{open.connect_id, open.rpc_id, 0},
        method_(open.open.method),
        target_(Target(open.open)),
        channel_(ChannelTo(open.open, owner->settings())),
        deadline_(Clock::now() + std::chrono::milliseconds(owner->settings().connect_timeout_ms)) {}

  // One step of the connection attempt (on the connector's thread): the call
  // starts once the channel is ready; a failure or the time running out
  // ends it; else the next state change is waited for.
  void Watch(grpc::CompletionQueue* connections) {
    std::unique_lock<std::mutex> lock(mu_);
    if (state_ != kConnecting) {
      return;
    }
    grpc_connectivity_state state = channel_->GetState(true);
    if (state == GRPC_CHANNEL_READY) {
      StartLocked();
      Notify(ClientNotice::kOpened, kOk, "");
    } else if (state == GRPC_CHANNEL_TRANSIENT_FAILURE || state == GRPC_CHANNEL_SHUTDOWN ||
               Clock::now() >= deadline_) {
      state_ = kEnded;
      Notify(ClientNotice::kOpened, kUnavailable, "collector " + target_ + " not reachable");
      lock.unlock();
      owner_->Remove(id_.rpc_id, this);
    } else {
      channel_->NotifyOnStateChange(state, std::min(deadline_, Clock::now() + kWatchStep),
                                    connections,
                                    new std::shared_ptr<ClientCall>(shared_from_this()));
    }
  }

  // A message of the service module, with its trans_num.
  void Write(uint32_t trans_num, const std::string& data) {
    std::lock_guard<std::mutex> lock(mu_);
    if (state_ != kStarted || !held_) {
      return;  // lost: the service module has been told or will be
    }
    if (queue_.size() >= owner_->settings().max_queued) {
      lost_ = grpc::Status(grpc::StatusCode::RESOURCE_EXHAUSTED, "collector is not reading");
      context_.TryCancel();
      return;
    }
    queue_.emplace_back(trans_num, data);
    WriteNextLocked();
  }

  // Ends the call without a word to the service module: it closed the call
  // or is gone.
  void Close() {
    std::lock_guard<std::mutex> lock(mu_);
    silent_ = true;
    if (state_ == kStarted) {
      context_.TryCancel();
    }
    if (state_ == kConnecting) {
      state_ = kEnded;
    }
  }

  void OnWriteDone(bool ok) override {
    std::lock_guard<std::mutex> lock(mu_);
    writing_ = false;
    if (ok) {
      Notify(ClientNotice::kWritten, kOk, "", written_);
      WriteNextLocked();
    }
  }

  void OnReadDone(bool ok) override {
    std::lock_guard<std::mutex> lock(mu_);
    if (ok) {
      Notify(ClientNotice::kReceived, kOk, Bytes(in_));
      StartRead(&in_);
    } else if (held_) {
      held_ = false;  // the call is over: no more writes
      RemoveHold();
    }
  }

  void OnDone(const grpc::Status& status) override {
    DialOut* owner = owner_;
    {
      std::shared_ptr<ClientCall> keep = std::move(self_);  // the call's own hold, let go below
      {
        std::lock_guard<std::mutex> lock(mu_);
        state_ = kEnded;
        const grpc::Status& why = lost_ ? *lost_ : status;
        if (!silent_) {
          Notify(ClientNotice::kLost,
                 why.ok() ? kUnavailable : static_cast<uint32_t>(why.error_code()),
                 why.ok() ? "collector ended the call" : why.error_message());
        }
      }
      owner->Remove(id_.rpc_id, this);
    }
    owner->Running(-1);  // after the last use of the call
  }

 private:
  enum State { kConnecting, kStarted, kEnded };

  void StartLocked() {
    stub_ = std::make_unique<grpc::GenericStub>(channel_);
    stub_->PrepareBidiStreamingCall(&context_, method_, grpc::StubOptions(), this);
    self_ = shared_from_this();
    owner_->Running(+1);
    state_ = kStarted;
    held_ = true;
    AddHold();
    StartRead(&in_);
    StartCall();
  }

  void WriteNextLocked() {
    if (writing_ || queue_.empty()) {
      return;
    }
    grpc::Slice slice(queue_.front().second);
    written_ = queue_.front().first;
    queue_.pop_front();
    out_ = grpc::ByteBuffer(&slice, 1);
    writing_ = true;
    StartWrite(&out_);
  }

  // trans_num: the module's message for kWritten, else the call's own count.
  void Notify(ClientNotice notice, uint32_t code, const std::string& text, uint32_t trans_num = 0) {
    CallId id = id_;
    id.trans_num = notice == ClientNotice::kWritten ? trans_num : ++sent_;
    owner_->Notify(id, notice, code, text);
  }

  DialOut* owner_;
  const CallId id_;
  const std::string method_;
  const std::string target_;
  std::shared_ptr<grpc::Channel> channel_;
  const Clock::time_point deadline_;
  std::mutex mu_;
  State state_ = kConnecting;
  std::unique_ptr<grpc::GenericStub> stub_;
  grpc::ClientContext context_;
  std::shared_ptr<ClientCall> self_;  // the call's own hold on itself while started
  bool held_ = false;
  bool silent_ = false;
  bool writing_ = false;
  uint32_t written_ = 0;
  uint32_t sent_ = 0;
  std::deque<std::pair<uint32_t, std::string>> queue_;
  grpc::ByteBuffer in_;
  grpc::ByteBuffer out_;
  std::optional<grpc::Status> lost_;
};

DialOut::DialOut(DialOutSettings settings)
    : settings_(std::move(settings)), watcher_([this] { WatchConnections(); }) {}

DialOut::~DialOut() { Stop(); }

void DialOut::Stop() {
  if (!watcher_.joinable()) {
    return;
  }
  EndAll();
  {
    std::unique_lock<std::mutex> lock(mu_);
    ended_.wait_for(lock, std::chrono::seconds(5), [this] { return running_ == 0; });
  }
  connections_.Shutdown();
  watcher_.join();
}

void DialOut::WatchConnections() {
  void* tag = nullptr;
  bool changed = false;
  while (connections_.Next(&tag, &changed)) {
    std::unique_ptr<std::shared_ptr<ClientCall>> call(
        static_cast<std::shared_ptr<ClientCall>*>(tag));
    (*call)->Watch(&connections_);
  }
}

void DialOut::OnEvent(const SouthEvent& event) {
  if (event.kind == SouthEvent::kClientOpen) {
    Open(event);
    return;
  }
  std::shared_ptr<ClientCall> call = Find(event.rpc_id);
  if (!call) {
    return;  // the call was lost on the way: the service module is told
  }
  if (event.kind == SouthEvent::kClientData) {
    call->Write(event.trans_num, event.data);
  } else if (event.kind == SouthEvent::kClientClose) {
    call->Close();
    Remove(event.rpc_id, call.get());
  }
}

void DialOut::Open(const SouthEvent& event) {
  CallId id{event.connect_id, event.rpc_id, 1};
  std::shared_ptr<ClientCall> call;
  {
    std::lock_guard<std::mutex> lock(mu_);
    if (calls_.count(event.rpc_id) != 0) {
      Notify(id, ClientNotice::kOpened, kAlreadyExists, "call id in use");
      return;
    }
    if (calls_.size() >= settings_.max_calls) {
      Notify(id, ClientNotice::kOpened, kResourceExhausted, "too many client calls");
      return;
    }
    call = std::make_shared<ClientCall>(this, event);
    calls_[event.rpc_id] = call;
  }
  std::fprintf(stderr, "dial-out: call %u to %s:%u %s\n", event.rpc_id,
               event.open.peer_address.c_str(), event.open.peer_port, event.open.method.c_str());
  call->Watch(&connections_);
}

std::shared_ptr<ClientCall> DialOut::Find(uint32_t rpc_id) {
  std::lock_guard<std::mutex> lock(mu_);
  auto it = calls_.find(rpc_id);
  return it == calls_.end() ? nullptr : it->second;
}

void DialOut::Remove(uint32_t rpc_id, const ClientCall* call) {
  std::shared_ptr<ClientCall> gone;  // freed after the lock
  std::lock_guard<std::mutex> lock(mu_);
  auto it = calls_.find(rpc_id);
  if (it != calls_.end() && it->second.get() == call) {
    gone = std::move(it->second);
    calls_.erase(it);
  }
}

void DialOut::Notify(const CallId& id, ClientNotice notice, uint32_t code,
                     const std::string& text) {
  south_->Send(ClientFrame(id, notice, code, text));
}

void DialOut::EndAll() {
  std::map<uint32_t, std::shared_ptr<ClientCall>> open;
  {
    std::lock_guard<std::mutex> lock(mu_);
    open.swap(calls_);
  }
  for (auto& call : open) {
    call.second->Close();
  }
}

void DialOut::Running(int change) {
  std::lock_guard<std::mutex> lock(mu_);
  running_ += change;
  if (running_ == 0) {
    ended_.notify_all();
  }
}

size_t DialOut::Live() {
  std::lock_guard<std::mutex> lock(mu_);
  return calls_.size();
}

}  // namespace frontend
