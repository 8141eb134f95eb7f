// Path, path element and typed value accessors, on messages reached through
// their own handles.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "support/gnmi_access.h"

namespace {

std::string Encode(const gnmi::TypedValue& value) { return value.SerializeAsString(); }

TEST(GnmiTypedValue, OnlyJsonValReadsBackAndReadingNeverSwitchesTheMember) {
  gnmi::TypedValue value;
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(&value), "");
  GNMI_TypedValue_SetStringVal(&value, "up", 2);
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(&value), "");
  EXPECT_EQ(value.value_case(), gnmi::TypedValue::kStringVal);
  GNMI_TypedValue_SetJsonVal(&value, "{\"mtu\":1500}", 12);
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(&value), "{\"mtu\":1500}");
  EXPECT_EQ(value.string_val(), "");

  // A setter whose bytes are refused has already switched to its own member.
  EXPECT_THROW(GNMI_TypedValue_SetProtoBytes(&value, nullptr, 1), std::logic_error);
  EXPECT_EQ(value.value_case(), gnmi::TypedValue::kProtoBytes);
  EXPECT_EQ(Encode(value), std::string("\x6a\x00", 2));
}

TEST(GnmiTypedValue, ScalarsOnTheWire) {
  gnmi::TypedValue value;
  GNMI_TypedValue_SetBoolVal(&value, -1);
  EXPECT_EQ(Encode(value), "\x20\x01");
  GNMI_TypedValue_SetBoolVal(&value, 0);
  EXPECT_EQ(Encode(value), std::string("\x20\x00", 2));

  // Field 6 as fixed32: the 32-bit float 0.1 is 0x3dcccccd, little-endian.
  GNMI_TypedValue_SetFloatVal(&value, 0.1f);
  EXPECT_EQ(Encode(value), "\x35\xcd\xcc\xcc\x3d");
  EXPECT_EQ(value.float_val(), 0.1f);

  GNMI_TypedValue_SetIntVal(&value, -2);
  EXPECT_EQ(value.int_val(), -2);
  GNMI_TypedValue_SetUintVal(&value, UINT64_MAX);
  EXPECT_EQ(Encode(value), "\x18\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01");
  GNMI_TypedValue_SetStringVal(&value, "a\0b", 3);
  EXPECT_EQ(Encode(value), std::string("\x0a\x03"
                                       "a\0b",
                                       5));
}

TEST(GnmiTypedValue, LeafListStaysUntilAnotherMemberIsSet) {
  gnmi::TypedValue value;
  void* list = GNMI_TypedValue_LeaflistVal(&value);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(list), 1);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(list), 2);
  EXPECT_EQ(GNMI_TypedValue_LeaflistVal(&value), list);
  EXPECT_EQ(value.leaflist_val().element_size(), 2);

  GNMI_TypedValue_SetIntVal(&value, 3);
  EXPECT_EQ(value.leaflist_val().element_size(), 0);
  EXPECT_EQ(static_cast<gnmi::ScalarArray*>(GNMI_TypedValue_LeaflistVal(&value))->element_size(),
            0);
  EXPECT_EQ(Encode(value), std::string("\x42\x00", 2));
}

TEST(GnmiTypedValue, BothIetfJsonNamesWriteTheSameBytes) {
  gnmi::TypedValue first;
  gnmi::TypedValue second;
  GNMI_TypedValue_SetStringVal(&second, "x", 1);
  GNMI_TypedValue_SetJsonIetfVal(&first, "{\"a\":\0}", 7);
  GNMI_TypedValue_SetJsonietf_Val(&second, "{\"a\":\0}", 7);
  EXPECT_EQ(Encode(first), Encode(second));
  EXPECT_EQ(Encode(first), std::string("\x5a\x07{\"a\":\0}", 9));
}

