#include "gnmi/path_build.h"

#include <atomic>
#include <cstddef>
#include <new>
#include <utility>

#include "common/builders.h"

namespace mgmtmsg {
namespace {

// Whether adding the key that brings a table-built map to `size` entries
// makes the runtime allocate a new table: at the first key, then whenever the
// load reaches 3/4 of the buckets (8 at first, doubling): at 6, 12, 24 ...
bool TableGrowsAt(size_t size) {
  if (size == 1) return true;
  if (size % 6 != 0) return false;
  const size_t ratio = size / 6;
  return (ratio & (ratio - 1)) == 0;
}

// Elements whose key table failed to grow. The runtime's map is then left
// with a bucket count that its table does not have, and destroying it would
// run past the table: such elements stay here, reachable, for good (beyond
// the first 64 they are only left allocated).
constexpr size_t kKeptMax = 64;
std::atomic<gnmi::PathElem*> kept[kKeptMax];
std::atomic<size_t> keptCount{0};

void Keep(gnmi::PathElem* elem) {
  const size_t slot = keptCount.fetch_add(1);
  if (slot < kKeptMax) kept[slot].store(elem);
}

}  // namespace

gnmi::PathElem* AppendElem(PathElems* elems, std::string&& name) {
  gnmi::PathElem* elem = AppendTo(elems);
  elem->mutable_name()->swap(name);
  return elem;
}

bool AddKey(PathElems* elems, std::string&& key, std::string&& value) {
  auto* keys = elems->Mutable(elems->size() - 1)->mutable_key();
  const bool tableGrows = TableGrowsAt(keys->size() + 1);
  try {
    return keys->try_emplace(std::move(key), std::move(value)).second;
  } catch (const std::bad_alloc&) {
    // On an arena nothing destroys the table; taking the element out there
    // would copy it.
    if (tableGrows && elems->GetArena() == nullptr) Keep(elems->ReleaseLast());
    throw;
  }
}

void AppendCopies(const PathElems& from, PathElems* to) {
  to->Reserve(to->size() + from.size());
  for (const gnmi::PathElem& source : from) {
    AppendElem(to, std::string(source.name()));
    for (const auto& [key, value] : source.key()) {
      AddKey(to, std::string(key), std::string(value));
    }
  }
}

}  // namespace mgmtmsg
