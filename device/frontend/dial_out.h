// Client calls (dial-out): the service module asks for a call to a collector;
// the front end connects, then relays the module's messages to the collector
// and the collector's back, as bytes, until the call is closed or lost.
#ifndef MGMTMSG_DEVICE_DIAL_OUT_H
#define MGMTMSG_DEVICE_DIAL_OUT_H

#include <grpcpp/grpcpp.h>

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "south_channel.h"

namespace frontend {

class ClientCall;

struct DialOutSettings {
  std::string ca_pem;             // roots for collectors' certificates; "": the system's
  size_t max_calls = 64;          // client calls open at once
  size_t max_queued = 64;         // messages waiting for the collector
  int connect_timeout_ms = 5000;  // for the connection attempt
};

class DialOut {
 public:
  explicit DialOut(DialOutSettings settings);
  ~DialOut();  // Stop()
  DialOut(const DialOut&) = delete;
  DialOut& operator=(const DialOut&) = delete;

  void Attach(SouthChannel* south) { south_ = south; }
  // kClientOpen, kClientData and kClientClose of the service module.
  void OnEvent(const SouthEvent& event);
  // The service module is gone: every call is cancelled, nothing reported.
  void EndAll();
  size_t Live();
  // Cancels every call and waits for them to end; nothing is sent after it.
  void Stop();

  // For the calls themselves.
  void Notify(const CallId& id, ClientNotice notice, uint32_t code, const std::string& text);
  // Forgets the call, when rpc_id is still this call's.
  void Remove(uint32_t rpc_id, const ClientCall* call);
  // Counts the started calls, which end on their own threads.
  void Running(int change);
  const DialOutSettings& settings() const { return settings_; }

 private:
  void Open(const SouthEvent& event);
  std::shared_ptr<ClientCall> Find(uint32_t rpc_id);
  // The connector's thread: connection attempts end here.
  void WatchConnections();

  DialOutSettings settings_;
  SouthChannel* south_ = nullptr;
  std::mutex mu_;
  std::map<uint32_t, std::shared_ptr<ClientCall>> calls_;
  size_t running_ = 0;
  std::condition_variable ended_;
  grpc::CompletionQueue connections_;
  std::thread watcher_;
};

}  // namespace frontend

#endif
