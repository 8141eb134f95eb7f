// Resetting the responses of the Get, Set and Subscribe contexts.
#include "gnmi/gnmi_stream.h"

#include "common/handles.h"
#include "gnmi/gnmi_rpc.h"

using mgmtmsg::As;

int GNMI_SubscribeResponse_Reset(void* ctx) { return As<GnmiRpcSubscribe>(ctx)->ResetResponse(); }
int GNMI_GetResponse_Reset(void* ctx) { return As<GnmiRpcGet>(ctx)->ResetResponse(); }
int GNMI_SetResponse_Reset(void* ctx) { return As<GnmiRpcSet>(ctx)->ResetResponse(); }
