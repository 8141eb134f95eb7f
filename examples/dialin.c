/* One dial-in Subscribe: a collector's request is parsed and printed, and the
 * device answers with one reply. */
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include "exchanges.h"
#include "frame_file.h"
#include "grpci/grpci_ex.h"
#include "hexdump.h"
#include "oxa_mem.h"

#define EXAMPLE_OWNER_ID 0x4950u /* memory owner of the example's blocks */

/* A SubsArgs as a collector sends it. */
static const char kSubsArgs[] =
    "\x08\xe9\x07"                                                 /* request_id 1001 */
    "\x10\x01"                                                     /* encoding 1 */
    "\x2a\x28\x0a\x24/interfaces/interface/state/counters\x10\x01" /* path, depth 1 */
    "\x30\xe8\x07"                                                 /* sample_interval 1000 */
    "\x38\x3c"                                                     /* heartbeat_interval 60 */
    "\x40\x01";                                                    /* suppress_redundant */

/* The sampled data that the reply carries, already encoded. */
static const char kSample[] = "\x0a\x04\x65\x74\x68\x30\x10\xc8\x01";

static void PrintSubsArgs(void* args) {
  int32_t i;

  printf("subscribe: request %" PRIu64 ", encoding %" PRIu32 ", sample every %" PRIu64
         ", heartbeat %" PRIu64 "\n",
         GRPCI_SubsArgsGetRequestId(args), GRPCI_SubsArgsGetEncoding(args),
         GRPCI_SubsArgsGetSampleInterval(args), GRPCI_SubsArgsGetHeartbeat(args));
  for (i = 0; i < GRPCI_SubsArgsPathSizeof(args); i++) {
    void* path = GRPCI_SubsArgsGetPath(args, i);
    printf("  path %s, depth %" PRIu32 "\n", GRPCI_PathGetPath(path), GRPCI_PathGetDepth(path));
  }
  switch (GRPCI_SubsArgsGetSuppressCase(args)) {
    case 8:
      printf("  suppress redundant: %" PRIu64 "\n", GRPCI_SubsArgsGetSuppressRedundant(args));
      break;
    case 9:
      printf("  delay time: %" PRIu64 "\n", GRPCI_SubsArgsGetDelayTime(args));
      break;
    default:
      printf("  no suppression\n");
  }
}

/* Answers the request with its first reply and prints the reply's bytes. */
static int Answer(void* args, const char* frameDir) {
  void* reply = GRPCI_SubsReplyInit();
  void* bytes = NULL;
  uint32_t len = 0;
  int failed;

  if (reply == NULL) {
    printf("dial-in: no memory for the reply\n");
    return 1;
  }
  GRPCI_SubsReplySetSubscriptionId(reply, 1);
  GRPCI_SubsReplySetRequestId(reply, GRPCI_SubsArgsGetRequestId(args));
  GRPCI_SubsReplySetResponseCode(reply, "ok", 2);
  GRPCI_SubsReplySetMessage(reply, kSample, sizeof kSample - 1);
  failed = !GRPCI_SubsReplySerialize(EXAMPLE_OWNER_ID, reply, &bytes, &len);
  GRPCI_SubsReplyDeInit(reply);
  if (failed) {
    printf("dial-in: the reply could not be serialized\n");
    return 1;
  }
  PrintBytes("dial-in Subscribe reply", bytes, len);
  failed = WriteFrameFile(frameDir, "subs_reply.bin", bytes, len);
  OXA_Free_F(bytes, __FILE__, __LINE__);
  return failed;
}

int RunDialin(const char* frameDir) {
  void* args = GRPCI_SubsArgsInit();
  int failed;

  if (args == NULL) {
    printf("dial-in: no memory for the request\n");
    return 1;
  }
  PrintBytes("dial-in Subscribe request", kSubsArgs, sizeof kSubsArgs - 1);
  failed = !GRPCI_SubsArgsParse(args, kSubsArgs, (int32_t)(sizeof kSubsArgs - 1));
  if (failed) {
    printf("dial-in: the request could not be parsed\n");
  } else {
    PrintSubsArgs(args);
    failed = Answer(args, frameDir);
  }
  GRPCI_SubsArgsDeInit(args);
  return failed;
}
