// Get request bytes from outside: parsed and walked through the readers;
// the response carries one notification per requested path (the prefix and
// the path copied through the setters, the path's target as its value), and
// its bytes must carry exactly what the readers returned.
#include "fuzz/walk.h"
#include "gnmi/gnmi_ex.h"

using namespace fuzzwalk;

namespace {

void ReadModels(void* ctx) {
  for (int i = 0; i < GNMI_GetRequest_UseModelsSizeof(ctx); ++i) {
    void* model = GNMI_GetRequest_GetUseModels(ctx, i);
    Read(GNMI_ModelData_GetName(model));
    Read(GNMI_ModelData_GetOrganization(model));
    Read(GNMI_ModelData_GetVersion(model));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto ctx = Parsed<GNMI_Get_Init, GNMI_Get_DeInit>(GNMI_GetRequest_Parse, data, size);
  if (!ctx) return 0;
  const auto prefix = ReadPrefix(ctx.get(), GNMI_GetRequest_HasPrefix, GNMI_GetRequest_GetPrefix);
  std::vector<PathView> paths;
  paths.reserve(static_cast<size_t>(GNMI_GetRequest_PathSizeof(ctx.get())));
  for (int i = 0; i < GNMI_GetRequest_PathSizeof(ctx.get()); ++i) {
    paths.push_back(ReadPath(GNMI_GetRequest_GetPath(ctx.get(), i)));
  }
  GNMI_GetRequest_GetType(ctx.get());
  GNMI_GetRequest_GetEncoding(ctx.get());
  ReadModels(ctx.get());
  ReadExtensions(ctx.get(), GNMI_GetRequest_ExtensionSizeof, GNMI_GetRequest_GetExtension);

  for (size_t i = 0; i < paths.size(); ++i) {
    void* notification = GNMI_GetResponse_AppendNotification(ctx.get());
    GNMI_Notification_SetTimestamp(notification, static_cast<int64_t>(i));
    if (prefix) WritePath(*prefix, GNMI_Notification_AddPrefix(notification));
    void* update = GNMI_Notification_AppendUpdate(notification);
    WritePath(paths[i], GNMI_Update_SetPath(update));
    GNMI_TypedValue_SetJsonIetfVal(GNMI_Update_SetVal(update), paths[i].target.data(),
                                   Len(paths[i].target));
  }

  const auto response = Reply<gnmi::GetResponse>(GNMI_GetResponse_Serialize, ctx.get());
  Check(response.notification_size() == static_cast<int>(paths.size()), "notification count");
  for (size_t i = 0; i < paths.size(); ++i) {
    const gnmi::Notification& notification = response.notification(static_cast<int>(i));
    Check(notification.timestamp() == static_cast<int64_t>(i), "timestamp");
    Check(notification.has_prefix() == prefix.has_value(), "notification prefix");
    if (prefix) CheckEqual(notification.prefix(), Expected(*prefix), "prefix");
    Check(notification.update_size() == 1, "update count");
    CheckEqual(notification.update(0).path(), Expected(paths[i]), "path");
    Check(notification.update(0).val().json_ietf_val() == paths[i].target, "value");
  }
  return 0;
}
