// The notification writer's harness: the input is a sequence of writer
// calls, run by the writer and, as the truth, built with the message entry
// points and serialized; the bytes must be the same, and each call must give
// 1, or 0 exactly where its order is refused.
#include <google/protobuf/stubs/logging.h>

#include <cstring>
#include <string>
#include <vector>

#include "fuzz/harnesses.h"
#include "support/wire_twins.h"

namespace {

using testsupport::WireStep;

// Paths of every shape the wire form has: none, keys, an origin, a long one.
const std::vector<std::string> kPaths = {"", "/a", "/interfaces/interface[name=eth0]/counters",
                                         "openconfig:/system/state[x=]",
                                         "/" + std::string(200, 'p')};

// Reads the input front to back; past its end every read gives zeros.
class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool More() const { return at_ < size_; }
  uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  uint64_t Number() {
    uint64_t number = 0;
    for (int i = 0; i < 8; ++i) number = number << 8 | Byte();
    return number;
  }
  // A text of up to 255 bytes, stretched by a factor of up to 256 so that
  // lengths pass the varint boundaries.
  std::string Text() {
    const size_t len = Byte();
    const size_t repeat = 1 + Byte() % 4 * 85;
    std::string text;
    for (size_t i = 0; i < len; ++i) text.push_back(static_cast<char>(Byte()));
    std::string stretched;
    for (size_t i = 0; i < repeat; ++i) stretched += text;
    return stretched;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

WireStep NextStep(Reader& in) {
  WireStep step{static_cast<WireStep::Kind>(in.Byte() % (WireStep::kDelete + 1)), 0, 0, 0, ""};
  const int path = in.Byte() % static_cast<int>(kPaths.size() + 1);
  step.path = step.kind == WireStep::kBegin ? path - 1 : path % static_cast<int>(kPaths.size());
  if (step.kind == WireStep::kFloat) {
    const auto bits = static_cast<uint32_t>(in.Number());
    std::memcpy(&step.real, &bits, sizeof bits);
  } else if (step.kind >= WireStep::kString && step.kind <= WireStep::kAscii) {
    step.text = in.Text();
  } else {
    step.number = static_cast<int64_t>(in.Number());
  }
  return step;
}

}  // namespace

namespace harness {

void wire_writer(const uint8_t* data, size_t size) {
  Reader in(data, size);
  testsupport::WireTwins twins(kPaths);
  // Up to three messages on the same contexts, each ended by a zero byte.
  for (int message = 0; message < 3 && in.More(); ++message) {
    const bool subscribe = in.Byte() % 2 == 0;
    std::vector<WireStep> steps;
    while (in.More() && steps.size() < 64) {
      if (in.Byte() == 0) break;
      steps.push_back(NextStep(in));
    }
    const auto bytes = twins.Run(subscribe, steps);
    GOOGLE_CHECK(bytes.resultsRight) << "a writer call gave the wrong result";
    GOOGLE_CHECK(bytes.written == bytes.built) << "the writer's bytes differ";
  }
}

}  // namespace harness
