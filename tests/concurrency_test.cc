// Whole RPCs on several threads at once, each thread on contexts and
// messages of its own: every exchange must give on every round exactly the
// bytes it gave alone. Run under ThreadSanitizer by the tsan stage.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/gnmi_access.h"
#include "support/oxa_blocks.h"
#include "support/reply_families.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 2000;

using testsupport::Make;
using testsupport::Serialized;

uint32_t Len(const char* text) { return static_cast<uint32_t>(std::strlen(text)); }
// The bytes a GRPCI_ serializer gives, none when it fails.
std::string Block(testsupport::Serializer serialize, void* msg) {
  return testsupport::SerializeWith(serialize, 3, msg).Bytes();
}
template <class Parse>
bool Parsed(Parse parse, void* handle, const std::string& bytes) {
  return parse(handle, bytes.data(), bytes.size()) == 1;
}
template <class Message>
std::string Encoded(const std::string& text) {
  return testsupport::FromText<Message>(text).SerializeAsString();
}

// /interfaces/interface[name=ethN]: one key, so that the bytes are fixed.
std::string Path(int n) {
  return "path { elem { name: 'interfaces' } elem { name: 'interface' key { key: 'name' value: "
         "'eth" +
         std::to_string(n) + "' } } }";
}

// A path's last element, name and key, read and written through the entry
// points; `to` is an empty Path.
void CopyLastElem(void* from, void* to) {
  void* elem = GNMI_Path_GetPathElem(from, GNMI_Path_PathElemSizeof(from) - 1);
  const char* key = nullptr;
  const char* value = nullptr;
  GNMI_PathElem_GetKey(elem, 0, &key, &value);
  void* copy = GNMI_Path_AppendPathElem(to);
  GNMI_PathElem_SetName(copy, GNMI_PathElem_GetName(elem), Len(GNMI_PathElem_GetName(elem)));
  GNMI_PathElem_AppendKey(copy, key, Len(key), value, Len(value));
}

// Get: a notification per path, its update on the path's last element.
std::string GetRpc(const std::string& request) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  EXPECT_TRUE(Parsed(GNMI_GetRequest_Parse, ctx.get(), request));
  for (int i = 0; i < GNMI_GetRequest_PathSizeof(ctx.get()); ++i) {
    void* notification = GNMI_GetResponse_AppendNotification(ctx.get());
    GNMI_Notification_SetTimestamp(notification, i);
    void* update = GNMI_Notification_AppendUpdate(notification);
    CopyLastElem(GNMI_GetRequest_GetPath(ctx.get(), i), GNMI_Update_SetPath(update));
    GNMI_TypedValue_SetStringVal(GNMI_Update_SetVal(update), "up", 2);
  }
  return Serialized(GNMI_GetResponse_Serialize, ctx.get());
}

// Subscribe: an update per subscription carrying its sample interval, then
// the sync response.
std::string SubscribeRpc(const std::string& request) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  EXPECT_TRUE(Parsed(GNMI_SubscribeRequest_Parse, ctx.get(), request));
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  for (int i = 0; i < GNMI_SubscribeRequest_SubscriptionSize(ctx.get()); ++i) {
    void* update = GNMI_Notification_AppendUpdate(notification);
    CopyLastElem(GNMI_SubscribeRequest_GetPath(ctx.get(), i), GNMI_Update_SetPath(update));
    GNMI_TypedValue_SetUintVal(GNMI_Update_SetVal(update),
                               GNMI_SubscribeRequest_GetSampleInterval(ctx.get(), i));
  }
  std::string bytes = Serialized(GNMI_SubscribeResponse_Serialize, ctx.get());
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);
  return bytes + Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx.get());
}

