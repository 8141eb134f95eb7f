// The Get, Set and Subscribe contexts as families of a reply that a reset
// empties: a request of two entries, and a reply made of a root (the
// notification, or the Set response itself) with elements appended to it.
#ifndef MGMTMSG_TESTS_SUPPORT_REPLY_FAMILIES_H
#define MGMTMSG_TESTS_SUPPORT_REPLY_FAMILIES_H

#include <memory>
#include <string>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_stream.h"
#include "support/gnmi_access.h"

namespace testsupport {

struct ReplyFamily {
  void* (*init)();
  void (*deinit)(void*);
  int (*parse)(void*, const void*, int);
  std::string request;        // two paths, deletes or subscriptions
  int (*requestSize)(void*);  // their count
  int (*reset)(void*);
  int (*serialize)(void*, void**, int*);
  void* (*root)(void*);    // the reply's notification, or the context itself
  void* (*append)(void*);  // an update, or an update result, appended to the root

  // Builds `steps` steps of a reply, the root and then appends; `*done`
  // counts the steps that returned.
  void Build(void* ctx, int steps, int* done) const {
    *done = 0;
    if (steps > 0) {
      void* first = root(ctx);
      for (*done = 1; *done < steps; ++*done) append(first);
    }
  }
  // The bytes of that reply built on a fresh context.
  std::string Fresh(int steps) const {
    const std::unique_ptr<void, void (*)(void*)> ctx(init(), deinit);
    int done = 0;
    Build(ctx.get(), steps, &done);
    return Serialized(serialize, ctx.get());
  }
};

inline const ReplyFamily kReplyFamilies[] = {
    {GNMI_Get_Init, GNMI_Get_DeInit, GNMI_GetRequest_Parse, std::string("\x12\0\x12\0", 4),
     GNMI_GetRequest_PathSizeof, GNMI_GetResponse_Reset, GNMI_GetResponse_Serialize,
     GNMI_GetResponse_AppendNotification, GNMI_Notification_AppendUpdate},
    {GNMI_Set_Init, GNMI_Set_DeInit, GNMI_SetRequest_Parse, std::string("\x12\0\x12\0", 4),
     GNMI_SetRequest_DeleteSizeof, GNMI_SetResponse_Reset, GNMI_SetResponse_Serialize,
     [](void* ctx) { return ctx; }, GNMI_SetResponse_AppendUpdateResult},
    {GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, GNMI_SubscribeRequest_Parse,
     std::string("\x0a\x04\x12\0\x12\0", 6), GNMI_SubscribeRequest_SubscriptionSize,
     GNMI_SubscribeResponse_Reset, GNMI_SubscribeResponse_Serialize,
     GNMI_SubscribeResponse_GetNotification, GNMI_Notification_AppendUpdate},
};

}  // namespace testsupport

#endif
