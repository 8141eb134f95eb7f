/* libFuzzer over the service module's frame dispatch: arbitrary bytes as
 * they would arrive on the south channel, with the replies thrown away. Two
 * dial-out destinations have their calls 1 and 2 opening when the bytes
 * arrive, and publish after them. */
#include <gnmi/gnmi_ex.h>
#include <stddef.h>
#include <stdint.h>

#include "service.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const struct dialout_options kDialOut = {"127.0.0.1:1,[::1]:2", "Dialout", 0, NULL, 0};
  static struct service svc;
  static uint64_t now;
  if (svc.scratch == NULL) {
    svc.fd = 0; /* never written: the output is thrown away */
    svc.tick_ns = 1000000000u;
    if (!tree_init(&svc.tree, 2) || !users_add(&svc.users, "admin:admin") ||
        (svc.scratch = GNMI_Subscribe_Init()) == NULL || !dialout_init(&svc.dialout, &kDialOut)) {
      return 0;
    }
  }
  now += 60000000000u; /* past any retry wait */
  dialout_run(&svc, now);
  if (buffer_append(&svc.in, data, size)) service_receive(&svc);
  dialout_run(&svc, now);
  svc.in.len = svc.out.len = 0;
  calls_drop(&svc);
  dialout_lost_channel(&svc.dialout);
  svc.dialout.last_rpc_id = 0;
  return 0;
}
