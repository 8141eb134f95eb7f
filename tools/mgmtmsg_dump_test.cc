// Runs the built mgmtmsg-dump on frames and bare messages made here, and
// checks its exit status and what it prints.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <sstream>

#include "gnmi/gnmi.pb.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> toolCommand;  // the emulator's words, then the tool

struct Result {
  int code = -1;
  std::string out;
  std::string err;
};

std::string TempPath(const std::string& name) {
  return testing::TempDir() + "mgmtmsg_dump_" + std::to_string(getpid()) + "_" + name;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::string WriteFile(const std::string& name, const std::string& bytes) {
  std::string path = TempPath(name);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

void Redirect(const std::string& path, int fd, int flags) {
  const int opened = open(path.c_str(), flags, 0600);
  if (opened < 0 || dup2(opened, fd) < 0) {
    _exit(126);
  }
  close(opened);
}

// Runs the tool with `args`, `input` on its standard input.
Result Dump(const std::vector<std::string>& args, const std::string& input = "") {
  const std::string in = WriteFile("in", input);
  const std::string out = TempPath("out");
  const std::string err = TempPath("err");
  std::vector<std::string> words = toolCommand;
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    Redirect(in, 0, O_RDONLY);
    Redirect(out, 1, O_WRONLY | O_CREAT | O_TRUNC);
    Redirect(err, 2, O_WRONLY | O_CREAT | O_TRUNC);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

std::string LengthWord(uint32_t n, bool bigEndian) {
  std::string word;
  for (int shift : {24, 16, 8, 0}) {
    word += static_cast<char>(n >> (bigEndian ? shift : 24 - shift));
  }
  return word;
}

std::string HostFrame(const std::string& body) {
  const uint32_t n = body.size();
  return std::string(reinterpret_cast<const char*>(&n), 4) + body;
}

std::string Envelope() {
  quorix_grpc_ipc::SouthMsg msg;
  msg.set_connect_id(7);
  msg.set_req_type(quorix_grpc_ipc::REQTYPE_REQUEST);
  msg.set_result_description("état");
  msg.mutable_server_rpc()->set_rpc_name("/gnmi.gNMI/Get");
  msg.mutable_server_rpc()->set_rpc_parament(std::string("\x01\x00\xff", 3));
  return msg.SerializeAsString();
}

void ExpectEnvelope(const Result& result) {
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_THAT(result.err, IsEmpty());
  EXPECT_THAT(result.out, HasSubstr("connect_id: 7\n"));
  EXPECT_THAT(result.out, HasSubstr("req_type: REQTYPE_REQUEST\n"));
  EXPECT_THAT(result.out, HasSubstr("result_description: \"état\"\n"));
  EXPECT_THAT(result.out, HasSubstr("rpc_name: \"/gnmi.gNMI/Get\"\n"));
  EXPECT_THAT(result.out, HasSubstr("rpc_parament: \"\\001\\000\\377\"\n"));
}

void ExpectBadBytes(const Result& result, const std::string& reason) {
  EXPECT_EQ(result.code, 1) << result.err;
  EXPECT_THAT(result.out, IsEmpty());
  EXPECT_THAT(result.err, HasSubstr(reason));
}

TEST(MgmtmsgDumpFrame, PrintsTheEnvelopeFromStandardInputOrAFile) {
  const std::string frame = HostFrame(Envelope());
  const Result piped = Dump({}, frame);
  ExpectEnvelope(piped);
  EXPECT_THAT(piped.out, HasSubstr("length word " + std::to_string(Envelope().size())));
  EXPECT_EQ(Dump({"-"}, frame).out, piped.out);
  EXPECT_EQ(Dump({"--frame", WriteFile("frame", frame)}).out, piped.out);
}

TEST(MgmtmsgDumpFrame, ReadsTheLengthWordInTheOrderAsked) {
  const std::string body = Envelope();
  ExpectEnvelope(Dump({"--big-endian"}, LengthWord(body.size(), true) + body));
  ExpectEnvelope(Dump({"--little-endian"}, LengthWord(body.size(), false) + body));
  ExpectBadBytes(Dump({"--little-endian"}, LengthWord(body.size(), true) + body),
                 "try --big-endian");
}

TEST(MgmtmsgDumpFrame, SaysWhatIsWrongWithTheLengthWord) {
  ExpectBadBytes(Dump({}, ""), "too short for its 4-byte length word: 0 byte(s)");
  ExpectBadBytes(Dump({}, std::string(3, '\0')), "too short for its 4-byte length word: 3 byte(s)");
  ExpectBadBytes(Dump({"--big-endian"}, LengthWord(52428801, true)),
                 "length word 52428801 (big-endian) exceeds the limit of 52428800");
  ExpectBadBytes(Dump({"--big-endian"}, LengthWord(10, true) + "\x08\x01"),
                 "length word 10 (big-endian) disagrees with the 2 message byte(s) present");
  ExpectBadBytes(Dump({"--big-endian"}, LengthWord(1, true) + "\x08\x01"),
                 "length word 1 (big-endian) disagrees with the 2 message byte(s) present");
}

TEST(MgmtmsgDumpFrame, RejectsABodyThatIsNoSouthMsg) {
  ExpectBadBytes(Dump({}, HostFrame("\xff\xff\xff")),
                 "not a valid quorix_grpc_ipc.SouthMsg encoding (3 bytes)");
  // result_description (field 9) holding the byte 0xff.
  ExpectBadBytes(Dump({}, HostFrame("\x4a\x01\xff")),
                 "quorix_grpc_ipc.SouthMsg.result_description");
}

TEST(MgmtmsgDumpType, PrintsABareMessageWithItsUnknownFields) {
  gnmi::GetRequest get;
  get.add_path()->add_elem()->set_name("interfaces");
  const Result printed = Dump({"--type", "gnmi.GetRequest"}, get.SerializeAsString() + "\x20\x09");
  EXPECT_EQ(printed.code, 0) << printed.err;
  EXPECT_THAT(printed.out, HasSubstr("# gnmi.GetRequest, 18 bytes\n"));
  EXPECT_THAT(printed.out, HasSubstr("name: \"interfaces\"\n"));
  EXPECT_THAT(printed.out, HasSubstr("\n4: 9\n"));

  quorix_dialin::SubsArgs subs;
  subs.set_request_id(42);
  const std::string path = WriteFile("subs", subs.SerializeAsString());
  EXPECT_THAT(Dump({"--type=quorix_dialin.SubsArgs", path}).out, HasSubstr("request_id: 42\n"));
  ExpectBadBytes(Dump({"--type", "gnmi.GetRequest"}, "\x12\x05"), "gnmi.GetRequest encoding");
}

TEST(MgmtmsgDumpType, KnowsEverySchemaAndListsThemForAnUnknownName) {
  const Result list = Dump({"--list-types"});
  EXPECT_EQ(list.code, 0);
  for (const char* name :
       {"dialout.DialoutArgs\n", "gnmi.GetRequest\n", "gnmi_ext.Extension\n",
        "quorix_dialin.SubsArgs\n", "quorix_dialout.serviceArgs\n", "quorix_grpc_ipc.SouthMsg\n"}) {
    EXPECT_THAT(list.out, HasSubstr(name));
  }
  const Result unknown = Dump({"--type", "gnmi.Nope"}, "");
  EXPECT_EQ(unknown.code, 2);
  EXPECT_THAT(unknown.err, HasSubstr("unknown message type 'gnmi.Nope'; the known packages are "
                                     "dialout gnmi gnmi_ext quorix_dialin quorix_dialout "
                                     "quorix_grpc_ipc"));
}

TEST(MgmtmsgDumpUsage, BadArgumentsAndUnreadableInputHaveTheirOwnStatus) {
  EXPECT_EQ(Dump({"--help"}).code, 0);
  EXPECT_EQ(Dump({"--bogus"}).code, 2);
  EXPECT_EQ(Dump({"--type", "gnmi.GetRequest", "--big-endian"}).code, 2);
  const Result missing = Dump({TempPath("absent")});
  EXPECT_EQ(missing.code, 3);
  EXPECT_THAT(missing.err, HasSubstr("cannot open " + TempPath("absent")));
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  toolCommand.assign(argv + 1, argv + argc);
  if (toolCommand.empty()) {
    std::fprintf(stderr, "usage: %s [EMULATOR...] MGMTMSG-DUMP\n", argv[0]);
    return 2;
  }
  return RUN_ALL_TESTS();
}
