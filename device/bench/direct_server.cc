#include "direct_server.h"

#include <github.com/openconfig/gnmi/proto/gnmi/gnmi.grpc.pb.h>
#include <grpcpp/grpcpp.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "sample_tree.h"

namespace bench {
namespace {

int64_t Now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

class Direct final : public gnmi::gNMI::Service {
 public:
  explicit Direct(int interfaces) : tree_(SampleTree(interfaces)) {}

  grpc::Status Get(grpc::ServerContext*, const gnmi::GetRequest* request,
                   gnmi::GetResponse* response) override {
    for (const gnmi::Path& pattern : request->path()) {
      gnmi::Notification* notification = response->add_notification();
      notification->set_timestamp(Now());
      if (!AddCovered(pattern, notification)) {
        return grpc::Status(grpc::StatusCode::NOT_FOUND, "no data at a path");
      }
    }
    return grpc::Status::OK;
  }

  grpc::Status Subscribe(
      grpc::ServerContext* context,
      grpc::ServerReaderWriter<gnmi::SubscribeResponse, gnmi::SubscribeRequest>* stream) override {
    gnmi::SubscribeRequest request;
    if (!stream->Read(&request) || !request.has_subscribe()) {
      return grpc::Status(grpc::StatusCode::INVALID_ARGUMENT, "no SubscriptionList first");
    }
    const gnmi::SubscriptionList list = request.subscribe();
    if (!Snapshot(list, stream)) return grpc::Status::OK;
    if (list.mode() == gnmi::SubscriptionList::POLL) {
      while (stream->Read(&request) && request.has_poll() && Snapshot(list, stream)) {
      }
    } else if (list.mode() == gnmi::SubscriptionList::STREAM) {
      auto interval = std::chrono::nanoseconds(list.subscription(0).sample_interval());
      auto next = std::chrono::steady_clock::now() + interval;
      while (!context->IsCancelled()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (std::chrono::steady_clock::now() < next) continue;
        next += interval;
        if (!stream->Write(Sample(list))) break;
      }
    }
    return grpc::Status::OK;
  }

 private:
  bool AddCovered(const gnmi::Path& pattern, gnmi::Notification* notification) const {
    bool found = false;
    for (const Leaf& leaf : tree_) {
      if (!Covers(pattern, leaf.path)) continue;
      gnmi::Update* update = notification->add_update();
      *update->mutable_path() = leaf.path;
      *update->mutable_val() = leaf.value;
      found = true;
    }
    return found;
  }

  gnmi::SubscribeResponse Sample(const gnmi::SubscriptionList& list) const {
    gnmi::SubscribeResponse response;
    gnmi::Notification* notification = response.mutable_update();
    notification->set_timestamp(Now());
    for (const gnmi::Subscription& subscription : list.subscription()) {
      AddCovered(subscription.path(), notification);
    }
    return response;
  }

  template <typename Stream>
  bool Snapshot(const gnmi::SubscriptionList& list, Stream* stream) const {
    gnmi::SubscribeResponse sync;
    sync.set_sync_response(true);
    return stream->Write(Sample(list)) && stream->Write(sync);
  }

  std::vector<Leaf> tree_;
};

}  // namespace

int ServeDirect(const std::string& address, int interfaces) {
  Direct service(interfaces);
  grpc::ServerBuilder builder;
  builder.AddListeningPort(address, grpc::InsecureServerCredentials());
  builder.RegisterService(&service);
  std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  if (!server) return 1;
  std::printf("listening on %s\n", address.c_str());
  std::fflush(stdout);
  server->Wait();
  return 0;
}

}  // namespace bench
