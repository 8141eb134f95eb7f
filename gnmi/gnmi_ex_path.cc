// Accessors of paths, path elements with their keys, and typed values, each
// reached through the message's own handle.
#include <string>
#include <utility>

#include "common/builders.h"
#include "common/fatal_check.h"
#include "common/handles.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"

using mgmtmsg::AppendTo;
using mgmtmsg::As;
using mgmtmsg::AssignBytes;
using mgmtmsg::Flag;
using mgmtmsg::StringOf;

namespace {

using KeyMap = google::protobuf::Map<std::string, std::string>;

gnmi::TypedValue* Value(void* handle) { return As<gnmi::TypedValue>(handle); }
gnmi::Path* Path(void* handle) { return As<gnmi::Path>(handle); }
gnmi::PathElem* Elem(void* handle) { return As<gnmi::PathElem>(handle); }

// The entry `index` steps from the first in the map's own order (the first
// for a negative index), or the end when the map runs out before.
KeyMap::const_iterator KeyAt(const KeyMap& keys, int index) {
  auto entry = keys.begin();
  for (int step = 0; step < index && entry != keys.end(); ++step) {
    ++entry;
  }
  return entry;
}

void StoreKey(const KeyMap& keys, KeyMap::const_iterator entry, const char** key,
              const char** value) {
  const bool found = entry != keys.end();
  *key = found ? entry->first.c_str() : "";
  *value = found ? entry->second.c_str() : "";
}

}  // namespace

void GNMI_TypedValue_SetStringVal(void* value, const char* data, uint32_t len) {
  AssignBytes(Value(value)->mutable_string_val(), data, len);
}
void GNMI_TypedValue_SetIntVal(void* value, int64_t number) { Value(value)->set_int_val(number); }
void GNMI_TypedValue_SetUintVal(void* value, uint64_t number) {
  Value(value)->set_uint_val(number);
}
void GNMI_TypedValue_SetBoolVal(void* value, int flag) { Value(value)->set_bool_val(Flag(flag)); }
void GNMI_TypedValue_SetFloatVal(void* value, float number) { Value(value)->set_float_val(number); }
void* GNMI_TypedValue_LeaflistVal(void* value) {
  gnmi::TypedValue* typed = Value(value);
  return mgmtmsg::OneofMember(typed, typed->has_leaflist_val(),
                              &gnmi::TypedValue::mutable_leaflist_val,
                              &gnmi::TypedValue::unsafe_arena_set_allocated_leaflist_val);
}
void* GNMI_TypedValue_AddElement(void* leaflist) {
  return AppendTo(As<gnmi::ScalarArray>(leaflist)->mutable_element());
}
void GNMI_TypedValue_SetJsonVal(void* value, const char* data, uint32_t len) {
  AssignBytes(Value(value)->mutable_json_val(), data, len);
}
const char* GNMI_TypedValue_GetJsonVal(void* value) { return Value(value)->json_val().c_str(); }
void GNMI_TypedValue_SetJsonIetfVal(void* value, const char* data, uint32_t len) {
  AssignBytes(Value(value)->mutable_json_ietf_val(), data, len);
}
void GNMI_TypedValue_SetJsonietf_Val(void* value, const char* data, uint32_t len) {
  GNMI_TypedValue_SetJsonIetfVal(value, data, len);
}
void GNMI_TypedValue_SetProtoBytes(void* value, const char* data, uint32_t len) {
  AssignBytes(Value(value)->mutable_proto_bytes(), data, len);
}

const char* GNMI_Path_GetOrigin(void* path) { return Path(path)->origin().c_str(); }
void GNMI_Path_SetOrigin(void* path, const char* data, uint32_t len) {
  AssignBytes(Path(path)->mutable_origin(), data, len);
}
const char* GNMI_Path_GetTarget(void* path) { return Path(path)->target().c_str(); }
void GNMI_Path_SetTarget(void* path, const char* data, uint32_t len) {
  AssignBytes(Path(path)->mutable_target(), data, len);
}
void* GNMI_Path_AppendPathElem(void* path) { return AppendTo(Path(path)->mutable_elem()); }
void* GNMI_Path_GetPathElem(void* path, int index) {
  return mgmtmsg::HandleAt(Path(path)->elem(), index, mgmtmsg::kGnmiIndexSite);
}
int GNMI_Path_PathElemSizeof(void* path) { return Path(path)->elem_size(); }

const char* GNMI_PathElem_GetName(void* elem) { return Elem(elem)->name().c_str(); }
void GNMI_PathElem_SetName(void* elem, const char* data, uint32_t len) {
  AssignBytes(Elem(elem)->mutable_name(), data, len);
}
int GNMI_PathElem_KeySizeof(void* elem) { return Elem(elem)->key_size(); }
void GNMI_PathElem_GetKey(void* elem, int index, const char** key, const char** value) {
  const KeyMap& keys = Elem(elem)->key();
  StoreKey(keys, KeyAt(keys, index), key, value);
}
void GNMI_PathElem_AppendKey(void* elem, const char* key, uint32_t keyLen, const char* value,
                             uint32_t valueLen) {
  // Both copies are made before the map is touched, so that running out of
  // memory for either leaves the element as it was.
  std::string keyText = StringOf(key, keyLen);
  std::string valueText = StringOf(value, valueLen);
  (*Elem(elem)->mutable_key())[std::move(keyText)] = std::move(valueText);
}
