#include "channel.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/* Output waiting for a front end that does not read: past this, the
 * connection is dropped. */
#define OUTPUT_MAX (256u << 20)

int channel_connect(struct service* svc, const char* path) {
  struct sockaddr_un addr;
  int fd;
  memset(&addr, 0, sizeof addr);
  addr.sun_family = AF_UNIX;
  if (strlen(path) >= sizeof addr.sun_path) return 0;
  strcpy(addr.sun_path, path);
  fd = socket(AF_UNIX, SOCK_STREAM, 0);
  if (fd < 0) return 0;
  if (connect(fd, (struct sockaddr*)&addr, sizeof addr) != 0 ||
      fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK) != 0) {
    close(fd);
    return 0;
  }
  svc->fd = fd;
  fprintf(stderr, "service: connected to %s\n", path);
  return 1;
}

int channel_read(struct service* svc) {
  unsigned char chunk[65536];
  for (;;) {
    ssize_t got = read(svc->fd, chunk, sizeof chunk);
    if (got > 0) {
      if (!buffer_append(&svc->in, chunk, (size_t)got) || !service_receive(svc)) return 0;
      continue;
    }
    if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return 1;
    if (got < 0 && errno == EINTR) continue;
    return 0;
  }
}

int channel_flush(struct service* svc) {
  size_t done = 0;
  while (done < svc->out.len) {
    ssize_t sent = send(svc->fd, svc->out.data + done, svc->out.len - done, MSG_NOSIGNAL);
    if (sent > 0) {
      done += (size_t)sent;
    } else if (sent < 0 && errno == EINTR) {
      continue;
    } else if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      break;
    } else {
      return 0;
    }
  }
  buffer_consume(&svc->out, done);
  return svc->out.len <= OUTPUT_MAX;
}

void channel_close(struct service* svc) {
  if (svc->fd >= 0) close(svc->fd);
  svc->fd = -1;
  svc->in.len = svc->out.len = 0;
  calls_drop(svc);
  dialout_lost_channel(&svc->dialout);
  fprintf(stderr, "service: disconnected; every call freed\n");
}
