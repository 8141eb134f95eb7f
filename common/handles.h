// Conversions between the C interface's plain values and the message
// objects behind them.
#ifndef MGMTMSG_COMMON_HANDLES_H
#define MGMTMSG_COMMON_HANDLES_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "common/fatal_check.h"

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

// Refuses null data with a non-zero length as string construction would, with
// std::logic_error.
inline void RefuseNullBytes(const char* data, size_t len) {
  if (data == nullptr && len != 0) {
    throw std::logic_error("basic_string: construction from null is not valid");
  }
}

// Replaces `field` with exactly `len` bytes at `data`, embedded NULs kept.
inline void AssignBytes(std::string* field, const char* data, size_t len) {
  RefuseNullBytes(data, len);
  field->assign(data, len);
}

// A new string of exactly `len` bytes at `data`, embedded NULs kept.
inline std::string StringOf(const char* data, size_t len) {
  RefuseNullBytes(data, len);
  return std::string(data, len);
}

// A bytes or string field's storage, with its exact byte count stored in
// *len unless `len` is null.
inline const char* BytesRead(const std::string& field, uint32_t* len) {
  if (len != nullptr) {
    *len = static_cast<uint32_t>(field.size());
  }
  return field.c_str();
}

// A handle to element `index` of a repeated message field, index-checked
// (fatal outside the field) and reported from `site`.
template <class RepeatedField>
void* HandleAt(const RepeatedField& field, int index, const IndexCheckSite& site) {
  return Handle(CheckedAt(field, index, site));
}

}  // namespace mgmtmsg

#endif
