// Every member of a TypedValue read through its own handle, and the setters
// of the members that the device interface cannot write.
#include "gnmi/gnmi_value.h"

#include <string>
#include <utility>

#include "common/builders.h"
#include "common/fatal_check.h"
#include "common/handles.h"
#include "gnmi/gnmi.pb.h"

using mgmtmsg::BytesRead;
using mgmtmsg::StringOf;

namespace {

const gnmi::TypedValue& Read(void* handle) { return *mgmtmsg::As<gnmi::TypedValue>(handle); }
gnmi::TypedValue* Write(void* handle) { return mgmtmsg::As<gnmi::TypedValue>(handle); }
const gnmi::ScalarArray& List(void* handle) { return *mgmtmsg::As<gnmi::ScalarArray>(handle); }

// Out-of-range leaf-list indices are reported from this line.
constexpr mgmtmsg::IndexCheckSite kElementSite{"gnmi_value", __LINE__, __LINE__};

}  // namespace

int32_t GNMI_TypedValue_ValueCase(void* value) { return Read(value).value_case(); }

const char* GNMI_TypedValue_ReadString(void* value, uint32_t* len) {
  return BytesRead(Read(value).string_val(), len);
}
int64_t GNMI_TypedValue_ReadInt(void* value) { return Read(value).int_val(); }
uint64_t GNMI_TypedValue_ReadUint(void* value) { return Read(value).uint_val(); }
int32_t GNMI_TypedValue_ReadBool(void* value) { return Read(value).bool_val() ? 1 : 0; }
const char* GNMI_TypedValue_ReadBytes(void* value, uint32_t* len) {
  return BytesRead(Read(value).bytes_val(), len);
}
float GNMI_TypedValue_ReadFloat(void* value) { return Read(value).float_val(); }
int64_t GNMI_TypedValue_ReadDecimal(void* value, uint32_t* precision) {
  const gnmi::Decimal64& decimal = Read(value).decimal_val();
  if (precision != nullptr) {
    *precision = decimal.precision();
  }
  return decimal.digits();
}
void* GNMI_TypedValue_ReadLeaflist(void* value) {
  return mgmtmsg::Handle(Read(value).leaflist_val());
}
int32_t GNMI_ScalarArray_ElementCount(void* leaflist) { return List(leaflist).element_size(); }
void* GNMI_ScalarArray_Element(void* leaflist, int32_t index) {
  return mgmtmsg::HandleAt(List(leaflist).element(), index, kElementSite);
}
const char* GNMI_TypedValue_ReadAnyTypeUrl(void* value, uint32_t* len) {
  return BytesRead(Read(value).any_val().type_url(), len);
}
const char* GNMI_TypedValue_ReadAnyValue(void* value, uint32_t* len) {
  return BytesRead(Read(value).any_val().value(), len);
}
const char* GNMI_TypedValue_ReadJson(void* value, uint32_t* len) {
  return BytesRead(Read(value).json_val(), len);
}
const char* GNMI_TypedValue_ReadJsonIetf(void* value, uint32_t* len) {
  return BytesRead(Read(value).json_ietf_val(), len);
}
const char* GNMI_TypedValue_ReadAscii(void* value, uint32_t* len) {
  return BytesRead(Read(value).ascii_val(), len);
}
const char* GNMI_TypedValue_ReadProtoBytes(void* value, uint32_t* len) {
  return BytesRead(Read(value).proto_bytes(), len);
}

void GNMI_TypedValue_SetBytesVal(void* value, const char* data, uint32_t len) {
  Write(value)->set_bytes_val(StringOf(data, len));
}
void GNMI_TypedValue_SetAsciiVal(void* value, const char* data, uint32_t len) {
  Write(value)->set_ascii_val(StringOf(data, len));
}
void GNMI_TypedValue_SetDecimalVal(void* value, int64_t digits, uint32_t precision) {
  gnmi::TypedValue* typed = Write(value);
  gnmi::Decimal64* decimal =
      mgmtmsg::OneofMember(typed, typed->has_decimal_val(), &gnmi::TypedValue::mutable_decimal_val,
                           &gnmi::TypedValue::unsafe_arena_set_allocated_decimal_val);
  decimal->set_digits(digits);
  decimal->set_precision(precision);
}
void GNMI_TypedValue_SetAnyVal(void* value, const char* typeUrl, uint32_t urlLen, const char* data,
                               uint32_t len) {
  // Both copies are made before the value is touched.
  std::string url = StringOf(typeUrl, urlLen);
  std::string bytes = StringOf(data, len);
  gnmi::TypedValue* typed = Write(value);
  google::protobuf::Any* any =
      mgmtmsg::OneofMember(typed, typed->has_any_val(), &gnmi::TypedValue::mutable_any_val,
                           &gnmi::TypedValue::unsafe_arena_set_allocated_any_val);
  any->set_type_url(std::move(url));
  any->set_value(std::move(bytes));
}
