// Resetting the responses of the Get, Set and Subscribe contexts.
#include "gnmi/gnmi_stream.h"

#include "gnmi/gnmi_rpc.h"

namespace {

// Resets the response of `ctx` when it is a context of kind `Context`; 0 for
// a context of another kind.
template <class Context>
int ResetIfKind(void* ctx) {
  auto* rpc = dynamic_cast<Context*>(static_cast<GnmiRpcBase*>(ctx));
  return rpc != nullptr ? rpc->ResetResponse() : 0;
}

}  // namespace

int GNMI_SubscribeResponse_Reset(void* ctx) { return ResetIfKind<GnmiRpcSubscribe>(ctx); }
int GNMI_GetResponse_Reset(void* ctx) { return ResetIfKind<GnmiRpcGet>(ctx); }
int GNMI_SetResponse_Reset(void* ctx) { return ResetIfKind<GnmiRpcSet>(ctx); }
