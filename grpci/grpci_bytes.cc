// Bytes fields of the south IPC records read with their exact length.
#include "grpci/grpci_bytes.h"

#include "common/handles.h"
#include "quorix-grpc-ipc.pb.h"

const char* GRPCI_RpcDataReadData(void* data, uint32_t* len) {
  return mgmtmsg::BytesRead(mgmtmsg::As<quorix_grpc_ipc::RpcData>(data)->data(), len);
}
