// A path's text form (gnmi/gnmi_path.h, conventions 1 to 5): read into a
// path being built aside, and written canonically.
#ifndef MGMTMSG_GNMI_PATH_TEXT_H
#define MGMTMSG_GNMI_PATH_TEXT_H

#include <cstdint>
#include <string_view>

#include "gnmi/gnmi.pb.h"

namespace mgmtmsg {

// Reads `text` into `out`, an empty path: its origin and elements. On bad
// text returns false with `*errorAt` the offset where it went wrong, and
// `out` holding part of the text.
bool ReadPathText(std::string_view text, gnmi::Path* out, uint32_t* errorAt);

// Writes the canonical text of `path` into `buf` as snprintf does (at most
// `cap` bytes, the NUL included) and returns the whole text's length.
uint32_t WritePathText(const gnmi::Path& path, char* buf, uint32_t cap);

}  // namespace mgmtmsg

#endif
