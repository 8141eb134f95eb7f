// Set request bytes from outside: parsed and walked through the readers
// (deletes, replaces and updates with their paths and values); the response
// answers each with an update result of the right operation on a copy of its
// path, and its bytes must carry exactly what the readers returned.
#include "fuzz/walk.h"
#include "gnmi/gnmi_ex.h"

using namespace fuzzwalk;

namespace {

// gnmi.UpdateResult.Operation
constexpr int kDelete = 1;
constexpr int kReplace = 2;
constexpr int kUpdate = 3;

struct Result {
  PathView path;
  int op;
};

// The path of each update of a list, after reading its value and duplicates.
void ReadUpdates(void* ctx, int (*count)(void*), void* (*get)(void*, int), int op,
                 std::vector<Result>* results) {
  for (int i = 0; i < count(ctx); ++i) {
    void* update = get(ctx, i);
    Read(GNMI_TypedValue_GetJsonVal(GNMI_Update_GetVal(update)));
    GNMI_Update_GetDuplicates(update);
    void* path = GNMI_Update_GetPath(update);
    Check(GNMI_Path_PathElemSizeof(path) == 0 || GNMI_Update_HasPath(update), "update path");
    results->push_back({ReadPath(path), op});
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto ctx = Parsed<GNMI_Set_Init, GNMI_Set_DeInit>(GNMI_SetRequest_Parse, data, size);
  if (!ctx) return 0;
  const auto prefix = ReadPrefix(ctx.get(), GNMI_SetRequest_HasPrefix, GNMI_SetRequest_GetPrefix);
  std::vector<Result> results;
  results.reserve(static_cast<size_t>(GNMI_SetRequest_DeleteSizeof(ctx.get())));
  for (int i = 0; i < GNMI_SetRequest_DeleteSizeof(ctx.get()); ++i) {
    results.push_back({ReadPath(GNMI_SetRequest_GetDelete(ctx.get(), i)), kDelete});
  }
  ReadUpdates(ctx.get(), GNMI_SetRequest_ReplaceSizeof, GNMI_SetRequest_GetReplace, kReplace,
              &results);
  ReadUpdates(ctx.get(), GNMI_SetRequest_UpdateSizeof, GNMI_SetRequest_GetUpdate, kUpdate,
              &results);
  const Extensions extensions =
      ReadExtensions(ctx.get(), GNMI_SetRequest_ExtensionSizeof, GNMI_SetRequest_GetExtension);

  if (prefix) WritePath(*prefix, GNMI_SetResponse_AddPrefix(ctx.get()));
  GNMI_SetResponse_SetTimestamp(ctx.get(), static_cast<int64_t>(results.size()));
  for (const Result& result : results) {
    void* line = GNMI_SetResponse_AppendUpdateResult(ctx.get());
    WritePath(result.path, GNMI_UpdateResult_AddPath(line));
    GNMI_UpdateResult_SetOp(line, result.op);
  }
  AppendExtensions(extensions, ctx.get(), GNMI_SetResponse_AppendExtension);

  const auto response = Reply<gnmi::SetResponse>(GNMI_SetResponse_Serialize, ctx.get());
  Check(response.has_prefix() == prefix.has_value(), "response prefix");
  if (prefix) CheckEqual(response.prefix(), Expected(*prefix), "prefix");
  Check(response.timestamp() == static_cast<int64_t>(results.size()), "timestamp");
  Check(response.response_size() == static_cast<int>(results.size()), "update result count");
  for (size_t i = 0; i < results.size(); ++i) {
    const gnmi::UpdateResult& line = response.response(static_cast<int>(i));
    CheckEqual(line.path(), Expected(results[i].path), "update result path");
    Check(line.op() == results[i].op, "operation");
  }
  CheckExtensions(response.extension(), extensions);
  return 0;
}
