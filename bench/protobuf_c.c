/* W1 and W3 with protobuf-c, as a C team using it would write them: the
 * message structures of every update kept from message to message and
 * filled in again for each, strings pointing at the caller's data (protobuf-c
 * copies nothing), the size computed and the message packed into a buffer
 * reused when it is large enough. */
#include <stdlib.h>

#include "github.com/openconfig/gnmi/proto/gnmi/gnmi.pb-c.h"
#include "workloads.h"

/* One update's structures. */
typedef struct PbcUpdate {
  Gnmi__Update update;
  Gnmi__Path path;
  Gnmi__PathElem elems[3];
  Gnmi__PathElem* elemList[3];
  Gnmi__PathElem__KeyEntry key;
  Gnmi__PathElem__KeyEntry* keyList[1];
  Gnmi__TypedValue val;
} PbcUpdate;

static PbcUpdate updates[kGetUpdates];
static Gnmi__Update* updateList[kGetUpdates];
static uint8_t* buffer;
static size_t capacity;

/* interfaces / interface[name=ethN] / counters, valued as in ours.c. */
static Gnmi__Update* BuildCounterUpdate(PbcUpdate* u, int n, uint64_t counter) {
  static char* const names[3] = {"interfaces", "interface", "counters"};
  int i;
  gnmi__update__init(&u->update);
  gnmi__path__init(&u->path);
  for (i = 0; i < 3; i++) {
    gnmi__path_elem__init(&u->elems[i]);
    u->elems[i].name = names[i];
    u->elemList[i] = &u->elems[i];
  }
  gnmi__path_elem__key_entry__init(&u->key);
  u->key.key = "name";
  u->key.value = (char*)BenchEthName(n).data;
  u->keyList[0] = &u->key;
  u->elems[1].n_key = 1;
  u->elems[1].key = u->keyList;
  u->path.n_elem = 3;
  u->path.elem = u->elemList;
  gnmi__typed_value__init(&u->val);
  if (n % 2 == 0) {
    u->val.value_case = GNMI__TYPED_VALUE__VALUE_JSON_IETF_VAL;
    u->val.json_ietf_val.data = (uint8_t*)kBenchJsonValue.data;
    u->val.json_ietf_val.len = kBenchJsonValue.len;
  } else {
    u->val.value_case = GNMI__TYPED_VALUE__VALUE_UINT_VAL;
    u->val.uint_val = counter;
  }
  u->update.path = &u->path;
  u->update.val = &u->val;
  return &u->update;
}

static size_t Pack(const ProtobufCMessage* message, BenchSink* sink) {
  const size_t size = protobuf_c_message_get_packed_size(message);
  if (capacity < size) {
    free(buffer);
    buffer = malloc(size);
    capacity = size;
  }
  protobuf_c_message_pack(message, buffer);
  BenchHand(sink, buffer, size);
  return size;
}

size_t PbcW1(BenchSink* sink) {
  Gnmi__GetResponse response;
  Gnmi__Notification notification;
  Gnmi__Notification* notifications[1] = {&notification};
  Gnmi__Path prefix;
  Gnmi__PathElem device;
  Gnmi__PathElem* prefixElems[1] = {&device};
  int n;
  gnmi__get_response__init(&response);
  gnmi__notification__init(&notification);
  gnmi__path__init(&prefix);
  gnmi__path_elem__init(&device);
  notification.timestamp = BenchTimestamp(0);
  prefix.origin = "openconfig";
  device.name = "device";
  prefix.n_elem = 1;
  prefix.elem = prefixElems;
  notification.prefix = &prefix;
  for (n = 0; n < kGetUpdates; n++) {
    updateList[n] = BuildCounterUpdate(&updates[n], n, BenchCounterValue(n));
  }
  notification.n_update = kGetUpdates;
  notification.update = updateList;
  response.n_notification = 1;
  response.notification = notifications;
  return Pack(&response.base, sink);
}

size_t PbcW3(BenchSink* sink) {
  size_t produced = 0;
  int m, n;
  for (m = 0; m < kStreamMessages; m++) {
    Gnmi__SubscribeResponse response;
    Gnmi__Notification notification;
    gnmi__subscribe_response__init(&response);
    gnmi__notification__init(&notification);
    notification.timestamp = BenchTimestamp(m);
    for (n = 0; n < kStreamUpdates; n++) {
      updateList[n] = BuildCounterUpdate(&updates[n], n, BenchCounterValue(m + n));
    }
    notification.n_update = kStreamUpdates;
    notification.update = updateList;
    response.response_case = GNMI__SUBSCRIBE_RESPONSE__RESPONSE_UPDATE;
    response.update = &notification;
    produced += Pack(&response.base, sink);
  }
  return produced;
}
