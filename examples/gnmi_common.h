/* What the example's gNMI exchanges share: printing paths as /a/b[k=v]/c and
 * enumeration values by name, updates of a path copied from a request, all
 * through the entry points. */
#ifndef MGMTMSG_EXAMPLES_GNMI_COMMON_H
#define MGMTMSG_EXAMPLES_GNMI_COMMON_H

#include <stddef.h>

/* Writes the path's canonical text, /a/b[k=v]/c, into text (cut to size
 * bytes, NUL included) and returns text. */
const char* GnmiPathText(void* path, char* text, size_t size);

/* Appends to a notification an update of path holding an IETF JSON value. */
void GnmiAppendJsonUpdate(void* notification, void* path, const char* json);

/* Serializes a reply with serialize and prints its bytes under label, as
 * they would be handed to the transport. Returns 1 on success, else 0. */
int GnmiSendReply(const char* label, int (*serialize)(void*, void**, int*), void* ctx);

/* The name of an enumeration value: names[value], or "unknown" outside the
 * count names given. */
const char* GnmiEnumName(const char* const* names, int count, int value);

/* Names of the gNMI Encoding values. */
extern const char* const kGnmiEncodings[5];

#endif
