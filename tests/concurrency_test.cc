// Whole exchanges on several threads at once, each thread on objects of its
// own: every fuzz harness over every committed seed (each harness checks
// every answer it gets and ends the program on a wrong one), and a stream of
// replies from contexts reset before each. Run under ThreadSanitizer by the
// tsan stage.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "fuzz/harnesses.h"
#include "oxa_mem_host.h"
#include "support/gnmi_access.h"
#include "support/reply_families.h"

namespace {

constexpr int kThreads = 4;

// Runs `round` `rounds` times on each of kThreads threads; the rounds that
// went wrong.
int WrongRounds(int rounds, const std::function<int(int thread, int round)>& round) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, rounds, &round, &wrong] {
      for (int r = 0; r < rounds; ++r) wrong += round(t, r);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return wrong;
}

TEST(Concurrency, EveryHarnessOverEverySeedOnThreadsAtOnce) {
  std::vector<std::pair<harness::Harness, std::string>> seeds;
  for (const auto& [name, run] : harness::kHarnesses) {
    const std::string folder = std::string(MGMTMSG_FUZZ_CORPUS "/fuzz_") + name;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
      std::ifstream in(file.path(), std::ios::binary);
      seeds.emplace_back(run, std::string(std::istreambuf_iterator<char>(in), {}));
    }
  }
  ASSERT_GT(seeds.size(), std::size(harness::kHarnesses));
  const uint32_t blocks = OxaHost_Stats().liveBlocks;
  EXPECT_EQ(WrongRounds(40,
                        [&seeds](int, int) {
                          for (const auto& [run, bytes] : seeds) {
                            run(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
                          }
                          return 0;
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
  EXPECT_EQ(WrongRounds(2000,
                        [&](int t, int r) {
                          int wrong = 0;
                          for (size_t f = 0; f < contexts[t].size(); ++f) {
                            const testsupport::ReplyFamily& family = testsupport::kReplyFamilies[f];
                            void* ctx = contexts[t][f].get();
                            int done = 0;
                            wrong += family.reset(ctx) == 1 ? 0 : 1;
                            family.Build(ctx, r % 50, &done);
                            wrong += testsupport::Serialized(family.serialize, ctx) ==
                                             family.Fresh(r % 50)
                                         ? 0
                                         : 1;
                          }
                          return wrong;
                        }),
            0);
}

}  // namespace