TEST(GnmiPath, StringsElementsAndIndexChecks) {
  gnmi::Path path;
  const char* origin = GNMI_Path_GetOrigin(&path);
  ASSERT_NE(origin, nullptr);
  EXPECT_STREQ(origin, "");
  GNMI_Path_SetTarget(&path, "abc\0def", 7);
  EXPECT_STREQ(GNMI_Path_GetTarget(&path), "abc");
  EXPECT_EQ(path.target(), std::string("abc\0def", 7));
  GNMI_Path_SetOrigin(&path, "openconfig", 10);
  EXPECT_STREQ(GNMI_Path_GetOrigin(&path), "openconfig");
  EXPECT_THROW(GNMI_Path_SetOrigin(&path, nullptr, 3), std::logic_error);
  EXPECT_STREQ(GNMI_Path_GetOrigin(&path), "openconfig");

  for (const char* name : {"interfaces", "interface"}) {
    GNMI_PathElem_SetName(GNMI_Path_AppendPathElem(&path), name, std::strlen(name));
  }
  EXPECT_STREQ(GNMI_PathElem_GetName(GNMI_Path_GetPathElem(&path, 1)), "interface");
  testsupport::ExpectIndexedReader(&path, GNMI_Path_GetPathElem, GNMI_Path_PathElemSizeof,
                                   path.elem());
}

// The pair GNMI_PathElem_GetKey stores for `index`.
std::pair<std::string, std::string> KeyAt(gnmi::PathElem* elem, int index) {
  const char* key = nullptr;
  const char* value = nullptr;
  GNMI_PathElem_GetKey(elem, index, &key, &value);
  return {key, value};
}

TEST(GnmiPathElem, AppendKeyOverwritesAndGetKeyWalksByPosition) {
  gnmi::PathElem elem;
  EXPECT_EQ(KeyAt(&elem, 0), std::make_pair(std::string(), std::string()));

  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth0", 4);
  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth1", 4);
  EXPECT_EQ(GNMI_PathElem_KeySizeof(&elem), 1);
  EXPECT_EQ(KeyAt(&elem, 0), std::make_pair(std::string("name"), std::string("eth1")));

  GNMI_PathElem_AppendKey(&elem, "unit\0x", 6, nullptr, 0);
  ASSERT_EQ(GNMI_PathElem_KeySizeof(&elem), 2);
  std::map<std::string, std::string> seen{KeyAt(&elem, 0), KeyAt(&elem, 1)};
  EXPECT_EQ(seen, (std::map<std::string, std::string>{{"name", "eth1"}, {"unit", ""}}));
  EXPECT_EQ(elem.key().at(std::string("unit\0x", 6)), "");
  EXPECT_EQ(KeyAt(&elem, -5), KeyAt(&elem, 0));
  EXPECT_EQ(KeyAt(&elem, 2), std::make_pair(std::string(), std::string()));
  EXPECT_EQ(KeyAt(&elem, 1000), std::make_pair(std::string(), std::string()));

  EXPECT_THROW(GNMI_PathElem_AppendKey(&elem, nullptr, 1, "v", 1), std::logic_error);
  EXPECT_THROW(GNMI_PathElem_AppendKey(&elem, "k", 1, nullptr, 1), std::logic_error);
  EXPECT_EQ(GNMI_PathElem_KeySizeof(&elem), 2);
}

TEST(GnmiPathElem, KeyRepeatedOnTheWireCountsOnceWithTheLastValue) {
  // name "if", then key name=eth0 and key name=eth1.
  const std::string wire(
      "\x0a\x02if"
      "\x12\x0c\x0a\x04name\x12\x04"
      "eth0"
      "\x12\x0c\x0a\x04name\x12\x04"
      "eth1",
      32);
  gnmi::PathElem elem;
  ASSERT_TRUE(elem.ParseFromString(wire));
  EXPECT_EQ(GNMI_PathElem_KeySizeof(&elem), 1);
  EXPECT_EQ(KeyAt(&elem, 0), std::make_pair(std::string("name"), std::string("eth1")));
}

}  // namespace
