// The libFuzzer entry point of program fuzz_<name>, which runs harness <name>
// (harnesses.cc); the build names it in MGMTMSG_FUZZ_HARNESS.
#include <cstddef>
#include <cstdint>

namespace harness {
void MGMTMSG_FUZZ_HARNESS(const uint8_t* data, size_t size);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  harness::MGMTMSG_FUZZ_HARNESS(data, size);
  return 0;
}
