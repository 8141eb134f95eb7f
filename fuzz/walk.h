// What the fuzz harnesses share: a check that ends the run as a finding,
// paths read through the GNMI_ readers and written back through the setters,
// and the bytes of serialized replies decoded for comparison.
#ifndef MGMTMSG_FUZZ_WALK_H
#define MGMTMSG_FUZZ_WALK_H

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gnmi/gnmi.pb.h"
#include "support/owned.h"

namespace fuzzwalk {

// Reports `what` and aborts, which libFuzzer records as a crash with its input.
[[noreturn]] void Fail(const std::string& what);

inline void Check(bool ok, const char* what) {
  if (!ok) Fail(what);
}

// A new object from kInit with the input parsed into it, or null (the
// object freed) when the input is no valid encoding.
template <auto kInit, auto kDeInit>
testsupport::Owned<kDeInit> Parsed(int (*parse)(void*, const void*, int), const uint8_t* data,
                                   size_t size) {
  auto handle = testsupport::Make<kInit, kDeInit>();
  Check(handle != nullptr, "Init gave NULL");
  if (parse(handle.get(), data, static_cast<int>(size)) == 0) handle.reset();
  return handle;
}

// `actual` equal to `expected` field by field (maps as maps).
void CheckEqual(const google::protobuf::Message& actual, const google::protobuf::Message& expected,
                const char* what);

// A string as the readers return it: up to its first NUL.
std::string Read(const char* text);

// A path as its readers return it. Keys are listed in the readers' order.
struct PathView {
  struct Elem {
    std::string name;
    std::vector<std::pair<std::string, std::string>> keys;
  };
  std::string origin;
  std::string target;
  std::vector<Elem> elems;
};

// Reads every element and key of a Path handle, checking the documented
// answers of the key reader for indices outside the map.
PathView ReadPath(void* path);

// A request's prefix through its readers (Get gives NULL exactly when Has
// gives 0), or none.
std::optional<PathView> ReadPrefix(void* ctx, int (*has)(void*), void* (*get)(void*));

// Fills an empty Path handle through the setters.
void WritePath(const PathView& view, void* path);

// The path the setters must have made from `view`: a key given twice keeps
// the value given last.
gnmi::Path Expected(const PathView& view);

// A gNMI context's response bytes from one of its Serialize entry points.
std::string ReplyBytes(int (*serialize)(void*, void**, int*), void* ctx);

// A GRPCI_ serializer's block: the reported bytes, copied, and the block
// released. A failed serialization is a finding.
std::string ReplyBytes(int32_t (*serialize)(uint32_t, void*, void**, uint32_t*), void* message);

// The bytes of either kind of serializer as the message runtime decodes
// them; a decoding failure is a finding.
template <class Message, class Serializer>
Message Reply(Serializer serialize, void* handle) {
  Message message;
  Check(message.ParseFromString(ReplyBytes(serialize, handle)), "reply bytes do not decode");
  return message;
}

using Extensions = std::vector<const gnmi_ext::Extension*>;

// The extensions of a request through its count and indexed readers.
Extensions ReadExtensions(void* ctx, int (*count)(void*), void* (*get)(void*, int));

// Appends a copy of each extension through an Append builder (extensions
// have no setters: the content is copied whole).
void AppendExtensions(const Extensions& extensions, void* ctx, void* (*append)(void*));

// A decoded reply's extensions equal to `expected`.
void CheckExtensions(const google::protobuf::RepeatedPtrField<gnmi_ext::Extension>& decoded,
                     const Extensions& expected);

// Length of a string as the setters take it.
inline uint32_t Len(const std::string& text) { return static_cast<uint32_t>(text.size()); }

}  // namespace fuzzwalk

#endif