// South IPC: a client RPC request framed, received, and answered with a
// server RPC record naming the same RPC and carrying the request's data.
std::string SouthRoundTrip(uint32_t rpcId) {
  auto request = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  GRPCI_SouthMsgSetRpcId(request.get(), rpcId);
  GRPCI_ClientRpcSetRpcName(GRPCI_SouthMsgSetClientRpc(request.get()), "/gnmi.gNMI/Get", 14);
  GRPCI_RpcDataSetData(GRPCI_SouthMsgSetRpcData(request.get()), "a\0b", 3);
  const std::string sent = Block(GRPCI_SouthMsgSerialize, request.get());

  auto received = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  EXPECT_TRUE(Parsed(GRPCI_SouthMsgParse, received.get(), sent.substr(4)));
  auto answer = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  GRPCI_SouthMsgSetRpcId(answer.get(), GRPCI_SouthMsgGetRpcId(received.get()));
  GRPCI_SouthMsgSetReqType(answer.get(), quorix_grpc_ipc::REQTYPE_RESPONSE);
  const char* name = GRPCI_ClientRpcGetRpcName(GRPCI_SouthMsgGetClientRpc(received.get()));
  void* server = GRPCI_SouthMsgSetServerRpc(answer.get());
  GRPCI_ServerRpcSetRpcName(server, name, Len(name));
  GRPCI_ServerRpcSetRpcParament(server,
                                GRPCI_RpcDataGetData(GRPCI_SouthMsgGetRpcData(received.get())), 3);
  return Block(GRPCI_SouthMsgSerialize, answer.get());
}

// Dial-in: the subscribe reply names the request and its first sensor path.
std::string DialinRpc(const std::string& subscribe) {
  auto args = Make<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>();
  EXPECT_TRUE(Parsed(GRPCI_SubsArgsParse, args.get(), subscribe));
  auto reply = Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  GRPCI_SubsReplySetRequestId(reply.get(), GRPCI_SubsArgsGetRequestId(args.get()));
  const char* path = GRPCI_PathGetPath(GRPCI_SubsArgsGetPath(args.get(), 0));
  GRPCI_SubsReplySetMessage(reply.get(), path, Len(path));
  return Block(GRPCI_SubsReplySerialize, reply.get());
}

// An exchange of one thread: the RPC through the entry points, on requests
// of its own, and the bytes it gave alone (what they are is the unit tests'
// business).
struct Exchange {
  template <class Rpc>
  Exchange(Rpc rpc) : run(rpc), answer(rpc()) {}
  std::function<std::string()> run;
  std::string answer;
};

std::vector<Exchange> ExchangesOf(int t) {
  const auto n = [t](int base) { return std::to_string(base + t); };
  const std::string get = Encoded<gnmi::GetRequest>(Path(t) + Path(t + 10));
  const std::string subscribe = Encoded<gnmi::SubscribeRequest>(
      "subscribe { subscription { " + Path(t) + " sample_interval: " + n(1000) + " } }");
  const std::string subs = Encoded<quorix_dialin::SubsArgs>(
      "request_id: " + n(100) + " path { path: '/ifm/interfaces/" + n(0) + "' }");
  return {[get] { return GetRpc(get); }, [subscribe] { return SubscribeRpc(subscribe); },
          [t] { return SouthRoundTrip(300 + t); }, [subs] { return DialinRpc(subs); }};
}

// The exchanges of a round that did not give their bytes.
int WrongExchanges(const std::vector<Exchange>& exchanges) {
  int wrong = 0;
  for (const Exchange& exchange : exchanges) wrong += exchange.run() != exchange.answer ? 1 : 0;
  return wrong;
}

TEST(Concurrency, ThreadsRunningWholeRpcsOnTheirOwnObjectsGetTheirExactBytes) {
  std::vector<std::vector<Exchange>> exchanges(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) exchanges[thread] = ExchangesOf(thread);
  const uint32_t blocks = OxaHost_Stats().liveBlocks;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (const std::vector<Exchange>& exchange : exchanges) {
    threads.emplace_back([&exchange, &wrong] {
      for (int round = 0; round < kRounds; ++round) wrong += WrongExchanges(exchange);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(OxaHost_Stats().liveBlocks, blocks);
}

// A stream of replies on each thread, from one context reset before each.

TEST(Concurrency, ThreadsResettingTheirOwnContextsGetEachReplyExactly) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (const testsupport::ReplyFamily& family : testsupport::kReplyFamilies) {
    threads.emplace_back([&family, &wrong] {
      const std::unique_ptr<void, void (*)(void*)> ctx(family.init(), family.deinit);
      int done = 0;
      for (int round = 0; round < kRounds; ++round) {
        wrong += family.reset(ctx.get()) == 1 ? 0 : 1;
        family.Build(ctx.get(), round % 50, &done);
        wrong += Serialized(family.serialize, ctx.get()) == family.Fresh(round % 50) ? 0 : 1;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
