#include "gnmi/gnmi_rpc.h"

#include <climits>
#include <new>

#include "gnmi/wire_writer.h"

GnmiRpcBase::~GnmiRpcBase() {
  delete[] buffer_;
  delete writer_;
}

mgmtmsg::WireWriter* GnmiRpcBase::MakeWriter_() {
  if (writer_ == nullptr) {
    const bool subscribe = dynamic_cast<const GnmiRpcSubscribe*>(this) != nullptr;
    writer_ = new (std::nothrow) mgmtmsg::WireWriter(subscribe);
  }
  return writer_;
}

void GnmiRpcBase::FinishWriter_(void** out, int* outLen) {
  writer_->Finish(&buffer_, &bufferCapacity_, out, outLen);
}

int GnmiRpcBase::ParseRequest(google::protobuf::MessageLite* request, const void* data, int len) {
  if (!request->ParseFromArray(data, len)) {
    parseStatus_ = kStatusParseFailed;
    return 0;
  }
  return 1;
}

int GnmiRpcBase::SerializeToBuffer(const google::protobuf::MessageLite& response,
                                   BufferAllocation allocation, void** out, int* outLen) {
  const size_t byteSize = response.ByteSizeLong();
  if (byteSize > INT_MAX) {  // beyond what the message runtime can encode
    serializeStatus_ = kStatusSerializeFailed;
    return 0;
  }
  const int size = static_cast<int>(byteSize);
  if (bufferCapacity_ < size) {
    delete[] buffer_;
    buffer_ = nullptr;
    bufferCapacity_ = 0;
    if (allocation == BufferAllocation::kThrowing) {
      buffer_ = new char[size];
    } else {
      buffer_ = new (std::nothrow) char[size];
      if (buffer_ == nullptr) {
        serializeStatus_ = kStatusBufferAllocFailed;
        return 0;
      }
    }
    bufferCapacity_ = size;
  }
  // The size was computed just above and is cached in the message.
  response.SerializeWithCachedSizesToArray(reinterpret_cast<google::protobuf::uint8*>(buffer_));
  *out = buffer_;
  *outLen = size;
  return 1;
}

GnmiRpcSubscribe::GnmiRpcSubscribe(std::string path, gnmi::SubscribeRequest* request,
                                   gnmi::SubscribeResponse* response,
                                   gnmi::SubscribeResponse* syncResponse)
    : request_(request), response_(response), syncResponse_(syncResponse) {
  rpcPath_ = std::move(path);
}

GnmiRpcSubscribe::~GnmiRpcSubscribe() {
  delete request_;
  ResponseArena::Delete(response_);
  delete syncResponse_;
}

int GnmiRpcSubscribe::GnmiParseRpcRequest(const void* data, int len) {
  return ParseRequest(request_, data, len);
}

int GnmiRpcSubscribe::GnmiSerializeRpcResponse(void** out, int* outLen) {
  return GnmiSerializeRpcResponse_(response_, out, outLen);
}

int GnmiRpcSubscribe::GnmiSerializeRpcSyncResponse(void** out, int* outLen) {
  return GnmiSerializeRpcResponse_(syncResponse_, out, outLen);
}

int GnmiRpcSubscribe::GnmiSerializeRpcResponse_(gnmi::SubscribeResponse* msg, void** out,
                                                int* outLen) {
  return SerializeToBuffer(*msg, BufferAllocation::kNothrow, out, outLen);
}
