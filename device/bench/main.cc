// mgmtmsg-device-bench: `serve ADDRESS INTERFACES` runs the direct server;
// `drive DEVICE_ADDRESS PIDS DIRECT_ADDRESS PID [POLLS GETS]` measures both
// sides (PIDS: the front end's and the service module's, comma-separated);
// `collect ADDRESS SECONDS` counts the dial-out updates a collector takes,
// `push ADDRESS INTERFACES SECONDS` is the direct dial-out client.
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "dial_out.h"
#include "direct_server.h"
#include "driver.h"

namespace {

std::vector<pid_t> Pids(const std::string& list) {
  std::vector<pid_t> pids;
  std::stringstream parts(list);
  std::string part;
  while (std::getline(parts, part, ',')) pids.push_back(std::atoi(part.c_str()));
  return pids;
}

}  // namespace

int main(int argc, char** argv) {
  std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "serve" && argc == 4) return bench::ServeDirect(argv[2], std::atoi(argv[3]));
  if (mode == "collect" && argc == 4) return bench::Collect(argv[2], std::atoi(argv[3]));
  if (mode == "push" && argc == 5) {
    return bench::Push(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
  }
  if (mode == "drive" && (argc == 6 || argc == 8)) {
    bench::DriverOptions options;
    if (argc == 8) {
      options.polls = std::atoi(argv[6]);
      options.gets = std::atoi(argv[7]);
    }
    return bench::Drive({"device", argv[2], Pids(argv[3])},
                        {"direct grpc++", argv[4], Pids(argv[5])}, options);
  }
  std::fprintf(stderr,
               "usage: mgmtmsg-device-bench serve ADDRESS INTERFACES\n"
               "       mgmtmsg-device-bench drive DEVICE_ADDRESS FRONTEND_PID,SERVICE_PID "
               "DIRECT_ADDRESS DIRECT_PID [POLLS GETS]\n"
               "       mgmtmsg-device-bench collect ADDRESS SECONDS\n"
               "       mgmtmsg-device-bench push ADDRESS INTERFACES SECONDS\n");
  return 2;
}
