// A gRPC message's bytes as one string, whatever slices grpc++ holds them in.
#ifndef MGMTMSG_DEVICE_BYTE_BUFFER_H
#define MGMTMSG_DEVICE_BYTE_BUFFER_H

#include <grpcpp/support/byte_buffer.h>

#include <string>
#include <vector>

namespace frontend {

inline std::string Bytes(const grpc::ByteBuffer& buffer) {
  std::vector<grpc::Slice> slices;
  std::string out;
  if (buffer.Dump(&slices).ok()) {
    for (const grpc::Slice& slice : slices) {
      out.append(reinterpret_cast<const char*>(slice.begin()), slice.size());
    }
  }
  return out;
}

}  // namespace frontend

#endif
