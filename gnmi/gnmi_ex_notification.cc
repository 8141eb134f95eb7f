// Accessors of notifications, updates, update results and model data, each
// reached through the message's own handle.
#include "common/builders.h"
#include "common/fatal_check.h"
#include "common/handles.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"

using mgmtmsg::AppendTo;
using mgmtmsg::As;
using mgmtmsg::AssignBytes;
using mgmtmsg::Flag;
using mgmtmsg::Handle;
using mgmtmsg::HandleAt;
using mgmtmsg::kGnmiIndexSite;

namespace {

gnmi::Notification* Notification(void* handle) { return As<gnmi::Notification>(handle); }
gnmi::Update* Update(void* handle) { return As<gnmi::Update>(handle); }
gnmi::ModelData* Model(void* handle) { return As<gnmi::ModelData>(handle); }

}  // namespace

void GNMI_Notification_SetTimestamp(void* notification, int64_t timestamp) {
  Notification(notification)->set_timestamp(timestamp);
}
int64_t GNMI_Notification_GetTimestamp(void* notification) {
  return Notification(notification)->timestamp();
}
void* GNMI_Notification_AddPrefix(void* notification) {
  return Notification(notification)->mutable_prefix();
}
int GNMI_Notification_HasPrefix(void* notification) {
  return Notification(notification)->has_prefix();
}
void* GNMI_Notification_GetPrefix(void* notification) {
  return Handle(Notification(notification)->prefix());
}
const char* GNMI_Notification_GetAlias(void* notification) {
  return Notification(notification)->alias().c_str();
}
void GNMI_Notification_SetAlias(void* notification, const char* data, uint32_t len) {
  AssignBytes(Notification(notification)->mutable_alias(), data, len);
}
void* GNMI_Notification_AppendUpdate(void* notification) {
  return AppendTo(Notification(notification)->mutable_update());
}
void* GNMI_Notification_GetUpdate(void* notification, int index) {
  return HandleAt(Notification(notification)->update(), index, kGnmiIndexSite);
}
int GNMI_Notification_UpdateSizeof(void* notification) {
  return Notification(notification)->update_size();
}
void* GNMI_Notification_AppendDelete(void* notification) {
  return AppendTo(Notification(notification)->mutable_delete_());
}
void* GNMI_Notification_GetDelete(void* notification, int index) {
  return HandleAt(Notification(notification)->delete_(), index, kGnmiIndexSite);
}
int GNMI_Notification_DeleteSizeof(void* notification) {
  return Notification(notification)->delete__size();
}
void GNMI_Notification_SetAtomic(void* notification, int flag) {
  Notification(notification)->set_atomic(Flag(flag));
}
int GNMI_Notification_GetAtomic(void* notification) { return Notification(notification)->atomic(); }

void* GNMI_Update_SetPath(void* update) { return Update(update)->mutable_path(); }
void* GNMI_Update_GetPath(void* update) { return Handle(Update(update)->path()); }
int GNMI_Update_HasPath(void* update) { return Update(update)->has_path(); }
void* GNMI_Update_SetVal(void* update) { return Update(update)->mutable_val(); }
void* GNMI_Update_GetVal(void* update) { return Handle(Update(update)->val()); }
int GNMI_Update_HasVal(void* update) { return Update(update)->has_val(); }
void GNMI_Update_SetDuplicates(void* update, uint32_t count) {
  Update(update)->set_duplicates(count);
}
uint32_t GNMI_Update_GetDuplicates(void* update) { return Update(update)->duplicates(); }

void* GNMI_UpdateResult_AddPath(void* result) {
  return As<gnmi::UpdateResult>(result)->mutable_path();
}
void GNMI_UpdateResult_SetOp(void* result, int op) {
  As<gnmi::UpdateResult>(result)->set_op(static_cast<gnmi::UpdateResult::Operation>(op));
}

const char* GNMI_ModelData_GetName(void* model) { return Model(model)->name().c_str(); }
const char* GNMI_ModelData_GetOrganization(void* model) {
  return Model(model)->organization().c_str();
}
const char* GNMI_ModelData_GetVersion(void* model) { return Model(model)->version().c_str(); }
void GNMI_ModelData_SetName(void* model, const char* data, uint32_t len) {
  AssignBytes(Model(model)->mutable_name(), data, len);
}
void GNMI_ModelData_SetOrganization(void* model, const char* data, uint32_t len) {
  AssignBytes(Model(model)->mutable_organization(), data, len);
}
void GNMI_ModelData_SetVersion(void* model, const char* data, uint32_t len) {
  AssignBytes(Model(model)->mutable_version(), data, len);
}
