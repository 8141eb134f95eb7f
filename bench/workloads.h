/* The benchmark workloads, each written twice: through the library's C entry
 * points (ours.c and paths.c, compiled as C as the device's software is) and
 * with the generated message classes used directly (direct.cc), or for paths
 * as text, against building them element by element and the example's former
 * printer (printer.c). Both sides take the
 * same inputs (workload_data.c) and must hand the same bytes to their sink. */
#ifndef MGMTMSG_BENCH_WORKLOADS_H
#define MGMTMSG_BENCH_WORKLOADS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Inputs shared by both sides ---- */

enum {
  kGetUpdates = 1000,      /* W1: updates of the Get response */
  kSetUpdates = 100,       /* W2: updates of the parsed Set request */
  kStreamUpdates = 50,     /* W3: updates per Subscribe message */
  kStreamMessages = 10000, /* W3: messages per stream */
  kReplyBytes = 4096,      /* W5: bytes of the dial-in reply's message */
  kReplyRuns = 10000,      /* W5: serializations per run */
  kJsonValueBytes = 48     /* W1, W3: bytes of each JSON value */
};

typedef struct BenchText {
  const char* data;
  uint32_t len;
} BenchText;

/* Fills the tables below; call once before any workload. */
void BenchDataInit(void);
/* "ethN", for N below kGetUpdates. */
BenchText BenchEthName(int n);
/* "/interfaces/interface[name=ethN]/counters": W1's update path n as text. */
BenchText BenchCounterPathText(int n);
/* A 48-byte JSON object: the value of every even-numbered update. */
extern const BenchText kBenchJsonValue;
/* The uint_val of odd-numbered update n. */
uint64_t BenchCounterValue(int n);
/* Timestamp of message m: a fixed instant plus m nanoseconds. */
int64_t BenchTimestamp(int m);
/* kBenchPayloadMax patterned bytes: W4's rpc_data and W5's message. */
const char* BenchPayload(void);
enum { kBenchPayloadMax = 1 << 20 };

/* ---- Where encoded bytes (or, for W2, the strings read) go ----
 * NULL while timing; the byte-identity check passes a recorder. */
typedef struct BenchSink BenchSink;
void BenchSinkPut(BenchSink* sink, const void* bytes, size_t len);
static inline void BenchHand(BenchSink* sink, const void* bytes, size_t len) {
  if (sink != NULL) {
    BenchSinkPut(sink, bytes, len);
  }
}

/* The memory owner id passed to the GRPCI_ serializers. */
enum { kBenchOwnerId = 0x4d47 };

/* Starts the next message of a Subscribe stream with an empty update
 * response: 1, or 0 when it could not. */
typedef int (*BenchStartFn)(void* subscribeCtx);

/* ---- Through the C entry points (ours.c) ----
 * Every workload returns a number made of what it produced (byte counts) or
 * read (W2: the first byte of every string), which the harness consumes so
 * that nothing is optimized away. */
size_t OursW1(BenchSink* sink);
void* OursW1Build(void);
size_t OursW1Serialize(void* ctx, BenchSink* sink);
/* W1 on a Get context kept from request to request: reset, build, serialize. */
size_t OursW1Reset(void* getCtx, BenchSink* sink);

/* W2 reads the SetRequest encoded by DirectW2Request. */
size_t OursW2(BenchText request, BenchSink* sink);

/* W3 on a fresh Subscribe context, each message started by `start`
 * (GNMI_SubscribeResponse_Reset, as a C caller streams), built, serialized. */
size_t OursW3(BenchStartFn start, BenchSink* sink);
/* Message m of a W3 stream on ctx: started by `start`, built, serialized. */
size_t OursW3Message(BenchStartFn start, void* ctx, int m, BenchSink* sink);
void OursW3Build(void* ctx, int m);
/* Builds a path: W1's update path n, into an empty path. */
typedef void (*BenchPathFn)(void* path, int n);
/* W3 message m's build, its paths built by `buildPath`. */
void OursW3BuildWith(void* ctx, int m, BenchPathFn buildPath);
size_t OursW3Serialize(void* ctx, BenchSink* sink);

