/* W1 and W3 through the notification writer (gnmi/gnmi_wire.h), called from
 * C: the leaf paths are encoded once, as a device does for the leaves it
 * samples, then every message is written straight into bytes. */
#include <stdlib.h>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_wire.h"
#include "workloads.h"

struct WriterPaths {
  void* prefix;
  void* counters[kGetUpdates];
};

void* WriterPathsNew(void) {
  struct WriterPaths* paths = malloc(sizeof *paths);
  void* holder = GNMI_Get_Init();
  void* notification = GNMI_GetResponse_AppendNotification(holder);
  void* prefix = GNMI_Notification_AddPrefix(notification);
  int n;
  GNMI_Path_SetOrigin(prefix, "openconfig", 10);
  GNMI_PathElem_SetName(GNMI_Path_AppendPathElem(prefix), "device", 6);
  paths->prefix = GNMI_WirePath_Make(prefix);
  for (n = 0; n < kGetUpdates; n++) {
    void* path = GNMI_Notification_AppendDelete(notification);
    BenchBuildCounterPath(path, n);
    paths->counters[n] = GNMI_WirePath_Make(path);
  }
  GNMI_Get_DeInit(holder); /* the wire paths do not refer to it */
  return paths;
}

void WriterPathsFree(void* paths) {
  struct WriterPaths* kept = paths;
  int n;
  GNMI_WirePath_Free(kept->prefix);
  for (n = 0; n < kGetUpdates; n++) {
    GNMI_WirePath_Free(kept->counters[n]);
  }
  free(kept);
}

/* The update of ours.c: the JSON text for even n, a counter for odd n. */
static void WriteCounterUpdate(void* ctx, void* path, int n, uint64_t counter) {
  if (n % 2 == 0) {
    GNMI_Writer_AddJsonIetf(ctx, path, kBenchJsonValue.data, kBenchJsonValue.len);
  } else {
    GNMI_Writer_AddUint(ctx, path, counter);
  }
}

static size_t Finish(void* ctx, BenchSink* sink) {
  void* out;
  int len;
  if (!GNMI_Writer_Finish(ctx, &out, &len)) {
    return 0;
  }
  BenchHand(sink, out, (size_t)len);
  return (size_t)len;
}

size_t WriterW1(void* getCtx, const void* paths, BenchSink* sink) {
  const struct WriterPaths* kept = paths;
  int n;
  GNMI_Writer_Begin(getCtx, BenchTimestamp(0), kept->prefix);
  for (n = 0; n < kGetUpdates; n++) {
    WriteCounterUpdate(getCtx, kept->counters[n], n, BenchCounterValue(n));
  }
  return Finish(getCtx, sink);
}

size_t WriterW3Message(void* ctx, const void* paths, int m, BenchSink* sink) {
  const struct WriterPaths* kept = paths;
  int n;
  GNMI_Writer_Begin(ctx, BenchTimestamp(m), NULL);
  for (n = 0; n < kStreamUpdates; n++) {
    WriteCounterUpdate(ctx, kept->counters[n], n, BenchCounterValue(m + n));
  }
  return Finish(ctx, sink);
}

size_t WriterW3(const void* paths, BenchSink* sink) {
  void* ctx = GNMI_Subscribe_Init();
  size_t produced = 0;
  int m;
  for (m = 0; m < kStreamMessages; m++) {
    produced += WriterW3Message(ctx, paths, m, sink);
  }
  GNMI_Subscribe_DeInit(ctx);
  return produced;
}
