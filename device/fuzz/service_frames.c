/* libFuzzer over the service module's frame dispatch: arbitrary bytes as
 * they would arrive on the south channel, with the replies thrown away. */
#include <gnmi/gnmi_ex.h>
#include <stddef.h>
#include <stdint.h>

#include "service.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static struct service svc;
  if (svc.scratch == NULL) {
    svc.fd = -1;
    svc.tick_ns = 1000000000u;
    if (!tree_init(&svc.tree, 2) || !users_add(&svc.users, "admin:admin") ||
        (svc.scratch = GNMI_Subscribe_Init()) == NULL) {
      return 0;
    }
  }
  if (buffer_append(&svc.in, data, size)) service_receive(&svc);
  svc.in.len = svc.out.len = 0;
  calls_drop(&svc);
  return 0;
}
