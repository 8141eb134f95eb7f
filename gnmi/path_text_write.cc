// Writing a path's canonical text: one pass straight into the caller's
// buffer, counting on past its end as snprintf does.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "gnmi/path_text.h"

namespace mgmtmsg {
namespace {

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Bytes escaped in each part of the text.
bool EscapedInName(char c) { return c == '\\' || c == '/' || c == '[' || c == ']' || IsSpace(c); }
bool EscapedInKey(char c) { return c == '\\' || c == '=' || c == '[' || c == ']' || IsSpace(c); }
bool EscapedInValue(char c) { return c == '\\' || c == ']'; }

// The caller's buffer: bytes past its room are counted, not written. With no
// room at all (cap 0), not even the NUL is written.
class TextSink {
 public:
  TextSink(char* buf, uint32_t cap) : buf_(cap > 0 ? buf : nullptr), room_(cap > 0 ? cap - 1 : 0) {}

  void Put(char c) {
    if (len_ < room_) buf_[len_] = c;
    ++len_;
  }

  template <bool (*kEscaped)(char)>
  void PutEscaped(const std::string& text) {
    for (const char c : text) {
      if (kEscaped(c)) Put('\\');
      Put(c);
    }
  }

  // Ends the text with its NUL (when there is room) and returns its length,
  // at most UINT32_MAX.
  uint32_t Finish() {
    if (buf_ != nullptr) buf_[std::min(len_, room_)] = '\0';
    return static_cast<uint32_t>(std::min<size_t>(len_, UINT32_MAX));
  }

 private:
  char* buf_;
  size_t room_;
  size_t len_ = 0;
};

using KeyEntry = google::protobuf::MapPair<std::string, std::string>;

bool ByName(const KeyEntry* a, const KeyEntry* b) { return a->first < b->first; }

void PutKeys(const gnmi::PathElem& elem, TextSink* sink) {
  // Elements rarely have more than a few keys: sorted on the stack.
  constexpr size_t kOnStack = 8;
  std::array<const KeyEntry*, kOnStack> onStack;
  std::vector<const KeyEntry*> onHeap;
  const KeyEntry** sorted = onStack.data();
  if (elem.key_size() > static_cast<int>(kOnStack)) {
    onHeap.resize(elem.key_size());
    sorted = onHeap.data();
  }
  size_t count = 0;
  for (const KeyEntry& entry : elem.key()) sorted[count++] = &entry;
  std::sort(sorted, sorted + count, ByName);
  for (size_t i = 0; i < count; ++i) {
    sink->Put('[');
    sink->PutEscaped<EscapedInKey>(sorted[i]->first);
    sink->Put('=');
    sink->PutEscaped<EscapedInValue>(sorted[i]->second);
    sink->Put(']');
  }
}

}  // namespace

uint32_t WritePathText(const gnmi::Path& path, char* buf, uint32_t cap) {
  TextSink sink(buf, cap);
  if (!path.origin().empty()) {
    sink.PutEscaped<EscapedInName>(path.origin());
    sink.Put(':');
  }
  if (path.elem().empty()) sink.Put('/');
  for (const gnmi::PathElem& elem : path.elem()) {
    sink.Put('/');
    sink.PutEscaped<EscapedInName>(elem.name());
    if (!elem.key().empty()) PutKeys(elem, &sink);
  }
  return sink.Finish();
}

}  // namespace mgmtmsg
