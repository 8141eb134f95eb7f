// Subscribe: the request's readers through the subscribe view, and the
// builders of the update and sync responses.
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/gnmi_access.h"

namespace {

using testsupport::kNegativeIndex;
using testsupport::kPastEndIndex;
using testsupport::Make;
using testsupport::Serialized;

// The readers of the subscription list's own fields, with the field each reads.
const struct ListReader {
  const char* field;
  int (*read)(void*);
} kListReaders[] = {
    {"use_aliases", GNMI_SubscribeRequest_UseAliases},
    {"allow_aggregation", GNMI_SubscribeRequest_GetAggregation},
    {"updates_only", GNMI_SubscribeRequest_GetUpdatesOnly},
    {"mode", GNMI_SubscribeRequest_GetSubscriptionMode},
    {"encoding", GNMI_SubscribeRequest_GetEncoding},
    {"prefix", GNMI_SubscribeRequest_HasPrefix},
    {"qos", GNMI_SubscribeRequest_HasQosMarking},
    {"subscription", GNMI_SubscribeRequest_SubscriptionSize},
    {"use_models", GNMI_SubscribeRequest_UseModelsSizeof},
};

// Moves `field` of `list` one step from its default (a flag set, an
// enumeration at 2, a sub-message present, a list of two) and returns what
// its reader should answer.
int SetAway(gnmi::SubscriptionList* list, const google::protobuf::FieldDescriptor* field) {
  using google::protobuf::FieldDescriptor;
  const auto* reflection = list->GetReflection();
  if (field->is_repeated()) {
    reflection->AddMessage(list, field);
    reflection->AddMessage(list, field);
    return 2;
  }
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_BOOL:
      reflection->SetBool(list, field, true);
      return 1;
    case FieldDescriptor::CPPTYPE_ENUM:
      reflection->SetEnumValue(list, field, 2);
      return 2;
    default:
      reflection->MutableMessage(list, field);
      return 1;
  }
}

template <auto kRead>
void Read(void* ctx, int index) {
  kRead(ctx, index);
}

class GnmiSubscribe : public ::testing::Test {
 protected:
  void Parse(const gnmi::SubscribeRequest& request) {
    ASSERT_TRUE(testsupport::ParseInto(GNMI_SubscribeRequest_Parse, ctx(), request));
  }
  void* ctx() const { return owned_.get(); }
  GnmiRpcSubscribe* rpc() const { return static_cast<GnmiRpcSubscribe*>(ctx()); }

  // Every list reader answers from an empty list, and the request keeps its case.
  void ExpectEmptyView(gnmi::SubscribeRequest::RequestCase requestCase) {
    for (const ListReader& reader : kListReaders) {
      EXPECT_EQ(reader.read(ctx()), 0) << reader.field;
    }
    EXPECT_EQ(GNMI_SubscribeRequest_GetPrefix(ctx()), nullptr);
    EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx()), 0u);
    EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 0), nullptr);
    EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 0), nullptr);
    EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetSampleInterval(ctx(), 0), "gnmi_ex", 1716,
                       kPastEndIndex);
    EXPECT_EQ(GNMI_SubscribeRequest_HasSubscribe(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_HasPoll(ctx()), requestCase == gnmi::SubscribeRequest::kPoll);
    EXPECT_EQ(GNMI_SubscribeRequest_HasAliases(ctx()),
              requestCase == gnmi::SubscribeRequest::kAliases);
  }

 private:
  testsupport::Owned<GNMI_Subscribe_DeInit> owned_ =
      Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
};

TEST_F(GnmiSubscribe, EachListReaderReadsItsOwnField) {
  for (const ListReader& changed : kListReaders) {
    gnmi::SubscribeRequest request;
    const int expected = SetAway(request.mutable_subscribe(),
                                 gnmi::SubscriptionList::descriptor()->FindFieldByName(changed.field));
    Parse(request);
    for (const ListReader& reader : kListReaders) {
      EXPECT_EQ(reader.read(ctx()), &reader == &changed ? expected : 0)
          << reader.field << " with " << changed.field << " set";
    }
  }
  gnmi::SubscribeRequest request;
  request.mutable_subscribe()->mutable_qos()->set_marking(46);
  Parse(request);
  EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx()), 46u);
}

