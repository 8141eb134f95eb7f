#include "oxa_mem_host.h"

#include <pthread.h>
#include <stdlib.h>

uint8_t g_aucOxaMemPt[4] = {7, 0, 0, 0};

static OxaHostStats stats;
static uint32_t failuresArmed;
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;

void* OXA_Malloc_F(uint32_t ownerId, uint8_t partition, uint32_t size, const char* file,
                   uint32_t line) {
  void* block = NULL;
  pthread_mutex_lock(&lock);
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
  pthread_mutex_unlock(&lock);
  return block;
}

void OXA_Free_F(void* block, const char* file, uint32_t line) {
  OxaHostCall call = {0, 0, 0, block, file, line};
  pthread_mutex_lock(&lock);
  stats.freeCalls++;
  stats.lastFree = call;
  if (block != NULL) {
    stats.liveBlocks--;
  }
  pthread_mutex_unlock(&lock);
  free(block);
}

void OxaHost_Reset(void) {
  OxaHostStats cleared = {0};
  pthread_mutex_lock(&lock);
  cleared.liveBlocks = stats.liveBlocks;
  stats = cleared;
  failuresArmed = 0;
  pthread_mutex_unlock(&lock);
}

void OxaHost_FailNextMallocs(uint32_t count) {
  pthread_mutex_lock(&lock);
  failuresArmed = count;
  pthread_mutex_unlock(&lock);
}

OxaHostStats OxaHost_Stats(void) {
  pthread_mutex_lock(&lock);
  OxaHostStats snapshot = stats;
  pthread_mutex_unlock(&lock);
  return snapshot;
}
