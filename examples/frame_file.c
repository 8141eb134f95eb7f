#include "frame_file.h"

#include <stdio.h>

int WriteFrameFile(const char* dir, const char* name, const void* data, size_t len) {
  char path[4096];
  FILE* file;
  int ok;

  if (dir == NULL) {
    return 0;
  }
  if (snprintf(path, sizeof path, "%s/%s", dir, name) >= (int)sizeof path) {
    printf("%s/%s: path too long\n", dir, name);
    return FRAME_NOT_WRITTEN;
  }
  file = fopen(path, "wb");
  if (file == NULL) {
    perror(path);
    return FRAME_NOT_WRITTEN;
  }
  ok = fwrite(data, 1, len, file) == len;
  ok = fclose(file) == 0 && ok;
  if (!ok) {
    perror(path);
    return FRAME_NOT_WRITTEN;
  }
  printf("wrote %s\n", path);
  return 0;
}
