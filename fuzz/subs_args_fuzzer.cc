// Dial-in subscribe request bytes from outside: parsed and read through every
// getter; the reply carries the request id, the encoding as subscription id
// and the sensor paths joined one per line as its message, and its bytes
// must carry exactly that.
#include "fuzz/walk.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-dialin.pb.h"

using namespace fuzzwalk;

namespace {

// The Suppress choice: the getter of a member not chosen answers 0.
void ReadSuppress(void* args) {
  const uint32_t chosen = GRPCI_SubsArgsGetSuppressCase(args);
  Check(chosen == 0 || chosen == 8 || chosen == 9, "suppress case");
  Check(chosen == 8 || GRPCI_SubsArgsGetSuppressRedundant(args) == 0, "suppress_redundant");
  Check(GRPCI_SubsArgsGetSuppressRedundant(args) <= 1, "flag");
  Check(chosen == 9 || GRPCI_SubsArgsGetDelayTime(args) == 0, "delay_time");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto args = Parsed<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>(GRPCI_SubsArgsParse, data, size);
  if (!args) return 0;
  std::string paths;
  for (int32_t i = 0; i < GRPCI_SubsArgsPathSizeof(args.get()); ++i) {
    void* path = GRPCI_SubsArgsGetPath(args.get(), i);
    paths += Read(GRPCI_PathGetPath(path)) + "\n";
    GRPCI_PathGetDepth(path);
  }
  GRPCI_SubsArgsGetSampleInterval(args.get());
  GRPCI_SubsArgsGetHeartbeat(args.get());
  ReadSuppress(args.get());
  const uint64_t requestId = GRPCI_SubsArgsGetRequestId(args.get());
  const uint32_t encoding = GRPCI_SubsArgsGetEncoding(args.get());

  auto reply = testsupport::Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  GRPCI_SubsReplySetRequestId(reply.get(), requestId);
  GRPCI_SubsReplySetSubscriptionId(reply.get(), encoding);
  GRPCI_SubsReplySetResponseCode(reply.get(), "200", 3);
  GRPCI_SubsReplySetMessage(reply.get(), paths.data(), Len(paths));
  const auto decoded = Reply<quorix_dialin::SubsReply>(GRPCI_SubsReplySerialize, reply.get());
  Check(decoded.request_id() == requestId && decoded.subscription_id() == encoding &&
            decoded.response_code() == "200",
        "reply fields");
  Check(decoded.MessageData_case() == quorix_dialin::SubsReply::kMessage &&
            decoded.message() == paths,
        "reply message");
  return 0;
}
