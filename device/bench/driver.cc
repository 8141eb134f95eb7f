#include "driver.h"

#include <github.com/openconfig/gnmi/proto/gnmi/gnmi.grpc.pb.h>
#include <grpcpp/grpcpp.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <thread>

#include "sample_tree.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using Stream = grpc::ClientReaderWriter<gnmi::SubscribeRequest, gnmi::SubscribeResponse>;

constexpr char kCounter[] = "/interfaces/interface[name=eth0]/state/counters/in-octets";

struct Client {
  explicit Client(const std::string& address)
      : stub(
            gnmi::gNMI::NewStub(grpc::CreateChannel(address, grpc::InsecureChannelCredentials()))) {
  }

  std::unique_ptr<grpc::ClientContext> Context() const {
    auto context = std::make_unique<grpc::ClientContext>();
    context->AddMetadata("username", "admin");
    context->AddMetadata("password", "admin");
    return context;
  }

  std::unique_ptr<gnmi::gNMI::Stub> stub;
};

gnmi::SubscribeRequest List(const std::string& path, gnmi::SubscriptionList::Mode mode,
                            uint64_t interval) {
  gnmi::SubscribeRequest request;
  gnmi::SubscriptionList* list = request.mutable_subscribe();
  list->set_mode(mode);
  list->set_encoding(gnmi::PROTO);
  gnmi::Subscription* subscription = list->add_subscription();
  *subscription->mutable_path() = ParsePath(path);
  subscription->set_mode(gnmi::SAMPLE);
  subscription->set_sample_interval(interval);
  return request;
}

// Reads one snapshot (updates until sync_response); its update paths, or
// nothing when the stream ends.
bool ReadSnapshot(Stream* stream, std::multiset<std::string>* paths, size_t* updates) {
  gnmi::SubscribeResponse response;
  while (stream->Read(&response)) {
    if (response.sync_response()) return true;
    *updates += response.update().update_size();
    for (const gnmi::Update& update : response.update().update()) {
      if (paths) paths->insert(update.path().SerializeAsString());
    }
  }
  return false;
}

struct Throughput {
  double updatesPerSecond = 0;
  std::multiset<std::string> shape;
};

// POLL over /interfaces: the next Poll as soon as a snapshot is complete.
bool Poll(const Client& client, int polls, Throughput* out) {
  auto context = client.Context();
  std::unique_ptr<Stream> stream = client.stub->Subscribe(context.get());
  size_t updates = 0;
  gnmi::SubscribeRequest poll;
  poll.mutable_poll();
  if (!stream->Write(List("/interfaces", gnmi::SubscriptionList::POLL, 0)) ||
      !ReadSnapshot(stream.get(), &out->shape, &updates)) {
    return false;
  }
  updates = 0;
  Clock::time_point start = Clock::now();
  for (int i = 0; i < polls; i++) {
    if (!stream->Write(poll) || !ReadSnapshot(stream.get(), nullptr, &updates)) return false;
  }
  double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  out->updatesPerSecond = static_cast<double>(updates) / seconds;
  context->TryCancel();
  return true;
}

struct Latency {
  double p50Us = 0;
  double p99Us = 0;
};

bool GetLeaf(const Client& client, int gets, Latency* out) {
  gnmi::GetRequest request;
  *request.add_path() = ParsePath(kCounter);
  request.set_encoding(gnmi::PROTO);
  std::vector<double> times;
  for (int i = 0; i < gets + gets / 10; i++) {
    auto context = client.Context();
    gnmi::GetResponse response;
    Clock::time_point start = Clock::now();
    grpc::Status status = client.stub->Get(context.get(), request, &response);
    double us = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    if (!status.ok() || response.notification_size() != 1) return false;
    if (i >= gets / 10) times.push_back(us);  // the first tenth warms up
  }
  std::sort(times.begin(), times.end());
  out->p50Us = times[times.size() / 2];
  out->p99Us = times[times.size() * 99 / 100];
  return true;
}

long RssKiB(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

// The sides' memory with `count` subscribers sampling every interval.
std::vector<long> MemoryWith(const Client& client, const Side& side, int count, uint64_t interval) {
  std::vector<std::unique_ptr<grpc::ClientContext>> contexts;
  std::vector<std::thread> readers;
  for (int i = 0; i < count; i++) {
    contexts.push_back(client.Context());
    readers.emplace_back([&client, context = contexts.back().get(), interval] {
      std::unique_ptr<Stream> stream = client.stub->Subscribe(context);
      stream->Write(
          List("/interfaces/interface[name=eth0]", gnmi::SubscriptionList::STREAM, interval));
      gnmi::SubscribeResponse response;
      while (stream->Read(&response)) {
      }
      stream->Finish().ok();
    });
  }
  std::this_thread::sleep_for(std::chrono::seconds(3));
  std::vector<long> rss;
  for (pid_t pid : side.pids) rss.push_back(RssKiB(pid));
  for (auto& context : contexts) context->TryCancel();
  for (std::thread& reader : readers) reader.join();
  return rss;
}

std::string Kib(const std::vector<long>& rss) {
  std::string text;
  for (long kib : rss) text += (text.empty() ? "" : " + ") + std::to_string(kib);
  return text + " KiB";
}

}  // namespace

int Drive(const Side& device, const Side& direct, const DriverOptions& options) {
  const Side* sides[] = {&device, &direct};
  Throughput throughput[2];
  Latency latency[2];
  for (int s = 0; s < 2; s++) {
    Client client(sides[s]->address);
    if (!Poll(client, options.polls, &throughput[s]) ||
        !GetLeaf(client, options.gets, &latency[s])) {
      std::fprintf(stderr, "%s: a call failed\n", sides[s]->name.c_str());
      return 1;
    }
  }
  if (throughput[0].shape != throughput[1].shape || throughput[0].shape.empty()) {
    std::fprintf(stderr, "the sides' snapshots differ: %zu and %zu updates\n",
                 throughput[0].shape.size(), throughput[1].shape.size());
    return 1;
  }
  std::printf("| measure | %s | %s | ratio |\n|---|---:|---:|---:|\n", device.name.c_str(),
              direct.name.c_str());
  std::printf("| POLL snapshots of %zu updates, updates/s | %.0f | %.0f | %.2fx |\n",
              throughput[0].shape.size(), throughput[0].updatesPerSecond,
              throughput[1].updatesPerSecond,
              throughput[0].updatesPerSecond / throughput[1].updatesPerSecond);
  std::printf("| Get of one leaf, p50 us | %.0f | %.0f | %.2fx |\n", latency[0].p50Us,
              latency[1].p50Us, latency[0].p50Us / latency[1].p50Us);
  std::printf("| Get of one leaf, p99 us | %.0f | %.0f | %.2fx |\n", latency[0].p99Us,
              latency[1].p99Us, latency[0].p99Us / latency[1].p99Us);
  const struct {
    const char* what;
    uint64_t interval;
  } loads[] = {{"idle (SAMPLE every 60 s)", 60000000000u},
               {"streaming (every 100 ms)", 100000000u}};
  for (const auto& load : loads) {
    std::string rss[2];
    for (int s = 0; s < 2; s++) {
      Client client(sides[s]->address);
      rss[s] = Kib(MemoryWith(client, *sides[s], options.subscribers, load.interval));
    }
    std::printf("| RSS with %d subscribers %s | %s | %s | |\n", options.subscribers, load.what,
                rss[0].c_str(), rss[1].c_str());
  }
  return 0;
}

}  // namespace bench
