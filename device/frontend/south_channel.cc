#include "south_channel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace frontend {
namespace {

constexpr int kPollMs = 200;
constexpr size_t kReadChunk = 65536;
constexpr int kSendTimeoutS = 1;

}  // namespace

SouthChannel::SouthChannel(std::string path, EventHandler on_event, LossHandler on_loss)
    : path_(std::move(path)), on_event_(std::move(on_event)), on_loss_(std::move(on_loss)) {}

SouthChannel::~SouthChannel() { Stop(); }

bool SouthChannel::Start(std::string* error) {
  sockaddr_un addr{};
  addr.sun_family = AF_UNIX;
  if (path_.empty() || path_.size() >= sizeof(addr.sun_path)) {
    *error = "socket path empty or too long: " + path_;
    return false;
  }
  std::memcpy(addr.sun_path, path_.c_str(), path_.size() + 1);
  listen_fd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  unlink(path_.c_str());
  if (listen_fd_ < 0 || bind(listen_fd_, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
      listen(listen_fd_, 4) != 0 || pipe2(wake_fds_, O_CLOEXEC) != 0) {
    *error = path_ + ": " + std::strerror(errno);
    return false;
  }
  thread_ = std::thread(&SouthChannel::Run, this);
  return true;
}

void SouthChannel::Stop() {
  stopping_ = true;
  if (thread_.joinable()) {
    (void)!write(wake_fds_[1], "x", 1);
    thread_.join();
  }
  for (int* fd : {&listen_fd_, &wake_fds_[0], &wake_fds_[1]}) {
    if (*fd >= 0) {
      close(*fd);
      *fd = -1;
    }
  }
  int conn = conn_fd_.exchange(-1);
  if (conn >= 0) {
    close(conn);
  }
  if (!path_.empty()) {
    unlink(path_.c_str());
    path_.clear();
  }
}

bool SouthChannel::Send(const std::string& frame) {
  std::lock_guard<std::mutex> lock(send_mu_);
  int fd = conn_fd_.load();
  if (fd < 0 || frame.empty()) {
    return false;
  }
  for (size_t done = 0; done < frame.size();) {
    ssize_t n = send(fd, frame.data() + done, frame.size() - done, MSG_NOSIGNAL);
    if (n <= 0) {
      if (n < 0 && errno == EINTR) {
        continue;
      }
      std::fprintf(stderr, "south: write failed (%s), dropping the service module\n",
                   n < 0 ? std::strerror(errno) : "closed");
      shutdown(fd, SHUT_RDWR);
      return false;
    }
    done += static_cast<size_t>(n);
  }
  return true;
}

void SouthChannel::Run() {
  while (!stopping_) {
    pollfd fds[3] = {{wake_fds_[0], POLLIN, 0}, {listen_fd_, POLLIN, 0}, {conn_fd_, POLLIN, 0}};
    int n = poll(fds, conn_fd_ >= 0 ? 3 : 2, kPollMs);
    if (n <= 0 || stopping_) {
      continue;
    }
    if (fds[1].revents & POLLIN) {
      Accept();
    }
    if (conn_fd_ >= 0 && (fds[2].revents & (POLLIN | POLLHUP | POLLERR))) {
      Receive();
    }
  }
}

void SouthChannel::Accept() {
  int fd = accept4(listen_fd_, nullptr, nullptr, SOCK_CLOEXEC);
  if (fd < 0) {
    return;
  }
  if (conn_fd_ >= 0) {
    std::fprintf(stderr, "south: a second service module refused\n");
    close(fd);
    return;
  }
  timeval timeout{kSendTimeoutS, 0};
  setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
  inbox_.clear();
  conn_fd_ = fd;
  std::fprintf(stderr, "south: service module connected\n");
}

// Reads what is there and hands over every whole frame in it.
void SouthChannel::Receive() {
  char chunk[kReadChunk];
  ssize_t n = recv(conn_fd_, chunk, sizeof(chunk), 0);
  if (n <= 0) {
    if (n < 0 && errno == EINTR) {
      return;
    }
    Drop(n < 0 ? std::strerror(errno) : "connection closed");
    return;
  }
  inbox_.append(chunk, static_cast<size_t>(n));
  size_t pos = 0;
  SouthEvent event;
  while (inbox_.size() - pos >= 4) {
    uint32_t len = 0;
    std::memcpy(&len, inbox_.data() + pos, 4);
    if (len > kMaxSouthMessage) {
      Drop("frame length " + std::to_string(len) + " over the limit");
      return;
    }
    if (inbox_.size() - pos - 4 < len) {
      break;
    }
    if (!ReadEvent(inbox_.substr(pos + 4, len), &event)) {
      Drop("frame of " + std::to_string(len) + " bytes that is no SouthMsg");
      return;
    }
    pos += 4 + len;
    on_event_(event);
  }
  inbox_.erase(0, pos);
}

void SouthChannel::Drop(const std::string& why) {
  {
    std::lock_guard<std::mutex> lock(send_mu_);
    close(conn_fd_.exchange(-1));
  }
  inbox_.clear();
  std::fprintf(stderr, "south: service module gone: %s\n", why.c_str());
  on_loss_();
}

}  // namespace frontend
