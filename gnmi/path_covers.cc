#include "gnmi/path_covers.h"

#include <cstddef>
#include <string_view>

namespace mgmtmsg {
namespace {

bool IsEllipsis(const gnmi::PathElem& elem) { return elem.name() == "..."; }

// An empty origin and "openconfig" name the same tree.
std::string_view TreeOf(const gnmi::Path& path) {
  return path.origin() == "openconfig" ? std::string_view() : std::string_view(path.origin());
}

// One pattern element against one path element: the name, unless the
// pattern's is `*`, and the pattern's keys in any case.
bool ElemMatches(const gnmi::PathElem& pattern, const gnmi::PathElem& elem) {
  if (pattern.name() != "*" && pattern.name() != elem.name()) return false;
  for (const auto& [key, value] : pattern.key()) {
    const auto found = elem.key().find(key);
    if (found == elem.key().end() || (value != "*" && value != found->second)) return false;
  }
  return true;
}

}  // namespace

bool PathCovers(const gnmi::Path& pattern, const gnmi::Path& path) {
  if (TreeOf(pattern) != TreeOf(path)) return false;
  const auto& wanted = pattern.elem();
  const auto& elems = path.elem();
  const int patternEnd = wanted.size();
  const int pathEnd = elems.size();
  // As a wildcard match where `...` is the star: on a mismatch, the last
  // `...` seen takes one more element and the match resumes after it.
  int p = 0;
  int q = 0;
  int ellipsis = -1;
  int resumeAt = 0;
  while (p < patternEnd) {
    if (IsEllipsis(wanted[p])) {
      ellipsis = p++;
      resumeAt = q;
    } else if (q < pathEnd && ElemMatches(wanted[p], elems[q])) {
      ++p;
      ++q;
    } else if (ellipsis >= 0 && resumeAt < pathEnd) {
      p = ellipsis + 1;
      q = ++resumeAt;
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace mgmtmsg
