// Dial-in telemetry records: the subscribe and cancel requests are parsed and
// read, their replies built and serialized unframed.
#include "common/handles.h"
#include "common/platform_block.h"
#include "grpci/grpci_ex.h"
#include "grpci/grpci_message.h"
#include "quorix-grpc-dialin.pb.h"

using mgmtmsg::AssignBytes;
using mgmtmsg::BlockLayout;
using quorix_dialin::CancelArgs;
using quorix_dialin::CancelReply;
using quorix_dialin::Path;
using quorix_dialin::SubsArgs;
using quorix_dialin::SubsReply;

namespace {

constexpr mgmtmsg::PlatformBlockSite kSubsReplySite{BlockLayout::kSpareTrailingByte,
                                                    "grpci_grpcdialin_ex", 228, 235};
constexpr mgmtmsg::PlatformBlockSite kCancelReplySite{BlockLayout::kSpareTrailingByte,
                                                      "grpci_grpcdialin_ex", 306, 313};

const SubsArgs& Subscribe(void* args) { return *mgmtmsg::As<SubsArgs>(args); }
const CancelArgs& Cancel(void* args) { return *mgmtmsg::As<CancelArgs>(args); }
const Path& SensorPath(void* path) { return *mgmtmsg::As<Path>(path); }
SubsReply& SubscribeReply(void* reply) { return *mgmtmsg::As<SubsReply>(reply); }
CancelReply& CancelAnswer(void* reply) { return *mgmtmsg::As<CancelReply>(reply); }

// The value of `member` when it is the member chosen in Suppress, else 0. The
// case is tested first: both members share one storage place.
uint64_t SuppressMember(void* args, SubsArgs::SuppressCase member) {
  const SubsArgs& request = Subscribe(args);
  if (request.Suppress_case() != member) {
    return 0;
  }
  return member == SubsArgs::kSuppressRedundant ? request.suppress_redundant()
                                                : request.delay_time();
}

}  // namespace

void* GRPCI_SubsArgsInit(void) { return mgmtmsg::NewMessage<SubsArgs>(); }
int32_t GRPCI_SubsArgsParse(void* args, const void* data, int32_t size) {
  return mgmtmsg::ParseMessage<SubsArgs>(args, data, size);
}
void GRPCI_SubsArgsDeInit(void* args) { mgmtmsg::DeleteMessage<SubsArgs>(args); }
uint64_t GRPCI_SubsArgsGetRequestId(void* args) { return Subscribe(args).request_id(); }
uint32_t GRPCI_SubsArgsGetEncoding(void* args) { return Subscribe(args).encoding(); }
int32_t GRPCI_SubsArgsPathSizeof(void* args) { return Subscribe(args).path_size(); }
void* GRPCI_SubsArgsGetPath(void* args, int32_t index) {
  return mgmtmsg::HandleAt(Subscribe(args).path(), index, mgmtmsg::kDialinIndexSite);
}
uint64_t GRPCI_SubsArgsGetSampleInterval(void* args) { return Subscribe(args).sample_interval(); }
uint64_t GRPCI_SubsArgsGetHeartbeat(void* args) { return Subscribe(args).heartbeat_interval(); }
uint32_t GRPCI_SubsArgsGetSuppressCase(void* args) { return Subscribe(args).Suppress_case(); }
uint64_t GRPCI_SubsArgsGetSuppressRedundant(void* args) {
  return SuppressMember(args, SubsArgs::kSuppressRedundant);
}
uint64_t GRPCI_SubsArgsGetDelayTime(void* args) {
  return SuppressMember(args, SubsArgs::kDelayTime);
}

const char* GRPCI_PathGetPath(void* path) { return SensorPath(path).path().c_str(); }
uint32_t GRPCI_PathGetDepth(void* path) { return SensorPath(path).depth(); }

void* GRPCI_CancelArgsInit(void) { return mgmtmsg::NewMessage<CancelArgs>(); }
int32_t GRPCI_CancelArgsParse(void* args, const void* data, int32_t size) {
  return mgmtmsg::ParseMessage<CancelArgs>(args, data, size);
}
void GRPCI_CancelArgsDeInit(void* args) { mgmtmsg::DeleteMessage<CancelArgs>(args); }
uint64_t GRPCI_CancelArgsGetRequestId(void* args) { return Cancel(args).request_id(); }
uint32_t GRPCI_CancelArgsGetSubscriptionId(void* args) { return Cancel(args).subscription_id(); }

void* GRPCI_SubsReplyInit(void) { return mgmtmsg::NewMessage<SubsReply>(); }
void GRPCI_SubsReplyDeInit(void* reply) { mgmtmsg::DeleteMessage<SubsReply>(reply); }
void GRPCI_SubsReplySetSubscriptionId(void* reply, uint32_t value) {
  SubscribeReply(reply).set_subscription_id(value);
}
void GRPCI_SubsReplySetRequestId(void* reply, uint64_t value) {
  SubscribeReply(reply).set_request_id(value);
}
void GRPCI_SubsReplySetResponseCode(void* reply, const char* data, uint32_t len) {
  AssignBytes(SubscribeReply(reply).mutable_response_code(), data, len);
}
// Choosing `message` in MessageData first releases a message_json text.
void GRPCI_SubsReplySetMessage(void* reply, const char* data, uint32_t len) {
  AssignBytes(SubscribeReply(reply).mutable_message(), data, len);
}
int32_t GRPCI_SubsReplySerialize(uint32_t ownerId, void* reply, void** out, uint32_t* outLen) {
  return mgmtmsg::SerializeToPlatformBlock(SubscribeReply(reply), ownerId, kSubsReplySite, out,
                                           outLen);
}

void* GRPCI_CancelReplyInit(void) { return mgmtmsg::NewMessage<CancelReply>(); }
void GRPCI_CancelReplyDeInit(void* reply) { mgmtmsg::DeleteMessage<CancelReply>(reply); }
void GRPCI_CancelReplySetRequestId(void* reply, uint64_t value) {
  CancelAnswer(reply).set_request_id(value);
}
void GRPCI_CancelReplySetResponseCode(void* reply, const char* data, uint32_t len) {
  AssignBytes(CancelAnswer(reply).mutable_response_code(), data, len);
}
void GRPCI_CancelReplySetMessage(void* reply, const char* data, uint32_t len) {
  AssignBytes(CancelAnswer(reply).mutable_message(), data, len);
}
int32_t GRPCI_CancelReplySerialize(uint32_t ownerId, void* reply, void** out, uint32_t* outLen) {
  return mgmtmsg::SerializeToPlatformBlock(CancelAnswer(reply), ownerId, kCancelReplySite, out,
                                           outLen);
}
