// The device memory manager that mgmtmsg imports, as a consumer's platform
// provides it.
#include <platform/oxa_mem.h>
#include <stdlib.h>

uint8_t g_aucOxaMemPt[1] = {0};

void* OXA_Malloc_F(uint32_t ownerId, uint8_t partition, uint32_t size, const char* file,
                   uint32_t line) {
  (void)ownerId, (void)partition, (void)file, (void)line;
  return malloc(size > 0 ? size : 1);
}

void OXA_Free_F(void* block, const char* file, uint32_t line) {
  (void)file, (void)line;
  free(block);
}
