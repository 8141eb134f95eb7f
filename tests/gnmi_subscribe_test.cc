// Subscribe: the request's readers through the subscribe view, and the
// builders of the update and sync responses.
#include <gtest/gtest.h>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/gnmi_access.h"

namespace {

using testsupport::kNegativeIndex;
using testsupport::kPastEndIndex;
using testsupport::Make;
using testsupport::Serialized;
using namespace std::string_literals;

// The readers of the subscription list's own fields, each with a list in
// text format where only its field is away from the default, and what it
// then answers.
const struct ListReader {
  const char* list;
  int (*read)(void*);
  int answer;
} kListReaders[] = {
    {"use_aliases: true", GNMI_SubscribeRequest_UseAliases, 1},
    {"allow_aggregation: true", GNMI_SubscribeRequest_GetAggregation, 1},
    {"updates_only: true", GNMI_SubscribeRequest_GetUpdatesOnly, 1},
    {"mode: POLL", GNMI_SubscribeRequest_GetSubscriptionMode, 2},
    {"encoding: PROTO", GNMI_SubscribeRequest_GetEncoding, 2},
    {"prefix {}", GNMI_SubscribeRequest_HasPrefix, 1},
    {"qos {}", GNMI_SubscribeRequest_HasQosMarking, 1},  // present, marking 0
    {"subscription {} subscription {}", GNMI_SubscribeRequest_SubscriptionSize, 2},
    {"use_models {} use_models {}", GNMI_SubscribeRequest_UseModelsSizeof, 2},
};

class GnmiSubscribe : public ::testing::Test {
 protected:
  // Parses the request written in text format into the context.
  void Parse(const std::string& text) {
    ASSERT_TRUE(testsupport::ParseInto(GNMI_SubscribeRequest_Parse, ctx(),
                                       testsupport::FromText<gnmi::SubscribeRequest>(text)));
  }
  void* ctx() const { return owned_.get(); }
  GnmiRpcSubscribe* rpc() const { return static_cast<GnmiRpcSubscribe*>(ctx()); }

  // Every list reader answers from an empty list, and the request keeps its case.
  void ExpectEmptyView(gnmi::SubscribeRequest::RequestCase requestCase) {
    for (const ListReader& reader : kListReaders) {
      EXPECT_EQ(reader.read(ctx()), 0) << reader.list;
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
    Parse(std::string("subscribe { ") + changed.list + " }");
    for (const ListReader& reader : kListReaders) {
      EXPECT_EQ(reader.read(ctx()), &reader == &changed ? reader.answer : 0)
          << "reader of " << reader.list << ", list " << changed.list;
    }
  }
  Parse("subscribe { qos { marking: 46 } }");
  EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx()), 46u);
}

TEST_F(GnmiSubscribe, RangeTestedReadersAnswerNullPastTheEndTheOthersAreFatal) {
  Parse(R"(subscribe { subscription { path { origin: "oc" } } subscription {} })");
  const gnmi::SubscriptionList& list = rpc()->GetRequest_()->subscribe();
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 1), &list.subscription(1));
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 0), &list.subscription(0).path());
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 1), &gnmi::Path::default_instance());
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx(), 2), nullptr);
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx(), 2), nullptr);

  // Index -1 is fatal for all six readers, 2 only for those without a range test.
  for (int index : {-1, 2}) {
    const int line = index < 0 ? 1715 : 1716;
    const char* text = index < 0 ? kNegativeIndex : kPastEndIndex;
    for (auto read :
         {GNMI_SubscribeRequest_GetSampleInterval, GNMI_SubscribeRequest_GetHeartbeatInterval}) {
      EXPECT_FATAL_CHECK(read(ctx(), index), "gnmi_ex", line, text);
    }
    for (auto read :
         {GNMI_SubscribeRequest_GetSuppressRedundant, GNMI_SubscribeRequest_GetSampleMode}) {
      EXPECT_FATAL_CHECK(read(ctx(), index), "gnmi_ex", line, text);
    }
  }
  for (auto read : {GNMI_SubscribeRequest_GetSubscribe, GNMI_SubscribeRequest_GetPath}) {
    EXPECT_FATAL_CHECK(read(ctx(), -1), "gnmi_ex", 1715, kNegativeIndex);
  }
}

TEST_F(GnmiSubscribe, PollAliasesNoCaseAndSetAliasesReadAnEmptyList) {
  Parse("poll {}");
  ExpectEmptyView(gnmi::SubscribeRequest::kPoll);
  Parse(R"(aliases { alias { alias: "#a" } })");
  ExpectEmptyView(gnmi::SubscribeRequest::kAliases);
  Parse("extension {} extension {}");
  ExpectEmptyView(gnmi::SubscribeRequest::REQUEST_NOT_SET);
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx()), 2);

  // SetAliases replaces a subscribe, then appends to the list each time.
  Parse("subscribe { use_aliases: true } extension {}");
  void* first = GNMI_SubscribeRequest_SetAliases(ctx());
  ExpectEmptyView(gnmi::SubscribeRequest::kAliases);
  GNMI_SubscribeRequest_SetAliases(ctx());
  const gnmi::AliasList& aliases = rpc()->GetRequest_()->aliases();
  ASSERT_EQ(aliases.alias_size(), 2);
  EXPECT_EQ(first, &aliases.alias(0));
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx()), 1);
}

TEST_F(GnmiSubscribe, NotificationIsMadeOnceAndSyncResponseIsSentEvenWhenFalse) {
  EXPECT_FATAL_CHECK(GNMI_SubscribeRequest_GetUpdate(ctx(), 0), "gnmi_ex", 1708, kPastEndIndex);
  // A notification replaces whatever else the update response held.
  rpc()->GetResponse_()->set_sync_response(true);
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx());
  EXPECT_EQ(GNMI_SubscribeResponse_GetNotification(ctx()), notification);
  EXPECT_EQ(rpc()->GetResponse_()->response_case(), gnmi::SubscribeResponse::kUpdate);
  GNMI_Notification_AppendUpdate(notification);
  GNMI_Notification_AppendUpdate(notification);
  testsupport::ExpectIndexedReaders({{ctx(), GNMI_SubscribeRequest_GetUpdate,
                                      [](void* ctx) {
                                        return GNMI_Notification_UpdateSizeof(
                                            GNMI_SubscribeResponse_GetNotification(ctx));
                                      },
                                      rpc()->GetResponse_()->update(), "update"}});

  // The sync response is a message of its own, with the member set even to false.
  GNMI_SubscribeRequest_SyncResponse(ctx(), 0);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx()), "\x18\x00"s);
  GNMI_SubscribeRequest_SyncResponse(ctx(), -5);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx()), "\x18\x01");
  EXPECT_EQ(rpc()->GetResponse_()->response_case(), gnmi::SubscribeResponse::kUpdate);
}

}  // namespace
