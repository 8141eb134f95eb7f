#include "oxa_mem_host.h"

#include <stdlib.h>

uint8_t g_aucOxaMemPt[4] = {7, 0, 0, 0};

static OxaHostStats stats;
static uint32_t failuresArmed;

void* OXA_Malloc_F(uint32_t ownerId, uint8_t partition, uint32_t size, const char* file,
                   uint32_t line) {
  void* block = NULL;
  if (failuresArmed > 0) {
    failuresArmed--;
  } else {
    block = malloc(size > 0 ? size : 1);
  }
  OxaHostCall call = {ownerId, partition, size, block, file, line};
  stats.mallocCalls++;
  stats.lastMalloc = call;
  if (block != NULL) {
    stats.liveBlocks++;
  }
  return block;
}

void OXA_Free_F(void* block, const char* file, uint32_t line) {
  OxaHostCall call = {0, 0, 0, block, file, line};
  stats.freeCalls++;
  stats.lastFree = call;
  if (block != NULL) {
    stats.liveBlocks--;
    free(block);
  }
}

void OxaHost_Reset(void) {
  uint32_t live = stats.liveBlocks;
  OxaHostStats cleared = {0};
  stats = cleared;
  stats.liveBlocks = live;
  failuresArmed = 0;
}

void OxaHost_FailNextMallocs(uint32_t count) { failuresArmed = count; }

OxaHostStats OxaHost_Stats(void) { return stats; }
