/* Plays the device's control software: takes request bytes as the transport
 * component would hand them over, answers through mgmtmsg, and prints each
 * step readably. */
#include <stdio.h>
#include <string.h>

#include "exchanges.h"

/* Usage: mgmtmsg_example [--write-frames DIR] */
int main(int argc, char** argv) {
  const char* frameDir = NULL;
  int failures = 0;
  if (argc == 3 && strcmp(argv[1], "--write-frames") == 0) {
    frameDir = argv[2];
  } else if (argc != 1) {
    fprintf(stderr, "usage: %s [--write-frames DIR]\n", argv[0]);
    return 2;
  }
  failures += RunGnmiGet() != 0;
  failures += RunSouthIpc(frameDir) != 0;
  failures += RunDialin(frameDir) != 0;
  failures += RunGnmiSubscribe() != 0;
  printf(failures == 0 ? "all exchanges done\n" : "%d exchange(s) failed\n", failures);
  return failures == 0 ? 0 : 1;
}
