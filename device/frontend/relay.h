// The calls in flight: each gRPC call of a served method is relayed to the
// service module as raw message bytes, keyed by its rpc_id, and its replies
// are written back through a bounded queue.
#ifndef MGMTMSG_DEVICE_RELAY_H
#define MGMTMSG_DEVICE_RELAY_H

#include <grpcpp/generic/async_generic_service.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "south_channel.h"

namespace frontend {

class Relay;

// Limits and the listener's own address, as the calls are opened with.
struct RelaySettings {
  std::string my_address;
  uint32_t my_port = 0;
  size_t max_queued = 256;             // replies waiting for the client
  size_t max_queued_bytes = 16 << 20;  // and their bytes
};

class CallTable {
 public:
  explicit CallTable(RelaySettings settings) : settings_(std::move(settings)) {}
  void Attach(SouthChannel* south) { south_ = south; }

  // A reactor for a new call (the generic service's CreateReactor).
  grpc::ServerGenericBidiReactor* Create(grpc::GenericCallbackServerContext* ctx);
  // A message of the service module, routed by rpc_id.
  void OnEvent(const SouthEvent& event);
  // Ends every open call with the status (the service module is gone).
  void EndAll(const grpc::Status& status);
  size_t Live();

  // For the calls themselves.
  const RelaySettings& settings() const { return settings_; }
  SouthChannel* south() const { return south_; }
  // Registers a call; returns its connect_id and rpc_id.
  std::pair<uint32_t, uint32_t> Add(const std::string& peer, std::shared_ptr<Relay> relay);
  void Remove(const std::string& peer, uint32_t rpc_id);

 private:
  std::shared_ptr<Relay> Find(uint32_t rpc_id);

  RelaySettings settings_;
  SouthChannel* south_ = nullptr;
  std::mutex mu_;
  std::map<uint32_t, std::shared_ptr<Relay>> calls_;
  // connect_id of each peer address:port with its number of open calls.
  std::map<std::string, std::pair<uint32_t, size_t>> peers_;
  uint32_t last_rpc_id_ = 0;
  uint32_t last_connect_id_ = 0;
};

}  // namespace frontend

#endif
