// Creation, parsing, serialization and destruction of the gNMI RPC contexts.
#include <memory>
#include <new>
#include <tuple>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"

namespace {

GnmiRpcBase* Rpc(void* ctx) { return static_cast<GnmiRpcBase*>(ctx); }

// Creates the context around messages it takes over; null when any
// allocation fails (the path string's included), the messages then stay with
// the caller.
template <class Context, class... Messages>
Context* NewContext(const char* path, Messages*... messages) {
  try {
    return new (std::nothrow) Context(std::string(path), messages...);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// Allocates the context's messages in order, stopping at the first failure,
// then the context. Null, with nothing left allocated, on any failure.
template <class Context, class... Messages>
void* NewRpc(const char* path) {
  std::tuple<std::unique_ptr<Messages>...> messages;
  const bool allocated = std::apply(
      [](auto&... message) {
        return ((message.reset(new (std::nothrow)
                                   typename std::decay_t<decltype(message)>::element_type),
                 message != nullptr) &&
                ...);
      },
      messages);
  if (!allocated) {
    return nullptr;
  }
  Context* context = std::apply(
      [path](auto&... message) { return NewContext<Context>(path, message.get()...); }, messages);
  if (context != nullptr) {
    std::apply([](auto&... message) { (message.release(), ...); }, messages);
  }
  return context;
}

int Parse(void* ctx, const void* data, int len) { return Rpc(ctx)->GnmiParseRpcRequest(data, len); }

int Serialize(void* ctx, void** out, int* outLen) {
  return Rpc(ctx)->GnmiSerializeRpcResponse(out, outLen);
}

void Destroy(void* ctx) { delete Rpc(ctx); }

}  // namespace

void* GNMI_Capability_Init(void) {
  return NewRpc<GnmiRpcCapability, gnmi::CapabilityRequest, gnmi::CapabilityResponse>(
      "/gnmi.gNMI/Capabilities");
}
void* GNMI_Get_Init(void) {
  return NewRpc<GnmiRpcGet, gnmi::GetRequest, gnmi::GetResponse>("/gnmi.gNMI/Get");
}
void* GNMI_Set_Init(void) {
  return NewRpc<GnmiRpcSet, gnmi::SetRequest, gnmi::SetResponse>("/gnmi.gNMI/Set");
}
void* GNMI_Subscribe_Init(void) {
  return NewRpc<GnmiRpcSubscribe, gnmi::SubscribeRequest, gnmi::SubscribeResponse,
                gnmi::SubscribeResponse>("/gnmi.gNMI/Subscribe");
}

int GNMI_CapabilityRequest_Parse(void* ctx, const void* data, int len) {
  return Parse(ctx, data, len);
}
int GNMI_GetRequest_Parse(void* ctx, const void* data, int len) { return Parse(ctx, data, len); }
int GNMI_SetRequest_Parse(void* ctx, const void* data, int len) { return Parse(ctx, data, len); }
int GNMI_SubscribeRequest_Parse(void* ctx, const void* data, int len) {
  return Parse(ctx, data, len);
}

int GNMI_CapabilityResponse_Serialize(void* ctx, void** out, int* outLen) {
  return Serialize(ctx, out, outLen);
}
int GNMI_GetResponse_Serialize(void* ctx, void** out, int* outLen) {
  return Serialize(ctx, out, outLen);
}
int GNMI_SetResponse_Serialize(void* ctx, void** out, int* outLen) {
  return Serialize(ctx, out, outLen);
}
int GNMI_SubscribeResponse_Serialize(void* ctx, void** out, int* outLen) {
  return Serialize(ctx, out, outLen);
}
int GNMI_SubscribeSyncResponse_Serialize(void* ctx, void** out, int* outLen) {
  return static_cast<GnmiRpcSubscribe*>(ctx)->GnmiSerializeRpcSyncResponse(out, outLen);
}

void GNMI_Capability_DeInit(void* ctx) { Destroy(ctx); }
void GNMI_Get_DeInit(void* ctx) { Destroy(ctx); }
void GNMI_Set_DeInit(void* ctx) { Destroy(ctx); }
void GNMI_Subscribe_DeInit(void* ctx) { Destroy(ctx); }
