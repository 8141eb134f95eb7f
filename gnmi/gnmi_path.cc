// The entry points of gnmi/gnmi_path.h, each over the text reader and
// writer, the builders of elements aside, and the coverage match.
#include "gnmi/gnmi_path.h"

#include <string>
#include <string_view>

#include "common/handles.h"
#include "gnmi/path_build.h"
#include "gnmi/path_covers.h"
#include "gnmi/path_text.h"

using mgmtmsg::As;

namespace {

gnmi::Path* PathOf(void* handle) { return As<gnmi::Path>(handle); }

std::string_view TextOf(const char* text, uint32_t len) {
  mgmtmsg::RefuseNullBytes(text, len);
  return len == 0 ? std::string_view() : std::string_view(text, len);
}

}  // namespace

int GNMI_Path_FromString(void* path, const char* text, uint32_t len, uint32_t* errorAt) {
  gnmi::Path read;
  uint32_t at = 0;
  if (!mgmtmsg::ReadPathText(TextOf(text, len), &read, &at)) {
    if (errorAt != nullptr) *errorAt = at;
    return 0;
  }
  gnmi::Path* target = PathOf(path);
  if (read.origin().empty()) {
    target->clear_origin();
  } else {
    target->mutable_origin()->swap(*read.mutable_origin());  // allocates before any change
  }
  target->mutable_elem()->Swap(read.mutable_elem());
  return 1;
}

uint32_t GNMI_Path_ToString(void* path, char* buf, uint32_t cap) {
  return mgmtmsg::WritePathText(*PathOf(path), buf, cap);
}

void GNMI_Path_CopyFrom(void* to, void* from) {
  const gnmi::Path& source = *PathOf(from);
  gnmi::Path copy;
  copy.set_origin(source.origin());
  copy.set_target(source.target());
  mgmtmsg::AppendCopies(source.elem(), copy.mutable_elem());
  PathOf(to)->Swap(&copy);
}

void GNMI_Path_AppendElems(void* to, void* from) {
  mgmtmsg::PathElems copies;
  mgmtmsg::AppendCopies(PathOf(from)->elem(), &copies);
  mgmtmsg::PathElems* elems = PathOf(to)->mutable_elem();
  elems->Reserve(elems->size() + copies.size());  // the moves below then allocate nothing
  for (gnmi::PathElem& elem : copies) elems->AddAllocated(&elem);
  copies.UnsafeArenaExtractSubrange(0, copies.size(), nullptr);
}

int GNMI_Path_Covers(void* pattern, void* path) {
  return mgmtmsg::PathCovers(*PathOf(pattern), *PathOf(path)) ? 1 : 0;
}
