/** @defgroup grpci_bytes South IPC bytes with their length
 * @brief mgmtmsg: `bytes` fields read with their exact length (`grpci/grpci_bytes.h`).
 *
 * Of the `bytes` fields the entry points of @ref grpci read, only RpcData's
 * `data` is returned without its length (GRPCI_RpcDataGetData); `token` and
 * `rpc_parament` already come with theirs. RPC data is itself an encoded
 * message, which holds NUL bytes as a rule: read it here. The `string`
 * fields are text (names, addresses, descriptions) and keep their
 * NUL-terminated readers. The typed values of gNMI are read with their
 * lengths through @ref gnmi_typed_value.
 * @{
 */
/** @file
 * South IPC bytes fields with their length: see @ref grpci_bytes. */
#ifndef MGMTMSG_GRPCI_BYTES_H
#define MGMTMSG_GRPCI_BYTES_H

#include <stdint.h>

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Reads the data bytes of an RpcData record (of a SouthMsg or stand-alone).
 * @param data the record.
 * @param len receives the exact byte count, NUL bytes included; may be NULL.
 * @return the bytes, never NULL ("" when empty), followed by a NUL in
 * storage, valid until the field is set again or the message is freed or
 * parsed into. */
MGMTMSG_API const char* GRPCI_RpcDataReadData(void* data, uint32_t* len);

#ifdef __cplusplus
}
#endif

/** @} */
#endif
