// Conversions between the C interface's plain values and the message
// objects behind them.
#ifndef MGMTMSG_COMMON_HANDLES_H
#define MGMTMSG_COMMON_HANDLES_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace mgmtmsg {

// The object behind a handle.
template <class T>
T* As(void* handle) {
  return static_cast<T*>(handle);
}

// A handle to an object; read-only objects are handed out through the same
// void* as mutable ones, and the C caller must not write through them.
template <class T>
void* Handle(const T& object) {
  return const_cast<T*>(&object);
}

// A handle to the sub-message when it is present, else null.
template <class T>
void* HandleOrNull(bool present, const T& object) {
  return present ? Handle(object) : nullptr;
}

// Flags cross the interface as integers: any non-zero value is true.
inline bool Flag(int32_t value) { return value != 0; }

// Replaces `field` with exactly `len` bytes at `data`, embedded NULs kept.
// Null data with a non-zero length is refused as string construction would.
inline void AssignBytes(std::string* field, const char* data, size_t len) {
  if (data == nullptr && len != 0) {
    throw std::logic_error("basic_string: construction from null is not valid");
  }
  field->assign(data, len);
}

}  // namespace mgmtmsg

#endif
