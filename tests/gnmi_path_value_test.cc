// The messages below a context, reached through their own handles:
// notifications, updates and update results, typed values, paths and keys.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <stdexcept>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "support/gnmi_access.h"

namespace {

using google::protobuf::Message;
using namespace std::string_literals;

TEST(GnmiSubMessages, AbsentReadsAsTheDefaultMadeOnceThenPresentAndSentEvenWhenEmpty) {
  const struct {
    const Message& type;
    const char* field;
    void* (*make)(void*);
    int (*has)(void*);    // null: no presence test
    void* (*get)(void*);  // null: no reader
  } subMessages[] = {
      {gnmi::Notification::default_instance(), "prefix", GNMI_Notification_AddPrefix,
       GNMI_Notification_HasPrefix, GNMI_Notification_GetPrefix},
      {gnmi::Update::default_instance(), "path", GNMI_Update_SetPath, GNMI_Update_HasPath,
       GNMI_Update_GetPath},
      {gnmi::Update::default_instance(), "val", GNMI_Update_SetVal, GNMI_Update_HasVal,
       GNMI_Update_GetVal},
      {gnmi::UpdateResult::default_instance(), "path", GNMI_UpdateResult_AddPath, nullptr, nullptr},
      {gnmi::TypedValue::default_instance(), "leaflist_val", GNMI_TypedValue_LeaflistVal, nullptr,
       nullptr},
  };
  for (const auto& sub : subMessages) {
    SCOPED_TRACE(sub.field);
    const std::unique_ptr<Message> message(sub.type.New());
    const auto* field = message->GetDescriptor()->FindFieldByName(sub.field);
    const Message& absent = message->GetReflection()->GetMessage(*message, field);
    if (sub.has != nullptr) {
      EXPECT_EQ(sub.has(const_cast<Message*>(&sub.type)), 0);
      EXPECT_EQ(sub.has(message.get()), 0);
      EXPECT_EQ(sub.get(message.get()), &absent);
    }
    void* made = sub.make(message.get());
    EXPECT_EQ(sub.make(message.get()), made);
    if (sub.has != nullptr) {
      EXPECT_EQ(sub.has(message.get()), 1);
      EXPECT_EQ(sub.get(message.get()), made);
    }
    const char tag = static_cast<char>(field->number() << 3 | 2);
    EXPECT_EQ(message->SerializeAsString(), std::string({tag, 0}));
  }
}

TEST(GnmiLists, NotificationAndPathListsGrowByOneAndAreIndexChecked) {
  gnmi::Notification notification;
  for (int i = 0; i < 3; ++i) {
    void* appended = GNMI_Notification_AppendDelete(&notification);
    EXPECT_EQ(appended, &notification.delete_(i));
  }
  GNMI_Notification_AppendUpdate(&notification);
  gnmi::Path path;
  GNMI_Path_AppendPathElem(&path);
  GNMI_Path_AppendPathElem(&path);
  testsupport::ExpectIndexedReaders({
      {&notification, GNMI_Notification_GetUpdate, GNMI_Notification_UpdateSizeof, notification,
       "update"},
      {&notification, GNMI_Notification_GetDelete, GNMI_Notification_DeleteSizeof, notification,
       "delete"},
      {&path, GNMI_Path_GetPathElem, GNMI_Path_PathElemSizeof, path, "elem"},
  });
}

TEST(GnmiValues, ScalarsGoOnTheWireAsGivenAndOneofMembersReplaceEachOther) {
  gnmi::TypedValue value;
  GNMI_TypedValue_SetStringVal(&value, "up", 2);
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(&value), "");  // reading never switches the member
  EXPECT_EQ(value.value_case(), gnmi::TypedValue::kStringVal);
  // A setter whose bytes are refused has already switched to its own member.
  EXPECT_THROW(GNMI_TypedValue_SetProtoBytes(&value, nullptr, 1), std::logic_error);
  EXPECT_EQ(value.SerializeAsString(), "\x6a\x00"s);

  // float_val as fixed32: the 32-bit float 0.1 is 0x3dcccccd, little-endian.
  GNMI_TypedValue_SetFloatVal(&value, 0.1f);
  EXPECT_EQ(value.SerializeAsString(), "\x35\xcd\xcc\xcc\x3d");
  GNMI_TypedValue_SetUintVal(&value, 1u << 31);
  EXPECT_EQ(value.SerializeAsString(), "\x18\x80\x80\x80\x80\x08");
  GNMI_TypedValue_SetIntVal(&value, -2);
  EXPECT_EQ(value.int_val(), -2);

  // The leaf list keeps its elements until another member is set.
  void* list = GNMI_TypedValue_LeaflistVal(&value);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(list), 1);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(GNMI_TypedValue_LeaflistVal(&value)), 2);
  EXPECT_EQ(value.SerializeAsString(), "\x42\x08\x0a\x02\x10\x01\x0a\x02\x10\x02"s);
  GNMI_TypedValue_SetIntVal(&value, 3);
  EXPECT_EQ(static_cast<gnmi::ScalarArray*>(GNMI_TypedValue_LeaflistVal(&value))->element_size(),
            0);

  gnmi::UpdateResult result;  // an operation outside the enumeration is kept
  GNMI_UpdateResult_SetOp(&result, 7);
  EXPECT_EQ(result.SerializeAsString(), "\x20\x07");
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
