// Replaces the global allocation functions of the test program (and so of
// every library it loads) to count live allocations and make a chosen one
// fail: the throwing forms then throw std::bad_alloc, the nothrow forms
// return null. Link support/alloc_fault.cc into one test program only.
#ifndef MGMTMSG_TESTS_SUPPORT_ALLOC_FAULT_H
#define MGMTMSG_TESTS_SUPPORT_ALLOC_FAULT_H

#include <cstdint>

namespace allocfault {

// Makes the allocation `n` calls from now fail (0: the next one).
void FailAfter(int64_t n);
// Disarms a pending failure.
void Disarm();
// True once the armed failure has happened.
bool Fired();
// Allocations not yet freed.
int64_t Live();

}  // namespace allocfault

#endif
