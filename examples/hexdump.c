#include "hexdump.h"

#include <stdio.h>

void PrintBytes(const char* label, const void* data, size_t len) {
  const unsigned char* bytes = (const unsigned char*)data;
  size_t i;
  printf("%s (%lu bytes):", label, (unsigned long)len);
  for (i = 0; i < len; i++) {
    printf("%s%02x", i % 32 == 0 ? "\n    " : " ", bytes[i]);
  }
  printf("\n");
}
