/* The path printer that the example carried before gnmi/gnmi_path.h (keys in
 * the map's order, nothing escaped), kept as the reference of the
 * GNMI_Path_ToString benchmark. */
#include <stdio.h>
#include <string.h>

#include "gnmi/gnmi_ex.h"
#include "workloads.h"

/* Appends a then b at *used, never past size. */
static void Append(char* text, size_t size, size_t* used, const char* a, const char* b) {
  int n;
  if (*used >= size) {
    return;
  }
  n = snprintf(text + *used, size - *used, "%s%s", a, b);
  if (n > 0) {
    *used += (size_t)n;
  }
}

size_t BenchPrinterPathText(void* path, char* text, size_t size) {
  size_t used = 0;
  int i, k;
  text[0] = '\0';
  for (i = 0; i < GNMI_Path_PathElemSizeof(path); i++) {
    void* elem = GNMI_Path_GetPathElem(path, i);
    Append(text, size, &used, "/", GNMI_PathElem_GetName(elem));
    for (k = 0; k < GNMI_PathElem_KeySizeof(elem); k++) {
      const char* key;
      const char* value;
      GNMI_PathElem_GetKey(elem, k, &key, &value);
      Append(text, size, &used, "[", key);
      Append(text, size, &used, "=", value);
      Append(text, size, &used, "]", "");
    }
  }
  return strlen(text);
}
