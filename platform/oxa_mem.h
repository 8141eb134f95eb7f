/** @defgroup oxa_mem Device memory manager (imported)
 * @brief The device memory manager's interface, as imported by mgmtmsg
 * (`platform/oxa_mem.h`).
 *
 * The library does not define these symbols: the device's platform provides
 * them and they are resolved when the library is loaded. Blocks returned by
 * the GRPCI_ serializers come from OXA_Malloc_F and are released by the caller
 * with OXA_Free_F.
 * @{
 */
/** @file
 * The device memory manager's interface: see @ref oxa_mem. */
#ifndef MGMTMSG_PLATFORM_OXA_MEM_H
#define MGMTMSG_PLATFORM_OXA_MEM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Allocates size bytes for owner ownerId from memory partition partition.
 * file and line name the calling source place. @return the block, or NULL. */
void* OXA_Malloc_F(uint32_t ownerId, uint8_t partition, uint32_t size, const char* file,
                   uint32_t line);

/** Releases a block from OXA_Malloc_F. file and line name the calling place. */
void OXA_Free_F(void* block, const char* file, uint32_t line);

/** Memory partition numbers; mgmtmsg reads only the first element. */
extern uint8_t g_aucOxaMemPt[];

#ifdef __cplusplus
}
#endif

/** @} */
#endif
