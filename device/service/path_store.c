#include "path_store.h"

#include <gnmi/gnmi_ex.h>
#include <gnmi/gnmi_path.h>
#include <string.h>

int path_store_init(struct path_store* store) {
  store->ctx = GNMI_Get_Init();
  if (store->ctx == NULL) return 0;
  store->notification = GNMI_GetResponse_AppendNotification(store->ctx);
  return 1;
}

void* path_store_add(struct path_store* store) {
  return GNMI_Update_SetPath(GNMI_Notification_AppendUpdate(store->notification));
}

void* path_store_parse(struct path_store* store, const char* text) {
  void* path = path_store_add(store);
  return GNMI_Path_FromString(path, text, (uint32_t)strlen(text), NULL) ? path : NULL;
}

void* path_store_join(struct path_store* store, void* prefix, void* path) {
  void* joined = path_store_add(store);
  GNMI_Path_CopyFrom(joined, prefix != NULL ? prefix : path);
  if (prefix != NULL) GNMI_Path_AppendElems(joined, path);
  return joined;
}

void path_store_free(struct path_store* store) {
  GNMI_Get_DeInit(store->ctx);
  store->ctx = store->notification = NULL;
}
