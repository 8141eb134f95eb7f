// Subscribe request bytes from outside: parsed and walked through the
// readers (the oneof, the list's settings, every subscription and its path).
// The update response carries an update per subscription (its path copied
// through the setters, its sample interval as value, its mode as duplicates),
// the sync response true; both responses' bytes must carry exactly that.
#include "fuzz/walk.h"
#include "gnmi/gnmi_ex.h"

using namespace fuzzwalk;

namespace {

struct Subscription {
  PathView path;
  uint64_t sampleInterval;
  int mode;
};

// The list's settings: defaults and no prefix unless the request is a subscribe.
void ReadList(void* ctx) {
  const int cases = GNMI_SubscribeRequest_HasSubscribe(ctx) + GNMI_SubscribeRequest_HasPoll(ctx) +
                    GNMI_SubscribeRequest_HasAliases(ctx);
  Check(cases <= 1, "more than one member of the oneof");
  GNMI_SubscribeRequest_ExtensionSizeof(ctx);
  const bool defaults = GNMI_SubscribeRequest_SubscriptionSize(ctx) == 0 &&
                        GNMI_SubscribeRequest_UseModelsSizeof(ctx) == 0 &&
                        GNMI_SubscribeRequest_UseAliases(ctx) == 0 &&
                        GNMI_SubscribeRequest_GetAggregation(ctx) == 0 &&
                        GNMI_SubscribeRequest_GetUpdatesOnly(ctx) == 0 &&
                        GNMI_SubscribeRequest_GetSubscriptionMode(ctx) == 0 &&
                        GNMI_SubscribeRequest_GetEncoding(ctx) == 0 &&
                        GNMI_SubscribeRequest_HasQosMarking(ctx) == 0 &&
                        GNMI_SubscribeRequest_GetQosMarking(ctx) == 0 &&
                        GNMI_SubscribeRequest_HasPrefix(ctx) == 0;
  Check(GNMI_SubscribeRequest_HasSubscribe(ctx) == 1 || defaults,
        "a list read from a request that is no subscribe");
}

std::vector<Subscription> ReadSubscriptions(void* ctx) {
  const int count = GNMI_SubscribeRequest_SubscriptionSize(ctx);
  std::vector<Subscription> subscriptions;
  for (int i = 0; i < count; ++i) {
    Check(GNMI_SubscribeRequest_GetSubscribe(ctx, i) != nullptr, "subscription");
    GNMI_SubscribeRequest_GetHeartbeatInterval(ctx, i);
    GNMI_SubscribeRequest_GetSuppressRedundant(ctx, i);
    subscriptions.push_back({ReadPath(GNMI_SubscribeRequest_GetPath(ctx, i)),
                             GNMI_SubscribeRequest_GetSampleInterval(ctx, i),
                             GNMI_SubscribeRequest_GetSampleMode(ctx, i)});
  }
  Check(GNMI_SubscribeRequest_GetSubscribe(ctx, count) == nullptr &&
            GNMI_SubscribeRequest_GetPath(ctx, count) == nullptr,
        "a subscription past the end");
  return subscriptions;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto ctx =
      Parsed<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>(GNMI_SubscribeRequest_Parse, data, size);
  if (!ctx) return 0;
  ReadList(ctx.get());
  const auto prefix =
      ReadPrefix(ctx.get(), GNMI_SubscribeRequest_HasPrefix, GNMI_SubscribeRequest_GetPrefix);
  const std::vector<Subscription> subscriptions = ReadSubscriptions(ctx.get());

  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  if (prefix) WritePath(*prefix, GNMI_Notification_AddPrefix(notification));
  for (const Subscription& subscription : subscriptions) {
    void* update = GNMI_Notification_AppendUpdate(notification);
    WritePath(subscription.path, GNMI_Update_SetPath(update));
    GNMI_TypedValue_SetUintVal(GNMI_Update_SetVal(update), subscription.sampleInterval);
    GNMI_Update_SetDuplicates(update, static_cast<uint32_t>(subscription.mode));
  }
  for (size_t i = 0; i < subscriptions.size(); ++i) {
    void* update = GNMI_SubscribeRequest_GetUpdate(ctx.get(), static_cast<int>(i));
    Check(GNMI_Update_GetDuplicates(update) == static_cast<uint32_t>(subscriptions[i].mode),
          "update read back");
  }
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);

  const auto response = Reply<gnmi::SubscribeResponse>(GNMI_SubscribeResponse_Serialize, ctx.get());
  Check(response.has_update(), "notification");
  Check(response.update().has_prefix() == prefix.has_value(), "notification prefix");
  if (prefix) CheckEqual(response.update().prefix(), Expected(*prefix), "prefix");
  Check(response.update().update_size() == static_cast<int>(subscriptions.size()), "updates");
  for (size_t i = 0; i < subscriptions.size(); ++i) {
    const gnmi::Update& update = response.update().update(static_cast<int>(i));
    CheckEqual(update.path(), Expected(subscriptions[i].path), "path");
    Check(update.val().uint_val() == subscriptions[i].sampleInterval, "value");
    Check(update.duplicates() == static_cast<uint32_t>(subscriptions[i].mode), "duplicates");
  }
  Check(Reply<gnmi::SubscribeResponse>(GNMI_SubscribeSyncResponse_Serialize, ctx.get())
            .sync_response(),
        "sync");
  return 0;
}
