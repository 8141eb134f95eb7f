// The direct side: a grpc++ gNMI server answering Get and Subscribe from the
// sample tree with replies built by protobuf C++ directly.
#ifndef DEVICE_BENCH_DIRECT_SERVER_H
#define DEVICE_BENCH_DIRECT_SERVER_H

#include <string>

namespace bench {

// Serves on address until the process is killed.
int ServeDirect(const std::string& address, int interfaces);

}  // namespace bench

#endif
