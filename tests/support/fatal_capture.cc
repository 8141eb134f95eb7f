#include "support/fatal_capture.h"

#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>

namespace testsupport {
namespace {

FatalReport* current = nullptr;  // set only while CaptureFatal's handler is installed

void Record(google::protobuf::LogLevel level, const char* file, int line,
            const std::string& message) {
  if (level == google::protobuf::LOGLEVEL_FATAL) {
    std::tie(current->file, current->line, current->message) = std::tie(file, line, message);
  }
}

}  // namespace

FatalReport CaptureFatal(const std::function<void()>& call) {
  FatalReport report;
  current = &report;
  google::protobuf::LogHandler* previous = google::protobuf::SetLogHandler(&Record);
  try {
    call();
  } catch (const google::protobuf::FatalException&) {
    report.raised = true;
  }
  google::protobuf::SetLogHandler(previous);
  return report;
}

}  // namespace testsupport
