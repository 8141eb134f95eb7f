/* Host substitute for the device memory manager, for tests, examples and
 * benchmarks, and installed as the host kit (libmgmtmsg-oxa-host) for control
 * programs built and run on a workstation. Blocks come from malloc; every
 * call is counted and the last call's arguments are recorded, and the next
 * allocations can be made to fail. Calls from several threads are serialized
 * by one lock, as the device's memory manager may be called from any thread. */
#ifndef MGMTMSG_PLATFORM_OXA_MEM_HOST_H
#define MGMTMSG_PLATFORM_OXA_MEM_HOST_H

#include <stdint.h>

#include "oxa_mem.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OxaHostCall {
  uint32_t ownerId;  /* OXA_Malloc_F only */
  uint8_t partition; /* OXA_Malloc_F only */
  uint32_t size;     /* OXA_Malloc_F only */
  void* block;       /* result of OXA_Malloc_F, argument of OXA_Free_F */
  const char* file;
  uint32_t line;
} OxaHostCall;

typedef struct OxaHostStats {
  uint32_t mallocCalls; /* OXA_Malloc_F calls, failed ones included */
  uint32_t freeCalls;
  uint32_t liveBlocks; /* blocks handed out and not yet released */
  OxaHostCall lastMalloc;
  OxaHostCall lastFree;
} OxaHostStats;

/* Clears the counters and any armed failure. Live blocks stay live. */
void OxaHost_Reset(void);

/* Makes the next `count` OXA_Malloc_F calls return NULL. */
void OxaHost_FailNextMallocs(uint32_t count);

/* A snapshot of the counters and the last calls. */
OxaHostStats OxaHost_Stats(void);

#ifdef __cplusplus
}
#endif

#endif
