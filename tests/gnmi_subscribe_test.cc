// Subscribe: the request's readers through the subscribe view, and the
// builders of the update and sync responses.
#include <gtest/gtest.h>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/gnmi_access.h"

namespace {

using testsupport::ExpectIndexedReader;
using testsupport::kNegativeIndex;
using testsupport::kPastEndIndex;
using testsupport::Make;
using testsupport::ParseInto;
using testsupport::Serialized;

class GnmiSubscribe : public ::testing::Test {
 protected:
  void Parse(const gnmi::SubscribeRequest& request) {
    ASSERT_TRUE(ParseInto(GNMI_SubscribeRequest_Parse, ctx(), request));
  }
  void* ctx() const { return owned_.get(); }
  GnmiRpcSubscribe* rpc() const { return static_cast<GnmiRpcSubscribe*>(ctx()); }

  // Expects every subscribe reader to answer from an empty subscription
  // list, and the per-subscription readers at index 0 to answer null or end
  // in the fatal check.
  void ExpectEmptyView() {
    EXPECT_EQ(GNMI_SubscribeRequest_HasSubscribe(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_SubscriptionSize(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_UseModelsSizeof(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_UseAliases(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_GetAggregation(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_GetUpdatesOnly(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_GetSubscriptionMode(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_GetEncoding(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_HasPrefix(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_GetPrefix(ctx()), nullptr);
    EXPECT_EQ(GNMI_SubscribeRequest_HasQosMarking(ctx()), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx()), 0u);
    EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 0), nullptr);
    EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 0), nullptr);
    EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetSampleInterval(ctx(), 0), "gnmi_ex", 1716,
                       kPastEndIndex);
  }

 private:
  testsupport::Owned<GNMI_Subscribe_DeInit> owned_ =
      Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
};

gnmi::SubscribeRequest FullSubscribe() {
  gnmi::SubscribeRequest request;
  gnmi::SubscriptionList* list = request.mutable_subscribe();
  list->mutable_prefix()->set_target("dev");
  list->set_use_aliases(true);
  list->mutable_qos()->set_marking(46);
  list->set_mode(gnmi::SubscriptionList::POLL);
  list->set_allow_aggregation(true);
  list->add_use_models();
  list->set_encoding(gnmi::JSON_IETF);
  list->set_updates_only(true);
  gnmi::Subscription* sampled = list->add_subscription();
  sampled->mutable_path()->set_origin("oc");
  sampled->set_mode(gnmi::SAMPLE);
  sampled->set_sample_interval(10000000000u);
  sampled->set_heartbeat_interval(60000000000u);
  sampled->set_suppress_redundant(true);
  list->add_subscription();  // no path, every field at its default
  request.add_extension();
  return request;
}

TEST_F(GnmiSubscribe, ReadersSeeTheSubscriptionList) {
  Parse(FullSubscribe());
  const gnmi::SubscriptionList& list = rpc()->GetRequest_()->subscribe();
  EXPECT_EQ(GNMI_SubscribeRequest_HasSubscribe(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_HasPoll(ctx()), 0);
  EXPECT_EQ(GNMI_SubscribeRequest_HasAliases(ctx()), 0);
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_SubscriptionSize(ctx()), 2);
  EXPECT_EQ(GNMI_SubscribeRequest_UseModelsSizeof(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_UseAliases(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetAggregation(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetUpdatesOnly(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscriptionMode(ctx()), 2);
  EXPECT_EQ(GNMI_SubscribeRequest_GetEncoding(ctx()), gnmi::JSON_IETF);
  EXPECT_EQ(GNMI_SubscribeRequest_HasPrefix(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetPrefix(ctx()), &list.prefix());
  EXPECT_EQ(GNMI_SubscribeRequest_HasQosMarking(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx()), 46u);

  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 1), &list.subscription(1));
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 0), &list.subscription(0).path());
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 1), &gnmi::Path::default_instance());
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleInterval(ctx(), 0), 10000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetHeartbeatInterval(ctx(), 0), 60000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSuppressRedundant(ctx(), 0), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx(), 0), gnmi::SAMPLE);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx(), 1), 0);
}

