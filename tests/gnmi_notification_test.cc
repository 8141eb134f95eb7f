// Sub-messages of notifications, updates, update results and typed values,
// reached through the messages' own handles.
#include <gtest/gtest.h>

#include <memory>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "support/gnmi_access.h"

namespace {

using google::protobuf::Message;

TEST(GnmiSubMessages, AbsentReadsAsTheDefaultMadeOnceThenPresentAndSentEvenWhenEmpty) {
  const struct {
    const Message& type;
    const char* field;
    void* (*make)(void*);
    int (*has)(void*);       // null: no presence test
    void* (*get)(void*);     // null: no reader
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

TEST(GnmiNotification, UpdatesAndDeletesGrowByOneAndAreIndexChecked) {
  gnmi::Notification notification;
  for (int i = 0; i < 3; ++i) {
    void* appended = GNMI_Notification_AppendDelete(&notification);
    EXPECT_EQ(appended, &notification.delete_(i));
  }
  GNMI_Notification_AppendUpdate(&notification);
  testsupport::ExpectIndexedReader(&notification, GNMI_Notification_GetUpdate,
                                   GNMI_Notification_UpdateSizeof, notification.update());
  testsupport::ExpectIndexedReader(&notification, GNMI_Notification_GetDelete,
                                   GNMI_Notification_DeleteSizeof, notification.delete_());
}

TEST(GnmiUpdateResult, OpIsKeptAsGiven) {
  gnmi::UpdateResult result;
  GNMI_UpdateResult_SetOp(&result, 7);
  EXPECT_EQ(result.SerializeAsString(), "\x20\x07");
}

}  // namespace
