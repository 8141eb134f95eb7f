#include "common/fatal_check.h"

#include <google/protobuf/stubs/logging.h>

#include <cstdlib>

namespace mgmtmsg {

void FatalCheckFailed(const char* module, int line, const char* text) {
  google::protobuf::internal::LogFinisher() =
      google::protobuf::internal::LogMessage(google::protobuf::LOGLEVEL_FATAL, module, line)
      << text;
  std::abort();  // the runtime's fatal path has already ended the call
}

}  // namespace mgmtmsg
