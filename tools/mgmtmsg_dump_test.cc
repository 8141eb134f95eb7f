// Runs the built mgmtmsg-dump on frames and bare messages made here, and
// checks its exit status and what it prints.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

std::string toolCommand;  // the emulator's words, then the tool, quoted for the shell

// A word for the shell, quoted, then a space.
std::string Quoted(const std::string& word) {
  std::string quoted = "'";
  for (char c : word) {
    quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return quoted + "' ";
}

std::string TempPath(const std::string& name) {
  return testing::TempDir() + "mgmtmsg_dump_" + std::to_string(getpid()) + "_" + name;
}

std::string WriteFile(const std::string& name, const std::string& bytes) {
  std::string path = TempPath(name);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

std::string ReadFile(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

// The length word `n`, most significant byte first or last.
std::string LengthWord(uint32_t n, bool bigEndian) {
  const std::string word = {static_cast<char>(n >> 24), static_cast<char>(n >> 16),
                            static_cast<char>(n >> 8), static_cast<char>(n)};
  return bigEndian ? word : std::string(word.rbegin(), word.rend());
}

std::string HostFrame(const std::string& body) {
  return LengthWord(body.size(), __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) + body;
}

// A frame's message: connect_id 7, req_type REQUEST, result_description
// "état", server_rpc { rpc_parament: 01 00 ff }, as the tool prints it.
const std::string kBody("\x08\x07\x20\x01\x4a\x05\xc3\xa9tat\x62\x05\x42\x03\x01\x00\xff", 18);
const char* kPrinted =
    "connect_id: 7\nreq_type: REQTYPE_REQUEST\nresult_description: \"état\"\n"
    "server_rpc {\n  rpc_parament: \"\\001\\000\\377\"\n}\n";

TEST(MgmtmsgDump, AnswersEachInputWithItsExitStatusAndText) {
  // path { elem { name: "interfaces" } }, then the undeclared field 4
  const std::string get = "\x12\x0e\x1a\x0c\x0a\x0ainterfaces\x20\x09";
  const struct {
    std::vector<std::string> args;
    std::string input;
    int code;
    std::string text;  // on standard output for status 0, else on standard error
  } cases[] = {
      {{}, HostFrame(kBody), 0, "length word 18 "},
      {{}, HostFrame(kBody), 0, kPrinted},
      {{"-"}, HostFrame(kBody), 0, kPrinted},
      {{"--frame", WriteFile("frame", HostFrame(kBody))}, "", 0, kPrinted},
      {{"--big-endian"}, LengthWord(18, true) + kBody, 0, kPrinted},
      {{"--little-endian"}, LengthWord(18, false) + kBody, 0, kPrinted},
      {{"--little-endian"}, LengthWord(18, true) + kBody, 1, "try --big-endian"},
      {{}, std::string(3, '\0'), 1, "too short for its 4-byte length word: 3 byte(s)"},
      {{"--big-endian"}, LengthWord(52428801, true), 1, "52428801 (big-endian) exceeds the limit"},
      {{"--big-endian"}, LengthWord(10, true) + "\x08\x01", 1, "word 10 (big-endian) disagrees"},
      {{"--big-endian"}, LengthWord(1, true) + "\x08\x01", 1, "word 1 (big-endian) disagrees"},
      {{}, HostFrame("\xff\xff\xff"), 1, "not a valid quorix_grpc_ipc.SouthMsg encoding (3 bytes)"},
      {{}, HostFrame("\x4a\x01\xff"), 1, "quorix_grpc_ipc.SouthMsg.result_description"},
      {{"--type", "gnmi.GetRequest"}, get, 0, "# gnmi.GetRequest, 18 bytes\n"},
      {{"--type", "gnmi.GetRequest"}, get, 0, "elem {\n    name: \"interfaces\"\n  }\n}\n4: 9\n"},
      {{"--type=quorix_dialin.SubsArgs", WriteFile("subs", "\x08\x2a")}, "", 0, "request_id: 42\n"},
      {{"--type", "gnmi.GetRequest"}, "\x12\x05", 1, "gnmi.GetRequest encoding"},
      {{"--list-types"}, "", 0, "quorix_dialout.serviceArgs\n"},
      {{"--type", "gnmi.Nope"}, "", 2, "unknown message type 'gnmi.Nope'; the known packages "},
      {{"--type", "gnmi.Nope"}, "", 2, "dialout gnmi gnmi_ext quorix_dialin quorix_dialout quo"},
      {{"--help"}, "", 0, "usage: mgmtmsg-dump"},
      {{"--bogus"}, "", 2, ""},
      {{"--type", "gnmi.GetRequest", "--big-endian"}, "", 2, ""},
      {{TempPath("absent")}, "", 3, "cannot open " + TempPath("absent")},
  };
  for (const auto& c : cases) {
    std::string command = toolCommand;
    for (const std::string& arg : c.args) {
      command += Quoted(arg);
    }
    const std::string out = TempPath("out"), err = TempPath("err");
    command += "<" + Quoted(WriteFile("in", c.input)) + ">" + Quoted(out) + "2>" + Quoted(err);
    const int status = std::system(command.c_str());
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, c.code) << command;
    EXPECT_THAT(ReadFile(c.code == 0 ? out : err), HasSubstr(c.text)) << command;
    EXPECT_THAT(ReadFile(c.code == 0 ? err : out), IsEmpty()) << command;
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s [EMULATOR...] MGMTMSG-DUMP\n", argv[0]);
    return 2;
  }
  for (int i = 1; i < argc; ++i) {
    toolCommand += Quoted(argv[i]);
  }
  return RUN_ALL_TESTS();
}