void* OursW4Build(uint32_t payloadBytes);
size_t OursW4(void* southMsg, BenchSink* sink);

void* OursW5Build(void);
size_t OursW5(void* reply, int runs, BenchSink* sink);

/* interfaces / interface[name=ethN] / counters, W1's update path n, built
 * into an empty path element by element. */
void BenchBuildCounterPath(void* path, int n);
/* Serializes a gNMI context's response and hands the bytes to the sink.
 * Returns their count, 0 when Serialize fails. */
size_t BenchSerializeResponse(int (*serialize)(void*, void**, int*), void* ctx, BenchSink* sink);

/* ---- Paths as text (paths.c), against building element by element and the
 * example's former path printer (printer.c) ----
 * W1's update paths built into the updates of a fresh Get response (then
 * destroyed) from their text, or element by element; the sink, when given,
 * gets the response's bytes. */
size_t OursPathsFromText(BenchSink* sink);
/* W3 message m on a Subscribe context (reset, build, Serialize), its update
 * paths read from their text. */
void OursW3MessageFromText(void* ctx, int m);
size_t OursPathsByElement(BenchSink* sink);
/* A Get context holding W1's update paths, whose handles go to `paths`. */
void* OursPathsBuild(void* paths[kGetUpdates]);
/* Every path written as text into one buffer, the texts handed to the sink:
 * by GNMI_Path_ToString, or by the former printer. */
size_t OursPathsToText(void* const paths[kGetUpdates], BenchSink* sink);
size_t PrinterPathsToText(void* const paths[kGetUpdates], BenchSink* sink);
/* The former printer: the path's text, cut to size bytes with its NUL, and
 * the length written. */
size_t BenchPrinterPathText(void* path, char* text, size_t size);

/* ---- With the generated classes (direct.cc), same shapes ---- */
size_t DirectW1(BenchSink* sink);
/* An Arena and an output buffer kept from reply to reply. */
void* DirectRepliesNew(void);
void DirectRepliesFree(void* replies);
/* W1 on the kept Arena, reset per response. */
size_t DirectW1Arena(void* replies, BenchSink* sink);
/* The SetRequest of W2, encoded once; valid until the program ends. */
BenchText DirectW2Request(void);
size_t DirectW2(BenchText request, BenchSink* sink);
size_t DirectW3(BenchSink* sink);
/* W3 on one Arena, reset per message. */
size_t DirectW3Arena(BenchSink* sink);
/* W4's reference: the frame's bytes copied into a preallocated buffer. */
size_t DirectW4Copy(void* to, const void* from, size_t frameBytes);
/* The same frame built by the generated classes, for the byte check only. */
size_t DirectW4Frame(uint32_t payloadBytes, BenchSink* sink);
void* DirectW5Build(void);
void DirectW5Free(void* reply);
size_t DirectW5(void* reply, int runs, BenchSink* sink);

/* ---- Through the notification writer (writer.c) ----
 * W1's prefix and update paths encoded once, kept until freed. */
void* WriterPathsNew(void);
void WriterPathsFree(void* paths);
/* W1 written on a Get context kept from response to response. */
size_t WriterW1(void* getCtx, const void* paths, BenchSink* sink);
/* Message m of a W3 stream written on a Subscribe context. */
size_t WriterW3Message(void* ctx, const void* paths, int m, BenchSink* sink);
/* W3 on a fresh Subscribe context. */
size_t WriterW3(const void* paths, BenchSink* sink);

/* ---- With protobuf-c (protobuf_c.c), same content ---- */
size_t PbcW1(BenchSink* sink);
size_t PbcW3(BenchSink* sink);

#ifdef __cplusplus
}
#endif

#endif
