// The client side of the benchmark: the same calls against the device and
// against the direct server, one after the other, in one run.
#ifndef DEVICE_BENCH_DRIVER_H
#define DEVICE_BENCH_DRIVER_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

struct Side {
  std::string name;
  std::string address;
  std::vector<pid_t> pids;  // the programs whose memory is reported
};

struct DriverOptions {
  int polls = 300;
  int gets = 2000;
  int subscribers = 100;
};

// Prints the results as Markdown; 0, or 1 when the sides' replies differ in
// shape or a call fails.
int Drive(const Side& device, const Side& direct, const DriverOptions& options);

}  // namespace bench

#endif
