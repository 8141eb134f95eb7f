// The libFuzzer entry point of program fuzz_<name>, which runs harness <name>;
// the build names it in MGMTMSG_FUZZ_HARNESS.
#include "fuzz/harnesses.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  harness::MGMTMSG_FUZZ_HARNESS(data, size);
  return 0;
}
