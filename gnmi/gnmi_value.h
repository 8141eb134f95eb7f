/** @defgroup gnmi_typed_value gNMI typed values, every member both ways
 * @brief mgmtmsg: reading every member of a TypedValue, and the setters that
 * @ref gnmi_value lacks (`gnmi/gnmi_value.h`).
 *
 * A TypedValue holds at most one member of its oneof. ValueCase names it by
 * its field number; `common/mgmtmsg_codes.h` gives the numbers names
 * (GNMI_TYPEDVALUE_STRING_VAL ... GNMI_TYPEDVALUE_PROTO_BYTES, and
 * GNMI_TYPEDVALUE_NONE for none).
 *
 * Conventions (those of `gnmi/gnmi_ex.h` hold as well):
 *  1. A reader never changes the value, so it may be given a read-only handle
 *     (GNMI_Update_GetVal, a request's update). Reading a member the value does
 *     not hold gives that member's default: 0, 0.0, "" with length 0, a
 *     decimal of 0 digits and precision 0, an empty leaf list.
 *  2. Text and bytes are returned with their exact byte count in `*len`, NUL
 *     bytes inside them included; `len` may be NULL. The pointer is never
 *     NULL, the bytes are followed by a NUL in storage, and they stay valid
 *     until the value changes or its message is destroyed.
 *  3. A `string` member (string_val, ascii_val) holds valid UTF-8: a request
 *     carrying anything else fails its Parse, and a setter given invalid UTF-8
 *     stores it, the response's Serialize then logging the field's name and
 *     writing it as it is. The `bytes` members carry any octets.
 *  4. The setters follow convention 6 and 10 of `gnmi/gnmi_ex.h`: exactly
 *     `len` bytes are copied, NULL with 0 sets the empty member, NULL with a
 *     non-zero count throws std::logic_error and leaves the value as it was.
 *     Each setter replaces whichever member the value held (handles into a
 *     leaf list or decimal held before are then invalid).
 * @{
 */
/** @file
 * Every member of a gNMI TypedValue read and written: see @ref gnmi_typed_value. */
#ifndef MGMTMSG_GNMI_VALUE_H
#define MGMTMSG_GNMI_VALUE_H

#include <stdint.h>

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** @return the field number of the member the value holds (1 string_val to
 * 13 proto_bytes, as GNMI_TYPEDVALUE_* names them), 0 when it holds none. */
MGMTMSG_API int32_t GNMI_TypedValue_ValueCase(void* value);

/** @return string_val (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadString(void* value, uint32_t* len);
/** @return int_val, 0 when not held. */
MGMTMSG_API int64_t GNMI_TypedValue_ReadInt(void* value);
/** @return uint_val, 0 when not held. */
MGMTMSG_API uint64_t GNMI_TypedValue_ReadUint(void* value);
/** @return bool_val as 0 or 1, 0 when not held. */
MGMTMSG_API int32_t GNMI_TypedValue_ReadBool(void* value);
/** @return bytes_val (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadBytes(void* value, uint32_t* len);
/** @return float_val, 0 when not held. */
MGMTMSG_API float GNMI_TypedValue_ReadFloat(void* value);
/** Reads decimal_val, whose value is digits / 10^precision.
 * @param value the TypedValue.
 * @param precision receives the precision (0 when not held); may be NULL.
 * @return the digits, 0 when not held. */
MGMTMSG_API int64_t GNMI_TypedValue_ReadDecimal(void* value, uint32_t* precision);
/** @return leaflist_val (a ScalarArray), read-only; the ScalarArray default
 * instance, with no element, when not held. */
MGMTMSG_API void* GNMI_TypedValue_ReadLeaflist(void* value);
/** @return the number of elements of a leaf list. */
MGMTMSG_API int32_t GNMI_ScalarArray_ElementCount(void* leaflist);
/** @return element `index` of a leaf list (a TypedValue), read-only, to be
 * read with the readers above; an index outside 0 to ElementCount - 1 is a
 * fatal check ("CHECK failed: ...") and the call does not return. */
MGMTMSG_API void* GNMI_ScalarArray_Element(void* leaflist, int32_t index);
/** @return any_val's type URL (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadAnyTypeUrl(void* value, uint32_t* len);
/** @return any_val's value, the encoded message (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadAnyValue(void* value, uint32_t* len);
/** @return json_val (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadJson(void* value, uint32_t* len);
/** @return json_ietf_val (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadJsonIetf(void* value, uint32_t* len);
/** @return ascii_val (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadAscii(void* value, uint32_t* len);
/** @return proto_bytes (convention 2), "" when not held. */
MGMTMSG_API const char* GNMI_TypedValue_ReadProtoBytes(void* value, uint32_t* len);

/** Sets bytes_val to the `len` bytes at `data` (convention 4). */
MGMTMSG_API void GNMI_TypedValue_SetBytesVal(void* value, const char* data, uint32_t len);
/** Sets ascii_val to the `len` bytes at `data` (conventions 3 and 4). */
MGMTMSG_API void GNMI_TypedValue_SetAsciiVal(void* value, const char* data, uint32_t len);
/** Sets decimal_val to digits / 10^precision (convention 4). */
MGMTMSG_API void GNMI_TypedValue_SetDecimalVal(void* value, int64_t digits, uint32_t precision);
/** Sets any_val to the type URL and the encoded message given (convention 4;
 * either NULL with a non-zero count throws before anything changes). */
MGMTMSG_API void GNMI_TypedValue_SetAnyVal(void* value, const char* typeUrl, uint32_t urlLen,
                                           const char* data, uint32_t len);

#ifdef __cplusplus
}
#endif

/** @} */
#endif
