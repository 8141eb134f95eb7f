// Readers of the Subscribe request and builders of its two responses, all
// reached through the Subscribe context.
#include "common/builders.h"
#include "common/fatal_check.h"
#include "common/handles.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"

using mgmtmsg::As;
using mgmtmsg::Flag;
using mgmtmsg::Handle;
using mgmtmsg::HandleAt;
using mgmtmsg::HandleOrNull;
using mgmtmsg::SwitchOneofTo;

namespace {

gnmi::SubscribeRequest* Request(void* ctx) { return As<GnmiRpcSubscribe>(ctx)->GetRequest_(); }

// The subscription list when the request is a subscribe, else the list's
// shared default instance (empty, every field at its default).
const gnmi::SubscriptionList& View(void* ctx) { return Request(ctx)->subscribe(); }

// Entry `index` of the view's subscriptions, fatal outside the list.
const gnmi::Subscription& Entry(void* ctx, int index) {
  return mgmtmsg::CheckedAt(View(ctx).subscription(), index, mgmtmsg::kGnmiSubscriptionSite);
}

// The range-tested readers answer null for an index at or past the end.
bool PastEnd(void* ctx, int index) { return index >= GNMI_SubscribeRequest_SubscriptionSize(ctx); }

}  // namespace

int GNMI_SubscribeRequest_HasSubscribe(void* ctx) { return Request(ctx)->has_subscribe(); }
int GNMI_SubscribeRequest_HasPoll(void* ctx) { return Request(ctx)->has_poll(); }
int GNMI_SubscribeRequest_HasAliases(void* ctx) { return Request(ctx)->has_aliases(); }
int GNMI_SubscribeRequest_ExtensionSizeof(void* ctx) { return Request(ctx)->extension_size(); }

int GNMI_SubscribeRequest_SubscriptionSize(void* ctx) { return View(ctx).subscription_size(); }
int GNMI_SubscribeRequest_UseModelsSizeof(void* ctx) { return View(ctx).use_models_size(); }
int GNMI_SubscribeRequest_UseAliases(void* ctx) { return View(ctx).use_aliases(); }
int GNMI_SubscribeRequest_GetAggregation(void* ctx) { return View(ctx).allow_aggregation(); }
int GNMI_SubscribeRequest_GetUpdatesOnly(void* ctx) { return View(ctx).updates_only(); }
int GNMI_SubscribeRequest_GetSubscriptionMode(void* ctx) { return View(ctx).mode(); }
int GNMI_SubscribeRequest_GetEncoding(void* ctx) { return View(ctx).encoding(); }
int GNMI_SubscribeRequest_HasPrefix(void* ctx) { return View(ctx).has_prefix(); }
void* GNMI_SubscribeRequest_GetPrefix(void* ctx) {
  return HandleOrNull(GNMI_SubscribeRequest_HasPrefix(ctx), View(ctx).prefix());
}
int GNMI_SubscribeRequest_HasQosMarking(void* ctx) { return View(ctx).has_qos(); }
uint32_t GNMI_SubscribeRequest_GetQosMarking(void* ctx) { return View(ctx).qos().marking(); }

void* GNMI_SubscribeRequest_GetSubscribe(void* ctx, int index) {
  return PastEnd(ctx, index) ? nullptr : Handle(Entry(ctx, index));
}
void* GNMI_SubscribeRequest_GetPath(void* ctx, int index) {
  return PastEnd(ctx, index) ? nullptr : Handle(Entry(ctx, index).path());
}
uint64_t GNMI_SubscribeRequest_GetSampleInterval(void* ctx, int index) {
  return Entry(ctx, index).sample_interval();
}
uint64_t GNMI_SubscribeRequest_GetHeartbeatInterval(void* ctx, int index) {
  return Entry(ctx, index).heartbeat_interval();
}
int GNMI_SubscribeRequest_GetSuppressRedundant(void* ctx, int index) {
  return Entry(ctx, index).suppress_redundant();
}
int GNMI_SubscribeRequest_GetSampleMode(void* ctx, int index) { return Entry(ctx, index).mode(); }

void* GNMI_SubscribeRequest_SetAliases(void* ctx) {
  gnmi::SubscribeRequest* request = Request(ctx);
  gnmi::AliasList* aliases =
      request->has_aliases()
          ? request->mutable_aliases()
          : SwitchOneofTo(request, &gnmi::SubscribeRequest::unsafe_arena_set_allocated_aliases);
  return mgmtmsg::AppendTo(aliases->mutable_alias());
}

void* GNMI_SubscribeResponse_GetNotification(void* ctx) {
  gnmi::SubscribeResponse* response = As<GnmiRpcSubscribe>(ctx)->ClaimResponse_();
  return response->has_update()
             ? response->mutable_update()
             : SwitchOneofTo(response, &gnmi::SubscribeResponse::unsafe_arena_set_allocated_update);
}
void* GNMI_SubscribeRequest_GetUpdate(void* ctx, int index) {
  return HandleAt(As<GnmiRpcSubscribe>(ctx)->ClaimResponse_()->update().update(), index,
                  mgmtmsg::kGnmiIndexSite);
}
void GNMI_SubscribeRequest_SyncResponse(void* ctx, int flag) {
  As<GnmiRpcSubscribe>(ctx)->GetSyncResponse_()->set_sync_response(Flag(flag));
}
