/* Monotonic and wall-clock time in nanoseconds. */
#ifndef SERVICE_CLOCK_H
#define SERVICE_CLOCK_H

#include <stdint.h>

uint64_t monotonic_ns(void);
uint64_t realtime_ns(void);

#endif
