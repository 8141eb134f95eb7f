/* One gNMI Get RPC: request bytes in, response bytes out. */
#include <stdio.h>

#include "exchanges.h"
#include "gnmi/gnmi_ex.h"
#include "hexdump.h"

/* A GetRequest as a collector sends it: type STATE, encoding JSON_IETF and one
 * path /interfaces/interface[name=eth0]/state. */
static const unsigned char kGetRequest[] = {
    0x12, 0x32,                                                   /* path */
    0x1a, 0x0c, 0x0a, 0x0a, 'i', 'n', 't', 'e', 'r', 'f', 'a', 'c', 'e', 's',
    0x1a, 0x19, 0x0a, 0x09, 'i', 'n', 't', 'e', 'r', 'f', 'a', 'c', 'e',
    0x12, 0x0c, 0x0a, 0x04, 'n', 'a', 'm', 'e', 0x12, 0x04, 'e', 't', 'h', '0',
    0x1a, 0x07, 0x0a, 0x05, 's', 't', 'a', 't', 'e',
    0x18, 0x02,  /* type STATE */
    0x28, 0x04}; /* encoding JSON_IETF */

int RunGnmiGet(void) {
  void *ctx = GNMI_Get_Init();
  void *out = NULL;
  int outLen = 0;
  int ok;

  if (ctx == NULL) {
    printf("gNMI Get: no memory for the context\n");
    return 1;
  }
  PrintBytes("gNMI Get request", kGetRequest, sizeof kGetRequest);
  ok = GNMI_GetRequest_Parse(ctx, kGetRequest, (int)sizeof kGetRequest) &&
       GNMI_GetResponse_Serialize(ctx, &out, &outLen);
  if (ok) {
    PrintBytes("gNMI Get response", out, (size_t)outLen);
  } else {
    printf("gNMI Get: the request could not be parsed or answered\n");
  }
  GNMI_Get_DeInit(ctx);
  return ok ? 0 : 1;
}
