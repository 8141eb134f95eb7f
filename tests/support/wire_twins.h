// The same content twice: written by the notification writer
// (gnmi/gnmi_wire.h), and built with the message entry points and
// serialized. Shared by the writer's tests and its fuzz harness.
#ifndef MGMTMSG_TESTS_SUPPORT_WIRE_TWINS_H
#define MGMTMSG_TESTS_SUPPORT_WIRE_TWINS_H

#include <cstdint>
#include <string>
#include <vector>

namespace testsupport {

// One writer call. `path` indexes the twins' paths (Begin: the prefix, -1
// for none); `number` is the timestamp or the integer value.
struct WireStep {
  enum Kind {
    kBegin,
    kInt,
    kUint,
    kBool,
    kFloat,
    kString,
    kBytes,
    kJson,
    kJsonIetf,
    kAscii,
    kDelete
  };
  Kind kind;
  int path = -1;
  int64_t number = 0;
  float real = 0;
  std::string text;
};

// Paths from their texts, as Path handles and as wire paths, and a context
// of each kind for each side.
class WireTwins {
 public:
  explicit WireTwins(const std::vector<std::string>& pathTexts);
  ~WireTwins();
  WireTwins(const WireTwins&) = delete;
  WireTwins& operator=(const WireTwins&) = delete;

  struct Bytes {
    std::string written;  // by the writer
    std::string built;    // by the message entry points
    bool resultsRight;    // every writer call gave 1, or 0 where its order is refused
  };
  // One message of `steps` on the Subscribe contexts (or the Get contexts).
  Bytes Run(bool subscribe, const std::vector<WireStep>& steps);

  void* WriterContext(bool subscribe) const { return subscribe ? writeSub_ : writeGet_; }
  void* WirePath(int index) const { return wirePaths_.at(index); }

 private:
  void* holder_;
  std::vector<void*> paths_;
  std::vector<void*> wirePaths_;
  void* writeSub_;
  void* writeGet_;
  void* buildSub_;
  void* buildGet_;
};

// Calls the writer entry point of a step's value kind.
int WriteValue(void* ctx, void* wirePath, const WireStep& step);

}  // namespace testsupport

#endif