TEST_F(GnmiSubscribe, AbsentPrefixIsNullAndQosWithMarkingZeroIsPresent) {
  gnmi::SubscribeRequest request;
  request.mutable_subscribe()->mutable_qos();
  Parse(request);
  EXPECT_EQ(GNMI_SubscribeRequest_HasPrefix(ctx()), 0);
  EXPECT_EQ(GNMI_SubscribeRequest_GetPrefix(ctx()), nullptr);
  EXPECT_EQ(GNMI_SubscribeRequest_HasQosMarking(ctx()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx()), 0u);
}

TEST_F(GnmiSubscribe, RangeTestedReadersAnswerNullPastTheEndUnguardedOnesAreFatal) {
  Parse(FullSubscribe());
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 2), nullptr);
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 2), nullptr);
  EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetSubscribe(ctx(), -1), "gnmi_ex", 1715,
                     kNegativeIndex);
  EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetPath(ctx(), -1), "gnmi_ex", 1715, kNegativeIndex);
  for (int index : {-1, 2}) {
    const int line = index < 0 ? 1715 : 1716;
    const char* text = index < 0 ? kNegativeIndex : kPastEndIndex;
    EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetSampleInterval(ctx(), index), "gnmi_ex", line,
                       text);
    EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetHeartbeatInterval(ctx(), index), "gnmi_ex", line,
                       text);
    EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetSuppressRedundant(ctx(), index), "gnmi_ex", line,
                       text);
    EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetSampleMode(ctx(), index), "gnmi_ex", line, text);
  }
}

TEST_F(GnmiSubscribe, PollAliasesAndNoCaseReadAnEmptyList) {
  gnmi::SubscribeRequest poll;
  poll.mutable_poll();
  Parse(poll);
  EXPECT_EQ(GNMI_SubscribeRequest_HasPoll(ctx()), 1);
  ExpectEmptyView();

  gnmi::SubscribeRequest aliases;
  aliases.mutable_aliases()->add_alias()->set_alias("#a");
  Parse(aliases);
  EXPECT_EQ(GNMI_SubscribeRequest_HasAliases(ctx()), 1);
  ExpectEmptyView();

  gnmi::SubscribeRequest extensionsOnly;
  extensionsOnly.add_extension();
  extensionsOnly.add_extension();
  Parse(extensionsOnly);
  EXPECT_EQ(GNMI_SubscribeRequest_HasPoll(ctx()), 0);
  EXPECT_EQ(GNMI_SubscribeRequest_HasAliases(ctx()), 0);
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx()), 2);
  ExpectEmptyView();
}

TEST_F(GnmiSubscribe, SetAliasesReplacesTheSubscribeAndAppendsEachTime) {
  Parse(FullSubscribe());
  void* first = GNMI_SubscribeRequest_SetAliases(ctx());
  EXPECT_EQ(GNMI_SubscribeRequest_HasAliases(ctx()), 1);
  ExpectEmptyView();
  GNMI_SubscribeRequest_SetAliases(ctx());
  GNMI_SubscribeRequest_SetAliases(ctx());
  const gnmi::AliasList& list = rpc()->GetRequest_()->aliases();
  ASSERT_EQ(list.alias_size(), 3);
  EXPECT_EQ(first, &list.alias(0));
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx()), 1);
}

TEST_F(GnmiSubscribe, NotificationIsMadeOnceAndReadBackByGetUpdate) {
  EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetUpdate(ctx(), 0), "gnmi_ex", 1708, kPastEndIndex);

  // A notification replaces whatever else the update response held.
  rpc()->GetResponse_()->set_sync_response(true);
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx());
  EXPECT_EQ(GNMI_SubscribeResponse_GetNotification(ctx()), notification);
  GNMI_Notification_AppendUpdate(notification);
  GNMI_Notification_AppendUpdate(notification);
  EXPECT_EQ(rpc()->GetResponse_()->response_case(), gnmi::SubscribeResponse::kUpdate);
  ExpectIndexedReader(
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
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx()), std::string("\x18\x01", 2));
  // The update response is a separate message.
  EXPECT_EQ(Serialized(GNMI_SubscribeResponse_Serialize, ctx()), "");
}

}  // namespace
