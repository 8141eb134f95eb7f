// Whole exchanges on several threads at once, each thread on contexts and
// messages of its own: every exchange must give on every round exactly the
// bytes it gave alone. Run under ThreadSanitizer by the tsan stage.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
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

// The bytes a GRPCI_ serializer gives, none when it fails.
std::string Block(testsupport::Serializer serialize, void* msg) {
  return testsupport::SerializeWith(serialize, 3, msg).Bytes();
}
template <class Parse>
bool Parsed(Parse parse, void* handle, const std::string& bytes) {
  return parse(handle, bytes.data(), bytes.size()) == 1;
}

// Get: a notification per path, its update on a copy of the path written as
// text and read back.
std::string GetRpc(const std::string& request) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  EXPECT_TRUE(Parsed(GNMI_GetRequest_Parse, ctx.get(), request));
  for (int i = 0; i < GNMI_GetRequest_PathSizeof(ctx.get()); ++i) {
    void* update = GNMI_Notification_AppendUpdate(GNMI_GetResponse_AppendNotification(ctx.get()));
    char text[64];
    const uint32_t len = GNMI_Path_ToString(GNMI_GetRequest_GetPath(ctx.get(), i), text, 64);
    EXPECT_EQ(GNMI_Path_FromString(GNMI_Update_SetPath(update), text, len, nullptr), 1);
    GNMI_TypedValue_SetStringVal(GNMI_Update_SetVal(update), "up", 2);
  }
  return Serialized(GNMI_GetResponse_Serialize, ctx.get());
}

// South IPC: a client RPC request framed, received, and answered with a
// server RPC record naming the same RPC and carrying the request's data.
std::string SouthRoundTrip(uint32_t rpcId) {
  auto request = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  GRPCI_SouthMsgSetRpcId(request.get(), rpcId);
  GRPCI_ClientRpcSetRpcName(GRPCI_SouthMsgSetClientRpc(request.get()), "/gnmi.gNMI/Get", 14);
  GRPCI_RpcDataSetData(GRPCI_SouthMsgSetRpcData(request.get()), "a\0b", 3);
  auto received = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  EXPECT_TRUE(Parsed(GRPCI_SouthMsgParse, received.get(),
                     Block(GRPCI_SouthMsgSerialize, request.get()).substr(4)));
  auto answer = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  GRPCI_SouthMsgSetRpcId(answer.get(), GRPCI_SouthMsgGetRpcId(received.get()));
  void* server = GRPCI_SouthMsgSetServerRpc(answer.get());
  GRPCI_ServerRpcSetRpcName(
      server, GRPCI_ClientRpcGetRpcName(GRPCI_SouthMsgGetClientRpc(received.get())), 14);
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
  GRPCI_SubsReplySetMessage(reply.get(), GRPCI_PathGetPath(GRPCI_SubsArgsGetPath(args.get(), 0)),
                            8);
  return Block(GRPCI_SubsReplySerialize, reply.get());
}

// The exchanges of thread t, each with the bytes it gives alone (what they
// are is the unit tests' business).
std::vector<std::pair<std::function<std::string()>, std::string>> ExchangesOf(int t) {
  const std::string n = std::to_string(t);
  const std::string get =
      testsupport::FromText<gnmi::GetRequest>(
          "path { elem { name: 'if' key { key: 'name' value: 'eth" + n + "' } } }")
          .SerializeAsString();
  const std::string subs = testsupport::FromText<quorix_dialin::SubsArgs>(
                               "request_id: " + n + " path { path: '/ifm/if" + n + "' }")
                               .SerializeAsString();
  std::vector<std::pair<std::function<std::string()>, std::string>> exchanges{
      {[get] { return GetRpc(get); }, ""},
      {[t] { return SouthRoundTrip(300 + t); }, ""},
      {[subs] { return DialinRpc(subs); }, ""}};
  for (auto& [run, alone] : exchanges) alone = run();
  return exchanges;
}

// Runs `round` kRounds times on each of kThreads threads; the rounds that
// went wrong.
int WrongRounds(const std::function<int(int thread, int round)>& round) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &round, &wrong] {
      for (int r = 0; r < kRounds; ++r) wrong += round(t, r);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return wrong;
}

TEST(Concurrency, ThreadsRunningWholeExchangesOnTheirOwnObjectsGetTheirExactBytes) {
  std::vector<std::vector<std::pair<std::function<std::string()>, std::string>>> exchanges(
      kThreads);
  for (int t = 0; t < kThreads; ++t) exchanges[t] = ExchangesOf(t);
  const uint32_t blocks = OxaHost_Stats().liveBlocks;
  EXPECT_EQ(WrongRounds([&](int t, int) {
              int wrong = 0;
              for (const auto& [run, alone] : exchanges[t]) wrong += run() != alone ? 1 : 0;
              return wrong;
            }),
            0);
  EXPECT_EQ(OxaHost_Stats().liveBlocks, blocks);
}

// A stream of replies on each thread, from one context of each family reset
// before each reply.
TEST(Concurrency, ThreadsResettingTheirOwnContextsGetEachReplyExactly) {
  std::vector<std::vector<std::unique_ptr<void, void (*)(void*)>>> contexts(kThreads);
  for (auto& mine : contexts) {
    for (const auto& family : testsupport::kReplyFamilies) {
      mine.emplace_back(family.init(), family.deinit);
    }
  }
  EXPECT_EQ(WrongRounds([&](int t, int r) {
              int wrong = 0;
              for (size_t f = 0; f < contexts[t].size(); ++f) {
                const testsupport::ReplyFamily& family = testsupport::kReplyFamilies[f];
                void* ctx = contexts[t][f].get();
                int done = 0;
                wrong += family.reset(ctx) == 1 ? 0 : 1;
                family.Build(ctx, r % 50, &done);
                wrong += Serialized(family.serialize, ctx) == family.Fresh(r % 50) ? 0 : 1;
              }
              return wrong;
            }),
            0);
}

}  // namespace
