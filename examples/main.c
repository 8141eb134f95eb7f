/* Plays the device's control software: takes request bytes as the transport
 * component would hand them over, answers through mgmtmsg, and prints each
 * step readably. */
#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "exchanges.h"
#include "frame_file.h"

static const char kUsage[] =
    "usage: %s [--write-frames DIR]\n"
    "Plays a gNMI Get, a south IPC message, a dial-in subscription and a gNMI\n"
    "Subscribe stream. --write-frames DIR (created when absent) also writes the\n"
    "bytes sent on the south IPC and dial-in channels into DIR.\n";

/* Makes the directory and its missing parents; 0 on success, else -1 with
 * errno set. */
static int MakeDirectory(const char* dir) {
  char path[4096];
  size_t i;
  if (strlen(dir) >= sizeof path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  strcpy(path, dir);
  for (i = 1; path[i - 1] != '\0'; i++) {
    if (path[i] == '/' || path[i] == '\0') {
      char end = path[i];
      path[i] = '\0';
      if (mkdir(path, 0777) != 0 && errno != EEXIST) {
        return -1;
      }
      path[i] = end;
    }
  }
  return 0;
}

/* Counts and names what went wrong in one exchange's result. */
static int Report(const char* exchange, int result) {
  if (result & 1) {
    printf("%s: the exchange failed\n", exchange);
  }
  if (result & FRAME_NOT_WRITTEN) {
    printf("%s: the frame file could not be written\n", exchange);
  }
  return result != 0;
}

int main(int argc, char** argv) {
  const char* frameDir = NULL;
  int failures = 0;
  if (argc == 2 && strcmp(argv[1], "--help") == 0) {
    printf(kUsage, argv[0]);
    return 0;
  }
  if (argc == 3 && strcmp(argv[1], "--write-frames") == 0) {
    frameDir = argv[2];
  } else if (argc != 1) {
    fprintf(stderr, kUsage, argv[0]);
    return 2;
  }
  if (frameDir != NULL && MakeDirectory(frameDir) != 0) {
    fprintf(stderr, "%s: cannot create %s: %s\n", argv[0], frameDir, strerror(errno));
    return 1;
  }
  failures += Report("gNMI Get", RunGnmiGet());
  failures += Report("south IPC", RunSouthIpc(frameDir));
  failures += Report("dial-in", RunDialin(frameDir));
  failures += Report("gNMI Subscribe", RunGnmiSubscribe());
  printf(failures == 0 ? "all exchanges done\n" : "%d exchange(s) with failures\n", failures);
  return failures == 0 ? 0 : 1;
}
