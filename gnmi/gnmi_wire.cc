// The notification writer's entry points over the context's WireWriter.
#include "gnmi/gnmi_wire.h"

#include <cstring>
#include <new>

#include "common/handles.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_rpc.h"
#include "gnmi/wire_writer.h"

using mgmtmsg::As;
using mgmtmsg::WirePath;
using mgmtmsg::WireValue;
using mgmtmsg::WireWriter;

namespace {

GnmiRpcBase* Rpc(void* ctx) { return As<GnmiRpcBase>(ctx); }

int AddUpdate(void* ctx, void* path, const WireValue& value) {
  WireWriter* writer = Rpc(ctx)->Writer_();
  return writer != nullptr && writer->AddUpdate(*As<WirePath>(path), value) ? 1 : 0;
}

int AddNumber(void* ctx, void* path, uint32_t field, uint64_t number) {
  return AddUpdate(ctx, path, {field, WireValue::Kind::kVarint, number, nullptr, 0});
}

int AddText(void* ctx, void* path, uint32_t field, const char* data, uint32_t len) {
  if (data == nullptr && len != 0) return 0;
  return AddUpdate(ctx, path, {field, WireValue::Kind::kBytes, 0, data, len});
}

uint32_t FloatBits(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// The TypedValue members the writer offers.
enum ValueField : uint32_t {
  kStringVal = 1,
  kIntVal = 2,
  kUintVal = 3,
  kBoolVal = 4,
  kBytesVal = 5,
  kFloatVal = 6,
  kJsonVal = 10,
  kJsonIetfVal = 11,
  kAsciiVal = 12,
};

}  // namespace

void* GNMI_WirePath_Make(void* path) {
  const gnmi::Path& source = *As<gnmi::Path>(path);
  const size_t size = source.ByteSizeLong();
  if (size > WireWriter::kMaxMessageBytes) return nullptr;
  char* block = new (std::nothrow) char[sizeof(WirePath) + size];
  if (block == nullptr) return nullptr;
  auto* wire = new (block) WirePath{static_cast<uint32_t>(size)};
  source.SerializeWithCachedSizesToArray(reinterpret_cast<uint8_t*>(block + sizeof(WirePath)));
  return wire;
}

void GNMI_WirePath_Free(void* wirePath) { delete[] static_cast<char*>(wirePath); }

int GNMI_Writer_Begin(void* ctx, int64_t timestamp, void* prefix) {
  WireWriter* writer = Rpc(ctx)->MakeWriter_();
  return writer != nullptr && writer->Begin(timestamp, As<WirePath>(prefix)) ? 1 : 0;
}

int GNMI_Writer_AddInt(void* ctx, void* wirePath, int64_t value) {
  return AddNumber(ctx, wirePath, kIntVal, static_cast<uint64_t>(value));
}
int GNMI_Writer_AddUint(void* ctx, void* wirePath, uint64_t value) {
  return AddNumber(ctx, wirePath, kUintVal, value);
}
int GNMI_Writer_AddBool(void* ctx, void* wirePath, int flag) {
  return AddNumber(ctx, wirePath, kBoolVal, mgmtmsg::Flag(flag) ? 1 : 0);
}
int GNMI_Writer_AddFloat(void* ctx, void* wirePath, float value) {
  return AddUpdate(ctx, wirePath,
                   {kFloatVal, WireValue::Kind::kFixed32, FloatBits(value), nullptr, 0});
}
int GNMI_Writer_AddString(void* ctx, void* wirePath, const char* data, uint32_t len) {
  return AddText(ctx, wirePath, kStringVal, data, len);
}
int GNMI_Writer_AddBytes(void* ctx, void* wirePath, const char* data, uint32_t len) {
  return AddText(ctx, wirePath, kBytesVal, data, len);
}
int GNMI_Writer_AddJson(void* ctx, void* wirePath, const char* data, uint32_t len) {
  return AddText(ctx, wirePath, kJsonVal, data, len);
}
int GNMI_Writer_AddJsonIetf(void* ctx, void* wirePath, const char* data, uint32_t len) {
  return AddText(ctx, wirePath, kJsonIetfVal, data, len);
}
int GNMI_Writer_AddAscii(void* ctx, void* wirePath, const char* data, uint32_t len) {
  return AddText(ctx, wirePath, kAsciiVal, data, len);
}

int GNMI_Writer_AddDelete(void* ctx, void* wirePath) {
  WireWriter* writer = Rpc(ctx)->Writer_();
  return writer != nullptr && writer->AddDelete(*As<WirePath>(wirePath)) ? 1 : 0;
}

int GNMI_Writer_Finish(void* ctx, void** out, int* outLen) {
  if (Rpc(ctx)->MakeWriter_() == nullptr) return 0;
  Rpc(ctx)->FinishWriter_(out, outLen);
  return 1;
}
