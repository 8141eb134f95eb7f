/* Saving the bytes an exchange sends, for inspection by other tools. */
#ifndef MGMTMSG_EXAMPLES_FRAME_FILE_H
#define MGMTMSG_EXAMPLES_FRAME_FILE_H

#include <stddef.h>

/* What WriteFrameFile returns when the file could not be written: a bit of
 * its own, apart from an exchange's own failure (1). */
#define FRAME_NOT_WRITTEN 2

/* Writes the len bytes at data to the file dir/name. Does nothing when dir
 * is NULL. Returns 0 on success, else prints why and returns
 * FRAME_NOT_WRITTEN. */
int WriteFrameFile(const char* dir, const char* name, const void* data, size_t len);

#endif
