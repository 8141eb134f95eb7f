// The driver of program fuzz_<name> in builds without libFuzzer: runs the
// harness once on the content of each file named on the command line; no
// file named, or one that cannot be read, is a failure.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    if (!file.is_open()) {
      std::perror(argv[i]);
      return 1;
    }
    const std::vector<uint8_t> input{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  return argc > 1 ? 0 : 2;
}
