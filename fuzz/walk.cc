#include "fuzz/walk.h"

#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/util/message_differencer.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include "gnmi/gnmi_ex.h"
#include "oxa_mem.h"

namespace fuzzwalk {

void Fail(const std::string& what) {
  std::fprintf(stderr, "fuzz check failed: %s\n", what.c_str());
  std::abort();
}

void CheckEqual(const google::protobuf::Message& actual, const google::protobuf::Message& expected,
                const char* what) {
  google::protobuf::util::MessageDifferencer differencer;
  std::string differences;
  differencer.ReportDifferencesToString(&differences);
  if (!differencer.Compare(actual, expected)) Fail(std::string(what) + ":\n" + differences);
}

std::string Read(const char* text) {
  Check(text != nullptr, "a string reader returned null");
  return text;
}

namespace {

std::vector<std::pair<std::string, std::string>> ReadKeys(void* elem) {
  const int count = GNMI_PathElem_KeySizeof(elem);
  Check(count >= 0, "negative key count");
  std::vector<std::pair<std::string, std::string>> keys;
  std::set<const char*> seen;  // each entry once: the key strings are the map's own
  for (int i = 0; i < count; ++i) {
    const char* key = nullptr;
    const char* value = nullptr;
    GNMI_PathElem_GetKey(elem, i, &key, &value);
    Check(seen.insert(key).second, "a key entry listed twice");
    keys.emplace_back(Read(key), Read(value));
  }
  const char* key = nullptr;
  const char* value = nullptr;
  GNMI_PathElem_GetKey(elem, count, &key, &value);
  Check(Read(key).empty() && Read(value).empty(), "a key past the end is not empty");
  GNMI_PathElem_GetKey(elem, -1, &key, &value);
  const bool firstEntry =
      count == 0 || (Read(key) == keys[0].first && Read(value) == keys[0].second);
  Check(firstEntry, "a negative key index is not the first entry");
  return keys;
}

}  // namespace

PathView ReadPath(void* path) {
  PathView view;
  view.origin = Read(GNMI_Path_GetOrigin(path));
  view.target = Read(GNMI_Path_GetTarget(path));
  const int count = GNMI_Path_PathElemSizeof(path);
  for (int i = 0; i < count; ++i) {
    void* elem = GNMI_Path_GetPathElem(path, i);
    view.elems.push_back({Read(GNMI_PathElem_GetName(elem)), ReadKeys(elem)});
  }
  return view;
}

std::optional<PathView> ReadPrefix(void* ctx, int (*has)(void*), void* (*get)(void*)) {
  void* prefix = get(ctx);
  Check((prefix != nullptr) == (has(ctx) == 1), "prefix presence");
  return prefix != nullptr ? std::optional<PathView>(ReadPath(prefix)) : std::nullopt;
}

void WritePath(const PathView& view, void* path) {
  GNMI_Path_SetOrigin(path, view.origin.data(), Len(view.origin));
  GNMI_Path_SetTarget(path, view.target.data(), Len(view.target));
  for (const PathView::Elem& from : view.elems) {
    void* elem = GNMI_Path_AppendPathElem(path);
    GNMI_PathElem_SetName(elem, from.name.data(), Len(from.name));
    for (const auto& [key, value] : from.keys) {
      GNMI_PathElem_AppendKey(elem, key.data(), Len(key), value.data(), Len(value));
    }
  }
}

gnmi::Path Expected(const PathView& view) {
  gnmi::Path path;
  path.set_origin(view.origin);
  path.set_target(view.target);
  for (const PathView::Elem& from : view.elems) {
    gnmi::PathElem* elem = path.add_elem();
    elem->set_name(from.name);
    for (const auto& [key, value] : from.keys) (*elem->mutable_key())[key] = value;
  }
  return path;
}

std::string ReplyBytes(int (*serialize)(void*, void**, int*), void* ctx) {
  void* out = nullptr;
  int outLen = -1;
  Check(serialize(ctx, &out, &outLen) == 1, "a gNMI response does not serialize");
  Check(outLen >= 0 && (outLen == 0 || out != nullptr), "a gNMI response buffer is inconsistent");
  return outLen == 0 ? std::string() : std::string(static_cast<const char*>(out), outLen);
}

std::string ReplyBytes(int32_t (*serialize)(uint32_t, void*, void**, uint32_t*), void* message) {
  void* out = nullptr;
  uint32_t outLen = 0;
  Check(serialize(1, message, &out, &outLen) == 1 && out != nullptr, "a reply does not serialize");
  std::string bytes(static_cast<const char*>(out), outLen);
  OXA_Free_F(out, "fuzz", 0);
  return bytes;
}

Extensions ReadExtensions(void* ctx, int (*count)(void*), void* (*get)(void*, int)) {
  Extensions extensions;
  for (int i = 0; i < count(ctx); ++i) {
    extensions.push_back(static_cast<const gnmi_ext::Extension*>(get(ctx, i)));
  }
  return extensions;
}

void AppendExtensions(const Extensions& extensions, void* ctx, void* (*append)(void*)) {
  for (const gnmi_ext::Extension* extension : extensions) {
    static_cast<gnmi_ext::Extension*>(append(ctx))->CopyFrom(*extension);
  }
}

void CheckExtensions(const google::protobuf::RepeatedPtrField<gnmi_ext::Extension>& decoded,
                     const Extensions& expected) {
  Check(decoded.size() == static_cast<int>(expected.size()), "extension count differs");
  for (int i = 0; i < decoded.size(); ++i) CheckEqual(decoded.Get(i), *expected[i], "extension");
}

namespace {

// The runtime reports every rejected UTF-8 string of a parse; under fuzzing
// only its fatal reports are worth printing.
void FatalOnly(google::protobuf::LogLevel level, const char* file, int line,
               const std::string& message) {
  if (level == google::protobuf::LOGLEVEL_FATAL) {
    std::fprintf(stderr, "[FATAL %s:%d] %s\n", file, line, message.c_str());
  }
}

}  // namespace

}  // namespace fuzzwalk

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  google::protobuf::SetLogHandler(&fuzzwalk::FatalOnly);
  return 0;
}
