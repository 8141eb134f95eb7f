// Dial-out throughput: a collector of the publish stream, and an in-process
// grpc++ client that pushes the same notifications built with protobuf C++.
#ifndef DEVICE_BENCH_DIAL_OUT_H
#define DEVICE_BENCH_DIAL_OUT_H

#include <string>

namespace bench {

// Serves gRPCDataservice/dataPublish on address; from the first message on,
// counts for `seconds` and prints "updates_per_s N messages M updates_per_message U".
int Collect(const std::string& address, int seconds);

// Pushes, for `seconds`, notifications of the counters of `interfaces`
// interfaces of the sample tree to the collector at address, as fast as it
// takes them.
int Push(const std::string& address, int interfaces, int seconds);

}  // namespace bench

#endif
