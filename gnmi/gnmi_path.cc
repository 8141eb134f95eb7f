// The entry points of gnmi/gnmi_path.h, each over the text reader and
// writer, the builders of elements aside, and the coverage match.
#include "gnmi/gnmi_path.h"

#include <cstring>
#include <string>
#include <string_view>

#include "common/handles.h"
#include "gnmi/path_build.h"
#include "gnmi/path_covers.h"
#include "gnmi/path_text.h"

namespace {

using mgmtmsg::PathElems;

// The first word of an object of a class with virtual functions: the address
// of its class's virtual table, read as bytes (whatever the object's class).
const void* VirtualTableOf(const void* object) {
  const void* table = nullptr;
  std::memcpy(&table, object, sizeof table);
  return table;
}

// The path behind a handle; null for a message of another type or a context.
// A Path's class is final: every Path has its class's virtual table.
gnmi::Path* PathOf(void* handle) {
  return VirtualTableOf(handle) == VirtualTableOf(&gnmi::Path::default_instance())
             ? static_cast<gnmi::Path*>(handle)
             : nullptr;
}

std::string_view TextOf(const char* text, uint32_t len) {
  mgmtmsg::RefuseNullBytes(text, len);
  return len == 0 ? std::string_view() : std::string_view(text, len);
}

// A path built aside on the arena of `destination` (where it stays until the
// arena is rewound), or here when it has none: on one arena, a swap only
// exchanges pointers, and moving an element allocates nothing.
class Aside {
 public:
  explicit Aside(const gnmi::Path& destination)
      : path_(destination.GetArena() == nullptr
                  ? &local_
                  : google::protobuf::Arena::CreateMessage<gnmi::Path>(destination.GetArena())) {}
  gnmi::Path* operator->() const { return path_; }
  gnmi::Path* get() const { return path_; }

 private:
  gnmi::Path local_;
  gnmi::Path* path_;
};

// The deprecated string elements, which the text form replaces.
void ClearStringElements(gnmi::Path* path) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  path->clear_element();
#pragma GCC diagnostic pop
}

}  // namespace

int GNMI_Path_FromString(void* path, const char* text, uint32_t len, uint32_t* errorAt) {
  gnmi::Path* target = PathOf(path);
  if (target == nullptr) return 0;
  const Aside read(*target);
  uint32_t at = 0;
  if (!mgmtmsg::ReadPathText(TextOf(text, len), read.get(), &at)) {
    if (errorAt != nullptr) *errorAt = at;
    return 0;
  }
  if (read->origin().empty()) {
    target->clear_origin();
  } else {
    target->mutable_origin()->swap(*read->mutable_origin());  // allocates before any change
  }
  target->mutable_elem()->Swap(read->mutable_elem());
  ClearStringElements(target);
  return 1;
}

uint32_t GNMI_Path_ToString(void* path, char* buf, uint32_t cap) {
  const gnmi::Path* source = PathOf(path);
  return source != nullptr ? mgmtmsg::WritePathText(*source, buf, cap) : 0;
}

int GNMI_Path_CopyFrom(void* to, void* from) {
  gnmi::Path* target = PathOf(to);
  const gnmi::Path* source = PathOf(from);
  if (target == nullptr || source == nullptr) return 0;
  const Aside copy(*target);
  copy->set_origin(source->origin());
  copy->set_target(source->target());
  mgmtmsg::AppendCopies(source->elem(), copy->mutable_elem());
  target->Swap(copy.get());
  return 1;
}

int GNMI_Path_AppendElems(void* to, void* from) {
  gnmi::Path* target = PathOf(to);
  const gnmi::Path* source = PathOf(from);
  if (target == nullptr || source == nullptr) return 0;
  const Aside aside(*target);
  PathElems* copies = aside->mutable_elem();
  mgmtmsg::AppendCopies(source->elem(), copies);
  PathElems* elems = target->mutable_elem();
  elems->Reserve(elems->size() + copies->size());  // the moves below then allocate nothing
  for (gnmi::PathElem& elem : *copies) elems->UnsafeArenaAddAllocated(&elem);
  copies->UnsafeArenaExtractSubrange(0, copies->size(), nullptr);
  return 1;
}

int GNMI_Path_Covers(void* pattern, void* path) {
  const gnmi::Path* wanted = PathOf(pattern);
  const gnmi::Path* candidate = PathOf(path);
  return wanted != nullptr && candidate != nullptr && mgmtmsg::PathCovers(*wanted, *candidate) ? 1
                                                                                               : 0;
}
