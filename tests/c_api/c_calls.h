/* What a C caller sees when it drives the library: filled by c_calls.c,
 * which is compiled as strict C99, and checked by c_api_test.cc. */
#ifndef MGMTMSG_TESTS_C_API_C_CALLS_H
#define MGMTMSG_TESTS_C_API_C_CALLS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct CGetRun {
  int initOk;
  int malformedParse; /* Parse of a truncated request */
  int parse;          /* Parse of the request */
  int pathCount;
  int type;
  char origin[16];
  int serialize;
  int responseLen;
  unsigned char response[32];
} CGetRun;

/* One gNMI Get RPC: a hand-made request in, a one-notification response out. */
void CRunGet(CGetRun* run);

typedef struct CSouthRun {
  int initOk;
  int serialize;
  uint32_t frameLen;
  unsigned char frame[32];
  int parse; /* Parse of the frame's body into a second message */
  uint32_t rpcId;
  int32_t msgType;
  uint32_t peerPort;
} CSouthRun;

/* One south IPC message framed, then parsed back from the frame's body. */
void CRunSouth(CSouthRun* run);

#ifdef __cplusplus
}
#endif

#endif
