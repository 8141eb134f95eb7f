#include <time.h>

#include "clock.h"

static uint64_t read_clock(clockid_t clock) {
  struct timespec now;
  clock_gettime(clock, &now);
  return (uint64_t)now.tv_sec * 1000000000u + (uint64_t)now.tv_nsec;
}

uint64_t monotonic_ns(void) { return read_clock(CLOCK_MONOTONIC); }

uint64_t realtime_ns(void) { return read_clock(CLOCK_REALTIME); }
