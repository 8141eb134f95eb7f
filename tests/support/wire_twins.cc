#include "support/wire_twins.h"

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "gnmi/gnmi_stream.h"
#include "gnmi/gnmi_wire.h"
#include "support/owned.h"

namespace testsupport {
namespace {

uint32_t Len(const std::string& text) { return static_cast<uint32_t>(text.size()); }

// The step's value set through the entry points (bytes and ASCII, which
// have none, through the generated class).
void SetValue(void* value, const WireStep& step) {
  const char* data = step.text.data();
  switch (step.kind) {
    case WireStep::kInt:
      return GNMI_TypedValue_SetIntVal(value, step.number);
    case WireStep::kUint:
      return GNMI_TypedValue_SetUintVal(value, static_cast<uint64_t>(step.number));
    case WireStep::kBool:
      return GNMI_TypedValue_SetBoolVal(value, static_cast<int>(step.number));
    case WireStep::kFloat:
      return GNMI_TypedValue_SetFloatVal(value, step.real);
    case WireStep::kString:
      return GNMI_TypedValue_SetStringVal(value, data, Len(step.text));
    case WireStep::kBytes:
      return static_cast<gnmi::TypedValue*>(value)->set_bytes_val(step.text);
    case WireStep::kJson:
      return GNMI_TypedValue_SetJsonVal(value, data, Len(step.text));
    case WireStep::kJsonIetf:
      return GNMI_TypedValue_SetJsonIetfVal(value, data, Len(step.text));
    default:
      return static_cast<gnmi::TypedValue*>(value)->set_ascii_val(step.text);
  }
}

std::string Serialized(int (*serialize)(void*, void**, int*), void* ctx) {
  void* out = nullptr;
  int len = 0;
  return serialize(ctx, &out, &len) == 1 ? testsupport::Bytes(out, len) : "serialize failed";
}

}  // namespace

int WriteValue(void* ctx, void* wirePath, const WireStep& step) {
  const char* data = step.text.data();
  const uint32_t len = Len(step.text);
  switch (step.kind) {
    case WireStep::kInt:
      return GNMI_Writer_AddInt(ctx, wirePath, step.number);
    case WireStep::kUint:
      return GNMI_Writer_AddUint(ctx, wirePath, static_cast<uint64_t>(step.number));
    case WireStep::kBool:
      return GNMI_Writer_AddBool(ctx, wirePath, static_cast<int>(step.number));
    case WireStep::kFloat:
      return GNMI_Writer_AddFloat(ctx, wirePath, step.real);
    case WireStep::kString:
      return GNMI_Writer_AddString(ctx, wirePath, data, len);
    case WireStep::kBytes:
      return GNMI_Writer_AddBytes(ctx, wirePath, data, len);
    case WireStep::kJson:
      return GNMI_Writer_AddJson(ctx, wirePath, data, len);
    case WireStep::kJsonIetf:
      return GNMI_Writer_AddJsonIetf(ctx, wirePath, data, len);
    default:
      return GNMI_Writer_AddAscii(ctx, wirePath, data, len);
  }
}

WireTwins::WireTwins(const std::vector<std::string>& pathTexts)
    : holder_(GNMI_Get_Init()),
      writeSub_(GNMI_Subscribe_Init()),
      writeGet_(GNMI_Get_Init()),
      buildSub_(GNMI_Subscribe_Init()),
      buildGet_(GNMI_Get_Init()) {
  void* notification = GNMI_GetResponse_AppendNotification(holder_);
  for (const std::string& text : pathTexts) {
    paths_.push_back(GNMI_Notification_AppendDelete(notification));
    GNMI_Path_FromString(paths_.back(), text.data(), Len(text), nullptr);
    wirePaths_.push_back(GNMI_WirePath_Make(paths_.back()));
  }
}

WireTwins::~WireTwins() {
  for (void* wirePath : wirePaths_) GNMI_WirePath_Free(wirePath);
  GNMI_Get_DeInit(holder_);
  GNMI_Subscribe_DeInit(writeSub_);
  GNMI_Get_DeInit(writeGet_);
  GNMI_Subscribe_DeInit(buildSub_);
  GNMI_Get_DeInit(buildGet_);
}

WireTwins::Bytes WireTwins::Run(bool subscribe, const std::vector<WireStep>& steps) {
  void* writer = WriterContext(subscribe);
  void* ctx = subscribe ? buildSub_ : buildGet_;
  subscribe ? GNMI_SubscribeResponse_Reset(ctx) : GNMI_GetResponse_Reset(ctx);
  void* notification = nullptr;
  bool deleting = false;
  bool right = true;
  for (const WireStep& step : steps) {
    void* path = step.path < 0 ? nullptr : paths_.at(step.path);
    void* wirePath = step.path < 0 ? nullptr : wirePaths_.at(step.path);
    const bool allowed = step.kind == WireStep::kBegin ||
                         (notification != nullptr && (step.kind == WireStep::kDelete || !deleting));
    int result = 0;
    if (step.kind == WireStep::kBegin) {
      result = GNMI_Writer_Begin(writer, step.number, wirePath);
      if (subscribe) GNMI_SubscribeResponse_Reset(ctx);
      notification = subscribe ? GNMI_SubscribeResponse_GetNotification(ctx)
                               : GNMI_GetResponse_AppendNotification(ctx);
      GNMI_Notification_SetTimestamp(notification, step.number);
      if (path != nullptr) GNMI_Path_CopyFrom(GNMI_Notification_AddPrefix(notification), path);
      deleting = false;
    } else if (step.kind == WireStep::kDelete) {
      result = GNMI_Writer_AddDelete(writer, wirePath);
      if (allowed) GNMI_Path_CopyFrom(GNMI_Notification_AppendDelete(notification), path);
      deleting = allowed;
    } else {
      result = WriteValue(writer, wirePath, step);
      if (allowed) {
        void* update = GNMI_Notification_AppendUpdate(notification);
        GNMI_Path_CopyFrom(GNMI_Update_SetPath(update), path);
        SetValue(GNMI_Update_SetVal(update), step);
      }
    }
    right = right && result == (allowed ? 1 : 0);
  }
  void* out = nullptr;
  int len = -1;
  right = right && GNMI_Writer_Finish(writer, &out, &len) == 1;
  return {
      testsupport::Bytes(out, static_cast<size_t>(len)),
      Serialized(subscribe ? GNMI_SubscribeResponse_Serialize : GNMI_GetResponse_Serialize, ctx),
      right};
}

}  // namespace testsupport
