// Captures what the message runtime logs during a call, and how the call
// ends: normally or in a fatal check.
#ifndef MGMTMSG_TESTS_SUPPORT_FATAL_CAPTURE_H
#define MGMTMSG_TESTS_SUPPORT_FATAL_CAPTURE_H

#include <functional>
#include <string>
#include <tuple>

namespace testsupport {

struct FatalReport {
  bool raised = false;  // the call ended in the runtime's fatal path
  std::string file;
  int line = 0;
  std::string message;
};

// Runs `call` with the runtime's log captured. `raised` is false when the
// call returned normally.
FatalReport CaptureFatal(const std::function<void()>& call);

inline constexpr const char* kNegativeIndex = "CHECK failed: (index) >= (0): ";
inline constexpr const char* kPastEndIndex = "CHECK failed: (index) < (current_size_): ";

}  // namespace testsupport

// Expects `call` to end in a fatal check logged as `text` from module:line.
#define EXPECT_FATAL_CHECK(call, module, line_no, text)                          \
  do {                                                                           \
    const auto report_ = testsupport::CaptureFatal([&] { (void)(call); });       \
    EXPECT_TRUE(report_.raised) << #call " returned";                            \
    EXPECT_EQ(std::tie(report_.file, report_.line, report_.message),             \
              std::make_tuple(std::string(module), line_no, std::string(text))); \
  } while (0)

#endif
