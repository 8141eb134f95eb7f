// Lifecycle and field helpers shared by the GRPCI_ entry points: messages
// made and freed for C callers, parsed from bare bytes, and bytes fields read
// with their length.
#ifndef MGMTMSG_GRPCI_GRPCI_MESSAGE_H
#define MGMTMSG_GRPCI_GRPCI_MESSAGE_H

#include <cstdint>
#include <new>
#include <string>

#include "common/handles.h"

namespace mgmtmsg {

// A new empty message without an arena, or null when memory runs out.
template <class Message>
void* NewMessage() {
  return new (std::nothrow) Message;
}

// Frees a message made by NewMessage with everything it owns; null is ignored.
template <class Message>
void DeleteMessage(void* handle) {
  delete As<Message>(handle);
}

// Clears the message and decodes exactly `size` bytes into it: 1, or 0 when
// they are no valid encoding.
template <class Message>
int32_t ParseMessage(void* handle, const void* data, int32_t size) {
  return As<Message>(handle)->ParseFromArray(data, size) ? 1 : 0;
}

// A bytes field's storage, with its exact byte count stored in *len.
inline const char* BytesWithLength(const std::string& field, uint32_t* len) {
  *len = static_cast<uint32_t>(field.size());
  return field.c_str();
}

}  // namespace mgmtmsg

#endif
