// Typed values, paths and path element keys, reached through the messages'
// own handles.
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "support/gnmi_access.h"

namespace {

TEST(GnmiTypedValue, OneofMembersReplaceEachOtherAndReadingNeverSwitches) {
  gnmi::TypedValue value;
  GNMI_TypedValue_SetStringVal(&value, "up", 2);
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(&value), "");
  EXPECT_EQ(value.value_case(), gnmi::TypedValue::kStringVal);

  // A setter whose bytes are refused has already switched to its own member.
  EXPECT_THROW(GNMI_TypedValue_SetProtoBytes(&value, nullptr, 1), std::logic_error);
  EXPECT_EQ(value.SerializeAsString(), std::string("\x6a\x00", 2));

  // Field 6 as fixed32: the 32-bit float 0.1 is 0x3dcccccd, little-endian.
  GNMI_TypedValue_SetFloatVal(&value, 0.1f);
  EXPECT_EQ(value.SerializeAsString(), "\x35\xcd\xcc\xcc\x3d");
  GNMI_TypedValue_SetUintVal(&value, 1u << 31);
  EXPECT_EQ(value.SerializeAsString(), "\x18\x80\x80\x80\x80\x08");
  GNMI_TypedValue_SetIntVal(&value, -2);
  EXPECT_EQ(value.int_val(), -2);
}

TEST(GnmiTypedValue, LeafListStaysTheSameUntilAnotherMemberIsSet) {
  gnmi::TypedValue value;
  void* list = GNMI_TypedValue_LeaflistVal(&value);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(list), 1);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(list), 2);
  EXPECT_EQ(GNMI_TypedValue_LeaflistVal(&value), list);
  EXPECT_EQ(value.leaflist_val().element_size(), 2);

  GNMI_TypedValue_SetIntVal(&value, 3);
  EXPECT_EQ(static_cast<gnmi::ScalarArray*>(GNMI_TypedValue_LeaflistVal(&value))->element_size(),
            0);
  EXPECT_EQ(value.SerializeAsString(), std::string("\x42\x00", 2));
}

TEST(GnmiPath, ElementsAreIndexChecked) {
  gnmi::Path path;
  GNMI_Path_AppendPathElem(&path);
  GNMI_Path_AppendPathElem(&path);
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
  const std::pair<std::string, std::string> none;
  EXPECT_EQ(KeyAt(&elem, 0), none);

  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth0", 4);
  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth1", 4);
  EXPECT_EQ(GNMI_PathElem_KeySizeof(&elem), 1);
  GNMI_PathElem_AppendKey(&elem, "unit\0x", 6, nullptr, 0);
  ASSERT_EQ(GNMI_PathElem_KeySizeof(&elem), 2);
  EXPECT_EQ(elem.key().at(std::string("unit\0x", 6)), "");
  const std::map<std::string, std::string> seen{KeyAt(&elem, 0), KeyAt(&elem, 1)};
  EXPECT_EQ(seen, (std::map<std::string, std::string>{{"name", "eth1"}, {"unit", ""}}));
  EXPECT_EQ(KeyAt(&elem, -5), KeyAt(&elem, 0));
  EXPECT_EQ(KeyAt(&elem, 2), none);
  EXPECT_EQ(KeyAt(&elem, 1000), none);

  EXPECT_THROW(GNMI_PathElem_AppendKey(&elem, nullptr, 1, "v", 1), std::logic_error);
  EXPECT_THROW(GNMI_PathElem_AppendKey(&elem, "k", 1, nullptr, 1), std::logic_error);
  EXPECT_EQ(GNMI_PathElem_KeySizeof(&elem), 2);
}

}  // namespace
