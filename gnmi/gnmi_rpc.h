// Per-RPC contexts of the gNMI facade. Each context owns its request, its
// response(s), the RPC's method path and a reusable output buffer into which
// the response is serialized. C callers see a context only as a void* handle.
#ifndef MGMTMSG_GNMI_GNMI_RPC_H
#define MGMTMSG_GNMI_GNMI_RPC_H

#include <string>

#include "gnmi/gnmi.pb.h"
#include "gnmi/response_arena.h"

namespace mgmtmsg {
class WireWriter;
}

class MGMTMSG_EXPORT GnmiRpcBase {
 public:
  // Values of the status words; nothing in the library reads them back.
  enum Status : int {
    kStatusOk = 0,
    kStatusBufferAllocFailed = 2,
    kStatusParseFailed = 3,
    kStatusSerializeFailed = 4,
  };

  GnmiRpcBase() = default;
  GnmiRpcBase(const GnmiRpcBase&) = delete;
  GnmiRpcBase& operator=(const GnmiRpcBase&) = delete;
  virtual ~GnmiRpcBase();

  // Clears the request and parses `len` bytes at `data` into it.
  // 1 on success; 0 on failure, with the parse status set.
  virtual int GnmiParseRpcRequest(const void* data, int len) = 0;

  // Serializes the response into the output buffer. 1 on success with the
  // buffer's address and the byte count stored; 0 on failure, with the
  // out-parameters untouched and the serialize status set.
  virtual int GnmiSerializeRpcResponse(void** out, int* outLen) = 0;

  int GetParseStatus_() const { return parseStatus_; }
  int GetSerializeStatus_() const { return serializeStatus_; }
  const std::string& GetRpcPath_() const { return rpcPath_; }
  int GetBufferCapacity_() const { return bufferCapacity_; }

  // How the output buffer is allocated when it must grow: without throwing
  // (a failure gives status 2 and result 0) or with the throwing allocation
  // (a failure leaves the call as std::bad_alloc).
  enum class BufferAllocation { kNothrow, kThrowing };

  // The context's notification writer (gnmi/gnmi_wire.h): the one made
  // before, or null.
  mgmtmsg::WireWriter* Writer_() const { return writer_; }
  // The writer, made on first use (one notification per message on a
  // Subscribe context); null when memory runs out.
  mgmtmsg::WireWriter* MakeWriter_();
  // Hands the writer's finished message out as the output, as Serialize
  // does; the writer keeps the former output buffer for its next message.
  void FinishWriter_(void** out, int* outLen);

 protected:
  int ParseRequest(google::protobuf::MessageLite* request, const void* data, int len);
  int SerializeToBuffer(const google::protobuf::MessageLite& response, BufferAllocation allocation,
                        void** out, int* outLen);

  int parseStatus_ = kStatusOk;
  int serializeStatus_ = kStatusOk;
  std::string rpcPath_;
  char* buffer_ = nullptr;
  int bufferCapacity_ = 0;

 private:
  mgmtmsg::WireWriter* writer_ = nullptr;
};

// A unary RPC: one request, one response; the members are read and built
// directly by the entry points.
template <class Request, class Response, GnmiRpcBase::BufferAllocation kAllocation>
class MGMTMSG_EXPORT GnmiRpcUnary : public GnmiRpcBase {
 public:
  GnmiRpcUnary(std::string path, Request* request, Response* response)
      : request_(request), response_(response) {
    rpcPath_.swap(path);  // takes over the argument's storage
  }
  ~GnmiRpcUnary() override {
    delete request_;
    ResponseArena::Delete(response_);
  }
  int GnmiParseRpcRequest(const void* data, int len) override {
    return ParseRequest(request_, data, len);
  }
  int GnmiSerializeRpcResponse(void** out, int* outLen) override {
    return SerializeToBuffer(*response_, kAllocation, out, outLen);
  }
  // Empties the response, moving it into the context's arena (see ResponseArena).
  int ResetResponse() { return responseArena_.Reset(&response_); }
  // The response, for the entry points that read or build it (see
  // ResponseArena::Claim).
  Response* ClaimResponse_() { return responseArena_.Claim(&response_); }

  Request* request_;
  Response* response_;

 private:
  ResponseArena responseArena_;
};

class MGMTMSG_EXPORT GnmiRpcCapability final
    : public GnmiRpcUnary<gnmi::CapabilityRequest, gnmi::CapabilityResponse,
                          GnmiRpcBase::BufferAllocation::kThrowing> {
 public:
  using GnmiRpcUnary::GnmiRpcUnary;
};

class MGMTMSG_EXPORT GnmiRpcGet final
    : public GnmiRpcUnary<gnmi::GetRequest, gnmi::GetResponse,
                          GnmiRpcBase::BufferAllocation::kNothrow> {
 public:
  using GnmiRpcUnary::GnmiRpcUnary;
};

class MGMTMSG_EXPORT GnmiRpcSet final
    : public GnmiRpcUnary<gnmi::SetRequest, gnmi::SetResponse,
                          GnmiRpcBase::BufferAllocation::kNothrow> {
 public:
  using GnmiRpcUnary::GnmiRpcUnary;
};

// Subscribe answers with two responses, the update and the sync response,
// which share the one output buffer.
class MGMTMSG_EXPORT GnmiRpcSubscribe final : public GnmiRpcBase {
 public:
  GnmiRpcSubscribe(std::string path, gnmi::SubscribeRequest* request,
                   gnmi::SubscribeResponse* response, gnmi::SubscribeResponse* syncResponse);
  ~GnmiRpcSubscribe() override;

  int GnmiParseRpcRequest(const void* data, int len) override;
  int GnmiSerializeRpcResponse(void** out, int* outLen) override;
  int GnmiSerializeRpcSyncResponse(void** out, int* outLen);
  int GnmiSerializeRpcResponse_(gnmi::SubscribeResponse* msg, void** out, int* outLen);
  // Empties the update response; the request and the sync response stay.
  int ResetResponse() { return responseArena_.Reset(&response_); }
  // The update response, for the entry points that read or build it (see
  // ResponseArena::Claim).
  gnmi::SubscribeResponse* ClaimResponse_() { return responseArena_.Claim(&response_); }

  gnmi::SubscribeRequest* GetRequest_() const { return request_; }
  gnmi::SubscribeResponse* GetResponse_() const { return response_; }
  gnmi::SubscribeResponse* GetSyncResponse_() const { return syncResponse_; }

 private:
  gnmi::SubscribeRequest* request_;
  gnmi::SubscribeResponse* response_;
  gnmi::SubscribeResponse* syncResponse_;
  ResponseArena responseArena_;
};

#endif
