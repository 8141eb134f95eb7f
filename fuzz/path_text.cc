// Harness path_text: text from outside into GNMI_Path_FromString, refused
// with the path left as it was, or read into a path whose canonical text
// reads back to the same path and writes the same text again. The same bytes
// also make a path of any names (none empty), which must come back from its
// own text.
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/util/message_differencer.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "fuzz/harnesses.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_path.h"

namespace {

using google::protobuf::util::MessageDifferencer;

uint32_t Len(const std::string& text) { return static_cast<uint32_t>(text.size()); }

std::string Text(gnmi::Path* path) {
  std::string text(GNMI_Path_ToString(path, nullptr, 0), '\0');
  GOOGLE_CHECK_EQ(GNMI_Path_ToString(path, text.data(), Len(text) + 1), text.size());
  return text;
}

void CheckReadsBack(gnmi::Path* path) {
  const std::string text = Text(path);
  gnmi::Path back;
  back.set_target(path->target());
  GOOGLE_CHECK_EQ(GNMI_Path_FromString(&back, text.data(), Len(text), nullptr), 1) << text;
  GOOGLE_CHECK(MessageDifferencer::Equals(back, *path)) << text;
  GOOGLE_CHECK_EQ(Text(&back), text);
}

// The input taken from the front as small numbers and short strings.
struct Input {
  const uint8_t* next;
  size_t left;
  int Number(int most) {
    if (left == 0) return 0;
    --left;
    return *next++ % (most + 1);
  }
  std::string String(int most) {
    const size_t n = std::min<size_t>(Number(most), left);
    std::string text(reinterpret_cast<const char*>(next), n);
    next += n;
    left -= n;
    return text;
  }
};

gnmi::Path MadePath(Input* in) {
  gnmi::Path path;
  path.set_origin(in->String(8));
  for (int e = in->Number(6); e > 0; --e) {
    gnmi::PathElem* elem = path.add_elem();
    elem->set_name(in->String(12) + "n");  // names are never empty
    for (int k = in->Number(3); k > 0; --k) {
      (*elem->mutable_key())[in->String(12) + "k"] = in->String(12);
    }
  }
  return path;
}

}  // namespace

namespace harness {

void path_text(const uint8_t* data, size_t size) {
  gnmi::Path path;
  GNMI_Path_FromString(&path, "before:/kept[k=v]", 17, nullptr);
  path.set_target("r1");
  const gnmi::Path before = path;
  uint32_t at = 0;
  const auto* text = reinterpret_cast<const char*>(data);
  if (GNMI_Path_FromString(&path, text, static_cast<uint32_t>(size), &at) == 1) {
    GOOGLE_CHECK_EQ(path.target(), "r1");
    CheckReadsBack(&path);
  } else {
    GOOGLE_CHECK_LE(at, size);
    GOOGLE_CHECK(MessageDifferencer::Equals(path, before)) << path.DebugString();
  }
  Input in{data, size};
  gnmi::Path made = MadePath(&in);
  CheckReadsBack(&made);
}

}  // namespace harness
