/* W1's update paths through gnmi/gnmi_path.h: read from their text, and
 * written as text; the references build them element by element (ours.c)
 * and print them with the example's former printer (printer.c). */
#include <stddef.h>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "gnmi/gnmi_stream.h"
#include "workloads.h"

/* A fresh Get response whose updates get W1's paths through `build`; the
 * response's bytes go to the sink when there is one. */
static size_t BuildPaths(void (*build)(void* path, int n), BenchSink* sink) {
  void* ctx = GNMI_Get_Init();
  void* notification = GNMI_GetResponse_AppendNotification(ctx);
  size_t produced = kGetUpdates;
  int n;
  for (n = 0; n < kGetUpdates; n++) {
    build(GNMI_Update_SetPath(GNMI_Notification_AppendUpdate(notification)), n);
  }
  if (sink != NULL) {
    produced = BenchSerializeResponse(GNMI_GetResponse_Serialize, ctx, sink);
  }
  GNMI_Get_DeInit(ctx);
  return produced;
}

static void ReadCounterPath(void* path, int n) {
  BenchText text = BenchCounterPathText(n);
  GNMI_Path_FromString(path, text.data, text.len, NULL);
}

size_t OursPathsFromText(BenchSink* sink) { return BuildPaths(ReadCounterPath, sink); }

void OursW3MessageFromText(void* ctx, int m) {
  if (GNMI_SubscribeResponse_Reset(ctx)) {
    OursW3BuildWith(ctx, m, ReadCounterPath);
    OursW3Serialize(ctx, NULL);
  }
}

size_t OursPathsByElement(BenchSink* sink) { return BuildPaths(BenchBuildCounterPath, sink); }

void* OursPathsBuild(void* paths[kGetUpdates]) {
  void* ctx = GNMI_Get_Init();
  void* notification = GNMI_GetResponse_AppendNotification(ctx);
  int n;
  for (n = 0; n < kGetUpdates; n++) {
    paths[n] = GNMI_Update_SetPath(GNMI_Notification_AppendUpdate(notification));
    BenchBuildCounterPath(paths[n], n);
  }
  return ctx;
}

/* Writes every path as text into one buffer through `write`, handing the
 * texts to the sink. */
static size_t PathsToText(size_t (*write)(void* path, char* text, size_t size),
                          void* const paths[kGetUpdates], BenchSink* sink) {
  char text[256];
  size_t produced = 0;
  int n;
  for (n = 0; n < kGetUpdates; n++) {
    size_t len = write(paths[n], text, sizeof text);
    BenchHand(sink, text, len);
    produced += len;
  }
  return produced;
}

static size_t OursPathText(void* path, char* text, size_t size) {
  return GNMI_Path_ToString(path, text, (uint32_t)size);
}

size_t OursPathsToText(void* const paths[kGetUpdates], BenchSink* sink) {
  return PathsToText(OursPathText, paths, sink);
}

size_t PrinterPathsToText(void* const paths[kGetUpdates], BenchSink* sink) {
  return PathsToText(BenchPrinterPathText, paths, sink);
}
