// Notification, update, update result and model data accessors, on messages
// reached through their own handles.
#include <gtest/gtest.h>

#include <stdexcept>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "support/gnmi_access.h"

namespace {

using testsupport::ExpectIndexedReader;

void* Handle(const google::protobuf::Message& message) {
  return const_cast<google::protobuf::Message*>(&message);
}

TEST(GnmiNotification, PrefixIsDefaultUntilAddedThenSentEvenWhenEmpty) {
  gnmi::Notification notification;
  EXPECT_EQ(GNMI_Notification_HasPrefix(&notification), 0);
  EXPECT_EQ(GNMI_Notification_GetPrefix(&notification), &gnmi::Path::default_instance());
  EXPECT_EQ(GNMI_Notification_HasPrefix(Handle(gnmi::Notification::default_instance())), 0);

  void* prefix = GNMI_Notification_AddPrefix(&notification);
  EXPECT_EQ(GNMI_Notification_AddPrefix(&notification), prefix);
  EXPECT_EQ(GNMI_Notification_GetPrefix(&notification), prefix);
  EXPECT_EQ(GNMI_Notification_HasPrefix(&notification), 1);
  EXPECT_EQ(notification.SerializeAsString(), std::string("\x12\x00", 2));
}

TEST(GnmiNotification, ScalarsAndAlias) {
  gnmi::Notification notification;
  EXPECT_EQ(GNMI_Notification_GetAtomic(&notification), 0);
  EXPECT_STREQ(GNMI_Notification_GetAlias(&notification), "");
  GNMI_Notification_SetTimestamp(&notification, -1234567890123);
  GNMI_Notification_SetAtomic(&notification, -1);
  GNMI_Notification_SetAlias(&notification, "#if", 3);
  EXPECT_EQ(GNMI_Notification_GetTimestamp(&notification), -1234567890123);
  EXPECT_EQ(GNMI_Notification_GetAtomic(&notification), 1);
  EXPECT_STREQ(GNMI_Notification_GetAlias(&notification), "#if");
  GNMI_Notification_SetAtomic(&notification, 0);
  EXPECT_EQ(GNMI_Notification_GetAtomic(&notification), 0);
}

TEST(GnmiNotification, UpdatesAndDeletesGrowByOneAndAreIndexChecked) {
  gnmi::Notification notification;
  for (int i = 0; i < 3; ++i) {
    void* appended = GNMI_Notification_AppendDelete(&notification);
    EXPECT_EQ(appended, &notification.delete_(i));
    EXPECT_EQ(GNMI_Notification_DeleteSizeof(&notification), i + 1);
  }
  GNMI_Notification_AppendUpdate(&notification);
  ExpectIndexedReader(&notification, GNMI_Notification_GetUpdate, GNMI_Notification_UpdateSizeof,
                      notification.update());
  ExpectIndexedReader(&notification, GNMI_Notification_GetDelete, GNMI_Notification_DeleteSizeof,
                      notification.delete_());
}

TEST(GnmiUpdate, SubMessagesAreDefaultUntilBuilt) {
  gnmi::Update update;
  EXPECT_EQ(GNMI_Update_HasVal(&update), 0);
  EXPECT_EQ(GNMI_Update_GetVal(&update), &gnmi::TypedValue::default_instance());
  EXPECT_EQ(GNMI_Update_HasPath(&update), 0);
  EXPECT_EQ(GNMI_Update_GetPath(&update), &gnmi::Path::default_instance());

  void* path = GNMI_Update_SetPath(&update);
  EXPECT_EQ(GNMI_Update_SetPath(&update), path);
  EXPECT_EQ(GNMI_Update_GetPath(&update), path);
  EXPECT_EQ(GNMI_Update_HasPath(&update), 1);
  void* val = GNMI_Update_SetVal(&update);
  EXPECT_EQ(GNMI_Update_GetVal(&update), val);
  EXPECT_EQ(GNMI_Update_HasVal(&update), 1);
  EXPECT_EQ(GNMI_Update_HasVal(Handle(gnmi::Update::default_instance())), 0);
  GNMI_Update_SetDuplicates(&update, 4000000000u);
  EXPECT_EQ(GNMI_Update_GetDuplicates(&update), 4000000000u);
}

TEST(GnmiUpdateResult, OpIsKeptAsGivenOnTheWire) {
  gnmi::UpdateResult result;
  void* path = GNMI_UpdateResult_AddPath(&result);
  EXPECT_EQ(GNMI_UpdateResult_AddPath(&result), path);
  GNMI_UpdateResult_SetOp(&result, 7);
  EXPECT_EQ(result.SerializeAsString(), std::string("\x12\x00\x20\x07", 4));
}

TEST(GnmiModelData, StringsAreByteExact) {
  gnmi::ModelData model;
  EXPECT_STREQ(GNMI_ModelData_GetName(&model), "");
  GNMI_ModelData_SetName(&model, "abc\0def", 7);
  GNMI_ModelData_SetOrganization(&model, "org", 3);
  GNMI_ModelData_SetVersion(&model, "1.0", 3);
  EXPECT_STREQ(GNMI_ModelData_GetName(&model), "abc");
  EXPECT_STREQ(GNMI_ModelData_GetOrganization(&model), "org");
  EXPECT_STREQ(GNMI_ModelData_GetVersion(&model), "1.0");
  EXPECT_EQ(model.SerializeAsString(), std::string("\x0a\x07"
                                                   "abc\0def"
                                                   "\x12\x03org\x1a\x03"
                                                   "1.0",
                                                   19));

  EXPECT_THROW(GNMI_ModelData_SetVersion(&model, nullptr, 2), std::logic_error);
  EXPECT_EQ(model.version(), "1.0");
  GNMI_ModelData_SetVersion(&model, nullptr, 0);
  EXPECT_EQ(model.version(), "");
}

}  // namespace
