/* Saving the bytes an exchange sends, for inspection by other tools. */
#ifndef MGMTMSG_EXAMPLES_FRAME_FILE_H
#define MGMTMSG_EXAMPLES_FRAME_FILE_H

#include <stddef.h>

/* Writes the len bytes at data to the file dir/name. Does nothing when dir
 * is NULL. Returns 0 on success, else prints why and returns 1. */
int WriteFrameFile(const char* dir, const char* name, const void* data, size_t len);

#endif
