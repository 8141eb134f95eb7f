// The south channel, listening side: a Unix stream socket that accepts one
// service module at a time and carries every call's frames both ways.
#ifndef MGMTMSG_DEVICE_SOUTH_CHANNEL_H
#define MGMTMSG_DEVICE_SOUTH_CHANNEL_H

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "south_frames.h"

namespace frontend {

class SouthChannel {
 public:
  using EventHandler = std::function<void(const SouthEvent&)>;
  using LossHandler = std::function<void()>;

  // on_event gets each message of the service module, on_loss is called once
  // the service module's connection is gone; both on the channel's thread.
  SouthChannel(std::string path, EventHandler on_event, LossHandler on_loss);
  ~SouthChannel();
  SouthChannel(const SouthChannel&) = delete;
  SouthChannel& operator=(const SouthChannel&) = delete;

  // Binds the socket and starts the channel's thread.
  bool Start(std::string* error);
  // Stops the thread, closes the connection and removes the socket file.
  void Stop();
  bool Connected() const { return conn_fd_.load() >= 0; }
  // Writes a whole frame; false when no service module is connected or the
  // write fails (the connection is then shut down and dropped by the thread).
  bool Send(const std::string& frame);

 private:
  void Run();
  void Accept();
  void Receive();
  void Drop(const std::string& why);

  std::string path_;
  EventHandler on_event_;
  LossHandler on_loss_;
  int listen_fd_ = -1;
  int wake_fds_[2] = {-1, -1};
  std::atomic<int> conn_fd_{-1};
  std::mutex send_mu_;
  std::string inbox_;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

}  // namespace frontend

#endif
