/* The inputs that both sides of every workload build their messages from. */
#include <stdio.h>

#include "workloads.h"

static char ethNames[kGetUpdates][8];
static BenchText ethTexts[kGetUpdates];
static char counterPaths[kGetUpdates][48];
static BenchText counterPathTexts[kGetUpdates];
static char payload[kBenchPayloadMax];

#define JSON_VALUE "{\"in-octets\":\"18446744073709\",\"out-octets\":\"42\"}"
typedef char JsonValueHasItsLength[sizeof JSON_VALUE - 1 == kJsonValueBytes ? 1 : -1];
const BenchText kBenchJsonValue = {JSON_VALUE, kJsonValueBytes};

void BenchDataInit(void) {
  int n;
  for (n = 0; n < kGetUpdates; n++) {
    int len = snprintf(ethNames[n], sizeof ethNames[n], "eth%d", n);
    ethTexts[n].data = ethNames[n];
    ethTexts[n].len = (uint32_t)len;
    len = snprintf(counterPaths[n], sizeof counterPaths[n],
                   "/interfaces/interface[name=eth%d]/counters", n);
    counterPathTexts[n].data = counterPaths[n];
    counterPathTexts[n].len = (uint32_t)len;
  }
  for (n = 0; n < kBenchPayloadMax; n++) {
    payload[n] = (char)(n * 31 + 7);
  }
}

BenchText BenchEthName(int n) { return ethTexts[n]; }

BenchText BenchCounterPathText(int n) { return counterPathTexts[n]; }

uint64_t BenchCounterValue(int n) { return (uint64_t)n * UINT64_C(1000003); }

int64_t BenchTimestamp(int m) { return INT64_C(1700000000000000000) + m; }

const char* BenchPayload(void) { return payload; }
