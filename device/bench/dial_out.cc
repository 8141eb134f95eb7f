#include "dial_out.h"

#include <github.com/openconfig/gnmi/proto/gnmi/gnmi.pb.h>
#include <grpcpp/grpcpp.h>
#include <quorix-grpc-dialout.grpc.pb.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>

#include "sample_tree.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

class Collector final : public quorix_dialout::gRPCDataservice::Service {
 public:
  explicit Collector(int seconds) : seconds_(seconds) {}

  grpc::Status dataPublish(grpc::ServerContext*,
                           grpc::ServerReaderWriter<quorix_dialout::serviceArgs,
                                                    quorix_dialout::serviceArgs>* stream) override {
    quorix_dialout::serviceArgs args;
    while (stream->Read(&args) && Count(args)) {
    }
    return grpc::Status::OK;
  }

  // Waits for the count to end; the count, or 0 when nothing came.
  void Report() {
    std::unique_lock<std::mutex> lock(mu_);
    done_.wait(lock, [this] { return finished_; });
    double rate = static_cast<double>(messages_) * per_message_ / seconds_;
    std::printf("updates_per_s %.0f messages %ld updates_per_message %d\n", rate, messages_,
                per_message_);
  }

 private:
  // The first message starts the clock and tells the updates per message
  // (all alike); false once the time is up.
  bool Count(const quorix_dialout::serviceArgs& args) {
    std::lock_guard<std::mutex> lock(mu_);
    if (!start_) {
      gnmi::Notification notification;
      notification.ParseFromString(args.data());
      per_message_ = notification.update_size();
      start_ = Clock::now();
      return true;
    }
    if (Clock::now() - *start_ >= std::chrono::seconds(seconds_)) {
      finished_ = true;
      done_.notify_all();
      return false;
    }
    ++messages_;
    return true;
  }

  const int seconds_;
  std::mutex mu_;
  std::condition_variable done_;
  std::optional<Clock::time_point> start_;
  long messages_ = 0;
  int per_message_ = 0;
  bool finished_ = false;
};

int64_t WallNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

int Collect(const std::string& address, int seconds) {
  Collector collector(seconds);
  grpc::ServerBuilder builder;
  builder.AddListeningPort(address, grpc::InsecureServerCredentials());
  builder.RegisterService(&collector);
  builder.SetMaxReceiveMessageSize(64 << 20);
  std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  if (!server) {
    std::fprintf(stderr, "cannot listen on %s\n", address.c_str());
    return 1;
  }
  std::printf("listening on %s\n", address.c_str());
  std::fflush(stdout);
  collector.Report();
  server->Shutdown(std::chrono::system_clock::now() + std::chrono::seconds(1));
  return 0;
}

int Push(const std::string& address, int interfaces, int seconds) {
  const gnmi::Path counters = ParsePath("/interfaces/interface/state/counters");
  std::vector<Leaf> leaves;
  for (Leaf& leaf : SampleTree(interfaces)) {
    if (Covers(counters, leaf.path)) leaves.push_back(std::move(leaf));
  }
  auto stub = quorix_dialout::gRPCDataservice::NewStub(
      grpc::CreateChannel(address, grpc::InsecureChannelCredentials()));
  grpc::ClientContext context;
  auto stream = stub->dataPublish(&context);
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  quorix_dialout::serviceArgs args;
  gnmi::Notification notification;
  for (int64_t id = 1; Clock::now() < end; ++id) {
    notification.Clear();
    notification.set_timestamp(WallNs());
    for (const Leaf& leaf : leaves) {
      gnmi::Update* update = notification.add_update();
      *update->mutable_path() = leaf.path;
      *update->mutable_val() = leaf.value;
    }
    args.set_reqid(id);
    notification.SerializeToString(args.mutable_data());
    if (!stream->Write(args)) break;
  }
  stream->WritesDone();
  grpc::Status status = stream->Finish();
  return status.ok() || status.error_code() == grpc::StatusCode::CANCELLED ? 0 : 1;
}

}  // namespace bench
