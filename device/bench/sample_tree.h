// The service module's sample data tree, built with protobuf C++: the leaves
// the direct server answers from.
#ifndef DEVICE_BENCH_SAMPLE_TREE_H
#define DEVICE_BENCH_SAMPLE_TREE_H

#include <github.com/openconfig/gnmi/proto/gnmi/gnmi.pb.h>

#include <vector>

namespace bench {

struct Leaf {
  gnmi::Path path;
  gnmi::TypedValue value;  // PROTO encoding
};

std::vector<Leaf> SampleTree(int interfaces);

// Whether `path` lies at or under `pattern` (names and keys equal).
bool Covers(const gnmi::Path& pattern, const gnmi::Path& path);

// Path from text of the form /a/b[k=v]/c (no escapes).
gnmi::Path ParsePath(const std::string& text);

}  // namespace bench

#endif
