// Whether a path lies in the subtree that a pattern path names
// (GNMI_Path_Covers).
#ifndef MGMTMSG_GNMI_PATH_COVERS_H
#define MGMTMSG_GNMI_PATH_COVERS_H

#include "gnmi/gnmi.pb.h"

namespace mgmtmsg {

bool PathCovers(const gnmi::Path& pattern, const gnmi::Path& path);

}  // namespace mgmtmsg

#endif
