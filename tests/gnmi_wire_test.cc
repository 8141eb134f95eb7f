// The notification writer against the message path: the same content must
// give the same bytes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_wire.h"
#include "support/owned.h"
#include "support/wire_twins.h"

namespace {

using testsupport::WireStep;
using Steps = std::vector<WireStep>;

const std::vector<std::string> kPaths = {"", "/a", "/interfaces/interface[name=eth0]/counters",
                                         "openconfig:/system/state", "/" + std::string(300, 'p')};

WireStep Begin(int64_t timestamp, int prefix = -1) {
  return {WireStep::kBegin, prefix, timestamp, 0, ""};
}
WireStep Value(WireStep::Kind kind, int path, int64_t number, std::string text = "") {
  return {kind, path, number, 0, std::move(text)};
}
WireStep Real(int path, float real) { return {WireStep::kFloat, path, 0, real, ""}; }
WireStep Delete(int path) { return {WireStep::kDelete, path, 0, 0, ""}; }

class GnmiWire : public ::testing::Test {
 protected:
  // Both contexts, each run twice (the second message on a used writer).
  void ExpectSame(const Steps& steps) {
    for (const bool subscribe : {true, false}) {
      for (int round = 0; round < 2; ++round) {
        const auto bytes = twins_.Run(subscribe, steps);
        EXPECT_TRUE(bytes.resultsRight) << (subscribe ? "Subscribe" : "Get");
        ASSERT_EQ(bytes.written, bytes.built) << (subscribe ? "Subscribe" : "Get");
      }
    }
  }
  testsupport::WireTwins twins_{kPaths};
};

TEST_F(GnmiWire, EveryValueKindZeroOrNotMatchesTheMessagePath) {
  const std::string nul("a\0b", 3);
  const Steps rows[] = {
      {Value(WireStep::kInt, 1, 0), Value(WireStep::kInt, 2, -1),
       Value(WireStep::kInt, 2, INT64_MIN)},
      {Value(WireStep::kUint, 1, 0), Value(WireStep::kUint, 2, -1), Value(WireStep::kUint, 0, 300)},
      {Value(WireStep::kBool, 1, 0), Value(WireStep::kBool, 2, 7)},
      {Real(1, 0.0f), Real(2, -1.5f), Real(3, 1e30f)},
      {Value(WireStep::kString, 1, 0), Value(WireStep::kString, 2, 0, "up")},
      {Value(WireStep::kBytes, 1, 0), Value(WireStep::kBytes, 2, 0, nul)},
      {Value(WireStep::kJson, 1, 0), Value(WireStep::kJson, 3, 0, "{\"a\":1}")},
      {Value(WireStep::kJsonIetf, 1, 0), Value(WireStep::kJsonIetf, 2, 0, "{\"x:y\":[]}")},
      {Value(WireStep::kAscii, 1, 0), Value(WireStep::kAscii, 4, 0, "text")},
  };
  for (const Steps& row : rows) {
    SCOPED_TRACE(&row - rows);
    Steps steps = {Begin(1700000000000000000)};
    steps.insert(steps.end(), row.begin(), row.end());
    ExpectSame(steps);
  }
}

TEST_F(GnmiWire, NotificationShapesMatchTheMessagePath) {
  const Steps rows[] = {
      {},              // no notification: no bytes
      {Begin(0)},      // empty notification
      {Begin(-5, 0)},  // empty prefix, negative time
      {Begin(1, 3), Value(WireStep::kUint, 2, 9)},
      {Begin(0, 2), Delete(1), Delete(0)},  // deletes only
      {Begin(7, 1), Value(WireStep::kInt, 1, 1), Delete(2), Delete(3)},
      // refused: an update after a delete, an update or delete before Begin
      {Value(WireStep::kInt, 1, 1), Delete(1), Begin(2), Delete(1), Value(WireStep::kInt, 1, 1)},
      // several notifications (a Subscribe message keeps the last), later ones
      // with longer length fields, moving the earlier ones
      {Begin(1), Begin(2, 1), Value(WireStep::kString, 4, 0, std::string(200, 's')), Begin(3),
       Value(WireStep::kString, 4, 0, std::string(20000, 'l')), Begin(4, 4)},
  };
  for (const Steps& row : rows) {
    SCOPED_TRACE(&row - rows);
    ExpectSame(row);
  }
}

TEST_F(GnmiWire, LengthsAcrossVarintBoundariesMatchTheMessagePath) {
  // Each nested length (value, update, notification) crosses 127/128,
  // 16383/16384 and 2097151/2097152 somewhere in these ranges.
  for (const uint32_t from : {100u, 16360u, 2097125u}) {
    for (uint32_t len = from; len < from + 40; ++len) {
      SCOPED_TRACE(len);
      ExpectSame({Begin(1), Value(WireStep::kJsonIetf, 1, 0, std::string(len, 'j'))});
    }
  }
}

TEST_F(GnmiWire, OutputStaysUntilFinishAndRefusalsLeaveTheMessage) {
  void* ctx = twins_.WriterContext(true);
  void* path = twins_.WirePath(1);
  const auto first = twins_.Run(true, {Begin(1), Value(WireStep::kUint, 1, 5)});
  const auto expected = twins_.Run(true, {Begin(2), Value(WireStep::kInt, 1, 3)});
  ASSERT_EQ(GNMI_Writer_Begin(ctx, 2, nullptr), 1);
  ASSERT_EQ(GNMI_Writer_AddInt(ctx, path, 3), 1);
  // Over the limit: one byte, then the whole of it; NULL text with a length.
  const std::string big(52428800 - 41, 'b');  // one byte over with the rest
  const char one = 'x';
  EXPECT_EQ(GNMI_Writer_AddBytes(ctx, path, big.data(), static_cast<uint32_t>(big.size())), 0);
  EXPECT_EQ(GNMI_Writer_AddBytes(ctx, path, &one, UINT32_MAX), 0);
  EXPECT_EQ(GNMI_Writer_AddString(ctx, path, nullptr, 1), 0);
  void* out = nullptr;
  int len = 0;
  ASSERT_EQ(GNMI_Writer_Finish(ctx, &out, &len), 1);
  EXPECT_EQ(testsupport::Bytes(out, len), expected.written);
  // Up to the limit exactly: the largest message is written.
  ASSERT_EQ(GNMI_Writer_Begin(ctx, 2, nullptr), 1);
  ASSERT_EQ(GNMI_Writer_AddInt(ctx, path, 3), 1);
  EXPECT_EQ(GNMI_Writer_AddBytes(ctx, path, big.data(), static_cast<uint32_t>(big.size() - 1)), 1);
  ASSERT_EQ(GNMI_Writer_Finish(ctx, &out, &len), 1);
  EXPECT_EQ(len, 52428800);
  EXPECT_NE(first.written, expected.written);
  GNMI_WirePath_Free(nullptr);  // ignored
}

}  // namespace
