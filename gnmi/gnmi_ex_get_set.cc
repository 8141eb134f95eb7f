// Readers of the Get, Set and Capabilities requests and builders of their
// responses, all reached through the RPC context.
#include "common/builders.h"
#include "common/fatal_check.h"
#include "common/handles.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"

using mgmtmsg::AppendTo;
using mgmtmsg::As;
using mgmtmsg::AssignBytes;
using mgmtmsg::HandleAt;
using mgmtmsg::HandleOrNull;
using mgmtmsg::kGnmiIndexSite;

namespace {

const gnmi::GetRequest& GetRequest(void* ctx) { return *As<GnmiRpcGet>(ctx)->request_; }
gnmi::GetResponse* GetResponse(void* ctx) { return As<GnmiRpcGet>(ctx)->ClaimResponse_(); }
const gnmi::SetRequest& SetRequest(void* ctx) { return *As<GnmiRpcSet>(ctx)->request_; }
gnmi::SetResponse* SetResponse(void* ctx) { return As<GnmiRpcSet>(ctx)->ClaimResponse_(); }
const gnmi::CapabilityRequest& CapabilityRequest(void* ctx) {
  return *As<GnmiRpcCapability>(ctx)->request_;
}
gnmi::CapabilityResponse* CapabilityResponse(void* ctx) {
  return As<GnmiRpcCapability>(ctx)->ClaimResponse_();
}

// Appends to a packed list, growing its storage by Reserve when it is full;
// the storage must hold room after growing.
void AppendGrowing(google::protobuf::RepeatedField<int>* list, int value) {
  if (list->size() == list->Capacity()) {
    list->Reserve(list->size() + 1);
    // Unreachable: Reserve leaves room or throws. It stands for the runtime's
    // own check of this step, with its message.
    if (list->Capacity() <= 0) {
      mgmtmsg::FatalCheckFailed("gnmi_ex", 353, "CHECK failed: (total_size_) > (0): ");
    }
  }
  list->AddAlreadyReserved(value);
}

}  // namespace

int GNMI_GetRequest_HasPrefix(void* ctx) { return GetRequest(ctx).has_prefix(); }
void* GNMI_GetRequest_GetPrefix(void* ctx) {
  return HandleOrNull(GNMI_GetRequest_HasPrefix(ctx), GetRequest(ctx).prefix());
}
void* GNMI_GetRequest_GetPath(void* ctx, int index) {
  return HandleAt(GetRequest(ctx).path(), index, kGnmiIndexSite);
}
int GNMI_GetRequest_PathSizeof(void* ctx) { return GetRequest(ctx).path_size(); }
int GNMI_GetRequest_GetType(void* ctx) { return GetRequest(ctx).type(); }
int GNMI_GetRequest_GetEncoding(void* ctx) { return GetRequest(ctx).encoding(); }
void* GNMI_GetRequest_GetUseModels(void* ctx, int index) {
  return HandleAt(GetRequest(ctx).use_models(), index, kGnmiIndexSite);
}
int GNMI_GetRequest_UseModelsSizeof(void* ctx) { return GetRequest(ctx).use_models_size(); }
void* GNMI_GetRequest_GetExtension(void* ctx, int index) {
  return HandleAt(GetRequest(ctx).extension(), index, kGnmiIndexSite);
}
int GNMI_GetRequest_ExtensionSizeof(void* ctx) { return GetRequest(ctx).extension_size(); }

void* GNMI_GetResponse_AppendNotification(void* ctx) {
  return AppendTo(GetResponse(ctx)->mutable_notification());
}

int GNMI_SetRequest_HasPrefix(void* ctx) { return SetRequest(ctx).has_prefix(); }
void* GNMI_SetRequest_GetPrefix(void* ctx) {
  return HandleOrNull(GNMI_SetRequest_HasPrefix(ctx), SetRequest(ctx).prefix());
}
void* GNMI_SetRequest_GetDelete(void* ctx, int index) {
  return HandleAt(SetRequest(ctx).delete_(), index, kGnmiIndexSite);
}
int GNMI_SetRequest_DeleteSizeof(void* ctx) { return SetRequest(ctx).delete__size(); }
void* GNMI_SetRequest_GetReplace(void* ctx, int index) {
  return HandleAt(SetRequest(ctx).replace(), index, kGnmiIndexSite);
}
int GNMI_SetRequest_ReplaceSizeof(void* ctx) { return SetRequest(ctx).replace_size(); }
void* GNMI_SetRequest_GetUpdate(void* ctx, int index) {
  return HandleAt(SetRequest(ctx).update(), index, kGnmiIndexSite);
}
int GNMI_SetRequest_UpdateSizeof(void* ctx) { return SetRequest(ctx).update_size(); }
void* GNMI_SetRequest_GetExtension(void* ctx, int index) {
  return HandleAt(SetRequest(ctx).extension(), index, kGnmiIndexSite);
}
int GNMI_SetRequest_ExtensionSizeof(void* ctx) { return SetRequest(ctx).extension_size(); }

void* GNMI_SetResponse_AddPrefix(void* ctx) { return SetResponse(ctx)->mutable_prefix(); }
void* GNMI_SetResponse_AppendUpdateResult(void* ctx) {
  return AppendTo(SetResponse(ctx)->mutable_response());
}
void GNMI_SetResponse_SetTimestamp(void* ctx, int64_t timestamp) {
  SetResponse(ctx)->set_timestamp(timestamp);
}
void* GNMI_SetResponse_AppendExtension(void* ctx) {
  return AppendTo(SetResponse(ctx)->mutable_extension());
}

void* GNMI_CapabilityRequest_GetExtension(void* ctx, int index) {
  return HandleAt(CapabilityRequest(ctx).extension(), index, kGnmiIndexSite);
}
int GNMI_CapabilityRequest_ExtensionSizeof(void* ctx) {
  return CapabilityRequest(ctx).extension_size();
}

void* GNMI_CapabilityResponse_AppendSupportedModels(void* ctx) {
  return AppendTo(CapabilityResponse(ctx)->mutable_supported_models());
}
void GNMI_CapabilityResponse_AppendSupportedEncodings(void* ctx, int encoding) {
  AppendGrowing(CapabilityResponse(ctx)->mutable_supported_encodings(), encoding);
}
void* GNMI_CapabilityResponse_AppendExtension(void* ctx) {
  return AppendTo(CapabilityResponse(ctx)->mutable_extension());
}
void GNMI_CapabilityResponse_SetGnmiVersion(void* ctx, const char* text, int len) {
  AssignBytes(CapabilityResponse(ctx)->mutable_gnmi_version(), text, len);
}
