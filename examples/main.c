/* Plays the device's control software: takes request bytes as the transport
 * component would hand them over, answers through mgmtmsg, and prints each
 * step readably. */
#include <stdio.h>

#include "exchanges.h"

int main(void) {
  int failures = 0;
  failures += RunGnmiGet() != 0;
  printf(failures == 0 ? "all exchanges done\n" : "%d exchange(s) failed\n", failures);
  return failures == 0 ? 0 : 1;
}
