// Sub-messages created for the builder entry points so that an allocation
// failure, which leaves the call as std::bad_alloc, leaves the parent whole:
// the runtime's own accessors change the parent before they allocate.
#ifndef MGMTMSG_COMMON_BUILDERS_H
#define MGMTMSG_COMMON_BUILDERS_H

#include <google/protobuf/arena.h>
#include <google/protobuf/repeated_ptr_field.h>

namespace mgmtmsg {

// Appends a new empty element to `list` (or takes back one left by a clear)
// and returns it. Room in the element array is made first: the runtime's add
// creates the element before it grows the array, and loses the element when
// that growth fails.
template <class Element>
Element* AppendTo(google::protobuf::RepeatedPtrField<Element>* list) {
  list->Reserve(list->size() + 1);
  return list->Add();
}

// Makes a new empty `Member` (on the parent's arena, if any) the member of
// the parent's oneof and returns it; `install` is the parent's
// unsafe_arena_set_allocated_ accessor of that member, which clears the
// oneof and stores the member without allocating. The runtime's mutable
// accessor switches the oneof first and then allocates: a failure there
// leaves the oneof naming a member that does not exist.
template <class Member, class Parent>
Member* SwitchOneofTo(Parent* parent, void (Parent::*install)(Member*)) {
  Member* member = google::protobuf::Arena::CreateMessage<Member>(parent->GetArena());
  (parent->*install)(member);
  return member;
}

// The parent's oneof member `Member`: the one held (through `mutableOf`), or
// a new empty one switched to as by SwitchOneofTo when it holds another or none.
template <class Member, class Parent>
Member* OneofMember(Parent* parent, bool held, Member* (Parent::*mutableOf)(),
                    void (Parent::*install)(Member*)) {
  return held ? (parent->*mutableOf)() : SwitchOneofTo(parent, install);
}

}  // namespace mgmtmsg

#endif
