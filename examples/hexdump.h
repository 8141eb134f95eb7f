/* Printing helpers shared by the example's exchanges. */
#ifndef MGMTMSG_EXAMPLES_HEXDUMP_H
#define MGMTMSG_EXAMPLES_HEXDUMP_H

#include <stddef.h>

/* Prints "label (n bytes): hex bytes" on one line, 32 bytes a line. */
void PrintBytes(const char* label, const void* data, size_t len);

#endif
