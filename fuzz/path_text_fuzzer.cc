// Text from outside into GNMI_Path_FromString: refused with the path left as
// it was, or read into a path whose canonical text reads back to the same
// path and writes the same text again. The same bytes also make a path of
// any names (none empty), which must come back from its own text.
#include <fuzzer/FuzzedDataProvider.h>

#include <string>

#include "fuzz/walk.h"
#include "gnmi/gnmi_path.h"

using namespace fuzzwalk;

namespace {

std::string Text(gnmi::Path* path) {
  std::string text(GNMI_Path_ToString(path, nullptr, 0), '\0');
  Check(GNMI_Path_ToString(path, text.data(), Len(text) + 1) == text.size(), "text length");
  return text;
}

void CheckReadsBack(gnmi::Path* path) {
  const std::string text = Text(path);
  gnmi::Path back;
  back.set_target(path->target());
  Check(GNMI_Path_FromString(&back, text.data(), Len(text), nullptr) == 1, "own text refused");
  CheckEqual(back, *path, "path read back from its text");
  Check(Text(&back) == text, "text written again differs");
}

gnmi::Path MadePath(FuzzedDataProvider* in) {
  gnmi::Path path;
  path.set_origin(in->ConsumeRandomLengthString(8));
  for (int e = in->ConsumeIntegralInRange(0, 6); e > 0; --e) {
    gnmi::PathElem* elem = path.add_elem();
    elem->set_name(in->ConsumeRandomLengthString(12) + "n");  // names are never empty
    for (int k = in->ConsumeIntegralInRange(0, 3); k > 0; --k) {
      (*elem->mutable_key())[in->ConsumeRandomLengthString(12) + "k"] =
          in->ConsumeRandomLengthString(12);
    }
  }
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  gnmi::Path path;
  GNMI_Path_FromString(&path, "before:/kept[k=v]", 17, nullptr);
  path.set_target("r1");
  const gnmi::Path before = path;
  uint32_t at = 0;
  const auto* text = reinterpret_cast<const char*>(data);
  if (GNMI_Path_FromString(&path, text, static_cast<uint32_t>(size), &at) == 1) {
    Check(path.target() == "r1", "target not kept");
    CheckReadsBack(&path);
  } else {
    Check(at <= size, "error offset past the text");
    CheckEqual(path, before, "path after refused text");
  }
  FuzzedDataProvider in(data, size);
  gnmi::Path made = MadePath(&in);
  CheckReadsBack(&made);
  return 0;
}
