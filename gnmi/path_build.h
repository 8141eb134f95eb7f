// Building path elements aside, in a path that only becomes the caller's by
// a swap once complete, so that memory exhaustion leaves the caller's path
// as it was.
#ifndef MGMTMSG_GNMI_PATH_BUILD_H
#define MGMTMSG_GNMI_PATH_BUILD_H

#include <google/protobuf/repeated_ptr_field.h>

#include <string>

#include "gnmi/gnmi.pb.h"

namespace mgmtmsg {

using PathElems = google::protobuf::RepeatedPtrField<gnmi::PathElem>;

// Appends a new element named `name` (moved in) to `elems`, a list being
// built aside, and returns it.
gnmi::PathElem* AppendElem(PathElems* elems, std::string&& name);

// Adds key = value (both moved in) to the last element of `elems`, a list
// being built aside; false, with nothing added, when the element has the key
// already. When the element's key table fails to grow, which the message
// runtime cannot undo, the element is taken out of the list and kept for good
// (never used, never freed) before std::bad_alloc goes on.
bool AddKey(PathElems* elems, std::string&& key, std::string&& value);

// Appends copies of the elements of `from`, with their keys, to `to`, a list
// being built aside.
void AppendCopies(const PathElems& from, PathElems* to);

}  // namespace mgmtmsg

#endif