TEST_F(GnmiSubscribe, RangeTestedReadersAnswerNullPastTheEndTheOthersAreFatal) {
  gnmi::SubscribeRequest request;
  request.mutable_subscribe()->add_subscription()->mutable_path()->set_origin("oc");
  request.mutable_subscribe()->add_subscription();  // no path
  Parse(request);
  const gnmi::SubscriptionList& list = rpc()->GetRequest_()->subscribe();
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 1), &list.subscription(1));
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 0), &list.subscription(0).path());
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 1), &gnmi::Path::default_instance());
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 2), nullptr);
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 2), nullptr);

  using Reader = void (*)(void*, int);
  const Reader rangeTested[] = {Read<GNMI_SubscribeRequest_GetSubscribe>,
                                Read<GNMI_SubscribeRequest_GetPath>};
  const Reader unguarded[] = {Read<GNMI_SubscribeRequest_GetSampleInterval>,
                              Read<GNMI_SubscribeRequest_GetHeartbeatInterval>,
                              Read<GNMI_SubscribeRequest_GetSuppressRedundant>,
                              Read<GNMI_SubscribeRequest_GetSampleMode>};
  for (Reader read : rangeTested) {
    EXPECT_FATAL_CHECK(read(ctx(), -1), "gnmi_ex", 1715, kNegativeIndex);
  }
  for (Reader read : unguarded) {
    EXPECT_FATAL_CHECK(read(ctx(), -1), "gnmi_ex", 1715, kNegativeIndex);
    EXPECT_FATAL_CHECK(read(ctx(), 2), "gnmi_ex", 1716, kPastEndIndex);
  }
}

TEST_F(GnmiSubscribe, PollAliasesAndNoCaseReadAnEmptyList) {
  gnmi::SubscribeRequest request;
  request.mutable_poll();
  Parse(request);
  ExpectEmptyView(gnmi::SubscribeRequest::kPoll);
  request.mutable_aliases()->add_alias()->set_alias("#a");
  Parse(request);
  ExpectEmptyView(gnmi::SubscribeRequest::kAliases);
  request.Clear();
  request.add_extension();
  request.add_extension();
  Parse(request);
  ExpectEmptyView(gnmi::SubscribeRequest::REQUEST_NOT_SET);
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx()), 2);
}

TEST_F(GnmiSubscribe, SetAliasesReplacesTheSubscribeAndAppendsEachTime) {
  gnmi::SubscribeRequest request;
  request.mutable_subscribe()->set_use_aliases(true);
  request.add_extension();
  Parse(request);
  void* first = GNMI_SubscribeRequest_SetAliases(ctx());
  ExpectEmptyView(gnmi::SubscribeRequest::kAliases);
  GNMI_SubscribeRequest_SetAliases(ctx());
  const gnmi::AliasList& aliases = rpc()->GetRequest_()->aliases();
  ASSERT_EQ(aliases.alias_size(), 2);
  EXPECT_EQ(first, &aliases.alias(0));
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx()), 1);
}

TEST_F(GnmiSubscribe, NotificationIsMadeOnceAndReadBackByGetUpdate) {
  EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetUpdate(ctx(), 0), "gnmi_ex", 1708, kPastEndIndex);
  // A notification replaces whatever else the update response held.
  rpc()->GetResponse_()->set_sync_response(true);
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx());
  EXPECT_EQ(GNMI_SubscribeResponse_GetNotification(ctx()), notification);
  EXPECT_EQ(rpc()->GetResponse_()->response_case(), gnmi::SubscribeResponse::kUpdate);
  GNMI_Notification_AppendUpdate(notification);
  GNMI_Notification_AppendUpdate(notification);
  testsupport::ExpectIndexedReader(
      ctx(), GNMI_SubscribeRequest_GetUpdate,
      [](void* ctx) {
        return GNMI_Notification_UpdateSizeof(GNMI_SubscribeResponse_GetNotification(ctx));
      },
      rpc()->GetResponse_()->update().update());
}

TEST_F(GnmiSubscribe, SyncResponseIsSentEvenWhenFalse) {
  rpc()->GetSyncResponse_()->mutable_update()->set_timestamp(5);
  GNMI_SubscribeRequest_SyncResponse(ctx(), 0);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx()), std::string("\x18\x00", 2));
  GNMI_SubscribeRequest_SyncResponse(ctx(), -5);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx()), "\x18\x01");
  // The update response is a separate message.
  EXPECT_EQ(Serialized(GNMI_SubscribeResponse_Serialize, ctx()), "");
}

}  // namespace
