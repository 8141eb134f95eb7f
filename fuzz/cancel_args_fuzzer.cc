// Dial-in cancel request bytes from outside: parsed and read; the reply
// carries the request id and the subscription id as its message text, and
// its bytes must carry exactly that.
#include "fuzz/walk.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-dialin.pb.h"

using namespace fuzzwalk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto args =
      Parsed<GRPCI_CancelArgsInit, GRPCI_CancelArgsDeInit>(GRPCI_CancelArgsParse, data, size);
  if (!args) return 0;
  const uint64_t requestId = GRPCI_CancelArgsGetRequestId(args.get());
  const std::string subscription = std::to_string(GRPCI_CancelArgsGetSubscriptionId(args.get()));

  auto reply = testsupport::Make<GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit>();
  GRPCI_CancelReplySetRequestId(reply.get(), requestId);
  GRPCI_CancelReplySetResponseCode(reply.get(), "200", 3);
  GRPCI_CancelReplySetMessage(reply.get(), subscription.data(), Len(subscription));
  const auto decoded = Reply<quorix_dialin::CancelReply>(GRPCI_CancelReplySerialize, reply.get());
  Check(decoded.request_id() == requestId && decoded.response_code() == "200" &&
            decoded.message() == subscription,
        "reply fields");
  return 0;
}
