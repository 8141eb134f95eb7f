// The front end's command line.
#ifndef MGMTMSG_DEVICE_OPTIONS_H
#define MGMTMSG_DEVICE_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace frontend {

struct Options {
  std::string host = "127.0.0.1";
  uint32_t port = 9339;
  std::string south = "/tmp/mgmtmsg-south.sock";
  std::string tls_cert;
  std::string tls_key;
  std::string dial_out_ca;
  bool insecure = false;
  size_t max_queued = 256;
};

// Reads argv (and GNMI_PORT, the port when --listen does not name one).
// Returns -1 to go on, else the exit status, usage or error printed.
int ParseOptions(int argc, char** argv, Options* options);

}  // namespace frontend

#endif
