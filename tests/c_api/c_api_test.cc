// The C interface driven from C99 (c_calls.c): what the C side saw.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "c_api/c_calls.h"
#include "oxa_mem_host.h"

namespace {

std::string Bytes(const unsigned char* data, size_t len) {
  return std::string(reinterpret_cast<const char*>(data), len);
}

TEST(CApi, GetRpcFromC) {
  CGetRun run;
  CRunGet(&run);
  ASSERT_TRUE(run.initOk);
  EXPECT_EQ(run.malformedParse, 0);
  EXPECT_EQ(run.parse, 1);
  EXPECT_EQ(run.pathCount, 1);
  EXPECT_EQ(run.type, 2);  // STATE
  EXPECT_STREQ(run.origin, "oc");
  ASSERT_EQ(run.serialize, 1);
  // notification {timestamp: 1234}
  EXPECT_EQ(Bytes(run.response, run.responseLen), std::string("\x0a\x03\x08\xd2\x09", 5));
}

TEST(CApi, SouthFrameFromC) {
  OxaHost_Reset();
  CSouthRun run;
  CRunSouth(&run);
  ASSERT_TRUE(run.initOk);
  ASSERT_EQ(run.serialize, 1);
  // rpc_id 7, msg_type 1, client_rpc {peer_port: 50051}
  const std::string body("\x10\x07\x30\x01\x5a\x04\x10\x83\x87\x03", 10);
  const uint32_t length = body.size();
  ASSERT_EQ(run.frameLen, sizeof length + body.size());
  EXPECT_EQ(std::memcmp(run.frame, &length, sizeof length), 0);  // host byte order
  EXPECT_EQ(Bytes(run.frame + sizeof length, body.size()), body);
  EXPECT_EQ(run.parse, 1);
  EXPECT_EQ(run.rpcId, 7u);
  EXPECT_EQ(run.msgType, 1);
  EXPECT_EQ(run.peerPort, 50051u);
  const OxaHostStats stats = OxaHost_Stats();
  EXPECT_EQ(stats.mallocCalls, 1u);
  EXPECT_EQ(stats.lastMalloc.ownerId, 42u);
  EXPECT_EQ(stats.freeCalls, 1u);
}

}  // namespace
