// Handles of the C interface held in std::unique_ptr, with the C destroy
// function as deleter.
#ifndef MGMTMSG_TESTS_SUPPORT_OWNED_H
#define MGMTMSG_TESTS_SUPPORT_OWNED_H

#include <memory>
#include <string>
#include <type_traits>

namespace testsupport {

// The constant converts to the function pointer, which the deleter calls.
template <auto Destroy>
using Owned = std::unique_ptr<void, std::integral_constant<decltype(Destroy), Destroy>>;

// Owned handle from an Init entry point, e.g. Make<GNMI_Get_Init, GNMI_Get_DeInit>().
template <auto Init, auto Destroy>
Owned<Destroy> Make() {
  return Owned<Destroy>(Init());
}

// The bytes of a serialized buffer as a string, for comparisons.
inline std::string Bytes(const void* data, size_t len) {
  return len == 0 ? std::string() : std::string(static_cast<const char*>(data), len);
}

}  // namespace testsupport

#endif
