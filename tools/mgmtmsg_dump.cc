// mgmtmsg-dump: prints a south IPC frame, or a bare message of any type of
// the library's schemas, in protobuf text format.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "decode.h"
#include "frame.h"

namespace mgmtmsgdump {
namespace {

enum ExitCode { kOk = 0, kBadBytes = 1, kUsage = 2, kInputError = 3 };

constexpr const char* kUsageText =
    R"(usage: mgmtmsg-dump [--frame] [--big-endian | --little-endian] [FILE]
       mgmtmsg-dump --type NAME [FILE]
       mgmtmsg-dump --list-types | --help

Prints the bytes of FILE (standard input when FILE is '-' or absent) in
protobuf text format. Unknown fields are shown; bytes fields are escaped.

  --frame          the input is one south IPC frame (the default): a 4-byte
                   length word N, then N bytes of a quorix_grpc_ipc.SouthMsg,
                   N at most 52428800
  --big-endian     read the length word as big-endian (the device's order)
  --little-endian  read the length word as little-endian
                   (default for both: this host's order)
  --type NAME      the input is a bare message of type NAME, by full name,
                   e.g. gnmi.GetRequest or quorix_dialin.SubsArgs
  --list-types     print the known message types
  --help           print this text

Exit status: 0 printed, 1 bad bytes, 2 usage error, 3 input not readable.
)";

struct Options {
  bool help = false;
  bool listTypes = false;
  std::optional<ByteOrder> order;
  bool frame = false;
  std::optional<std::string> type;
  std::string path = "-";
};

int Fail(int code, const std::string& message) {
  std::fprintf(stderr, "mgmtmsg-dump: %s\n", message.c_str());
  if (code == kUsage) {
    std::fprintf(stderr, "Try 'mgmtmsg-dump --help'.\n");
  }
  return code;
}

std::string CheckCombination(const Options& options) {
  if (options.type && options.type->empty()) {
    return "--type needs a message type name";
  }
  if (options.type && (options.frame || options.order)) {
    return "--type reads a bare message; --frame and the byte order options are for frames";
  }
  return "";
}

// Parses the command line into `options`; returns an error text, empty when
// the command line is valid.
std::string ParseArguments(int argc, char** argv, Options* options) {
  bool havePath = false;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      options->help = true;
    } else if (arg == "--list-types") {
      options->listTypes = true;
    } else if (arg == "--frame") {
      options->frame = true;
    } else if (arg == "--big-endian" || arg == "--little-endian") {
      options->order = arg == "--big-endian" ? ByteOrder::kBig : ByteOrder::kLittle;
    } else if (arg == "--type" && i + 1 < argc) {
      options->type = argv[++i];
    } else if (arg.rfind("--type=", 0) == 0) {
      options->type = arg.substr(7);
    } else if ((arg.size() > 1 && arg[0] == '-') || havePath) {
      return arg == "--type" ? "--type needs a message type name" : "unexpected argument " + arg;
    } else {
      options->path = arg;
      havePath = true;
    }
  }
  return CheckCombination(*options);
}

// Reads the whole of `path` ('-': standard input) into `bytes`; returns an
// error text, empty on success.
std::string ReadInput(const std::string& path, std::string* bytes) {
  const bool isStdin = path == "-";
  const std::string name = isStdin ? "standard input" : path;
  std::FILE* file = isStdin ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    return "cannot open " + name + ": " + std::strerror(errno);
  }
  char chunk[65536];
  size_t count = 0;
  while ((count = std::fread(chunk, 1, sizeof chunk, file)) > 0) {
    bytes->append(chunk, count);
  }
  const bool failed = std::ferror(file) != 0;
  const int readErrno = errno;
  if (!isStdin) {
    std::fclose(file);
  }
  return failed ? "cannot read " + name + ": " + std::strerror(readErrno) : "";
}

int ListTypes() {
  for (const std::string& name : KnownMessageTypes()) {
    std::printf("%s\n", name.c_str());
  }
  return kOk;
}

std::string UnknownTypeText(const std::string& name) {
  std::string text = "unknown message type '" + name + "'; the known packages are";
  for (const std::string& package : KnownPackages()) {
    text += " " + package;
  }
  return text + " (--list-types prints every type)";
}

// Decodes `bytes` as `type` and prints it under a comment line that says what
// was read.
int Print(const google::protobuf::Descriptor& type, std::string_view bytes,
          const std::string& comment) {
  const Decoded decoded = DecodeToText(type, bytes);
  if (!decoded.error.empty()) {
    return Fail(kBadBytes, decoded.error);
  }
  std::printf("# %s\n%s", comment.c_str(), decoded.text.c_str());
  return kOk;
}

int Run(const Options& options) {
  const std::string typeName = options.type.value_or(kFrameMessageType);
  const google::protobuf::Descriptor* type = FindMessageType(typeName);
  if (type == nullptr) {
    return Fail(kUsage, UnknownTypeText(typeName));
  }
  std::string input;
  const std::string readError = ReadInput(options.path, &input);
  if (!readError.empty()) {
    return Fail(kInputError, readError);
  }
  const std::string size = std::to_string(input.size()) + " bytes";
  if (options.type) {
    return Print(*type, input, typeName + ", " + size);
  }
  const ByteOrder order = options.order.value_or(HostOrder());
  const FrameCheck frame = CheckFrame(input, order);
  if (!frame.error.empty()) {
    return Fail(kBadBytes, frame.error);
  }
  return Print(*type, frame.body,
               "south IPC frame, " + size + ": length word " + std::to_string(frame.length) + " (" +
                   OrderName(order) + "), then a " + typeName);
}

}  // namespace
}  // namespace mgmtmsgdump

int main(int argc, char** argv) {
  using namespace mgmtmsgdump;
  Options options;
  const std::string usageError = ParseArguments(argc, argv, &options);
  if (!usageError.empty()) {
    return Fail(kUsage, usageError);
  }
  if (options.help) {
    std::fputs(kUsageText, stdout);
    return kOk;
  }
  return options.listTypes ? ListTypes() : Run(options);
}
