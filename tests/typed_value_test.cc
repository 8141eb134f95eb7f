// Every member of a TypedValue: written by the pure-Python message runtime
// (examples/set_request.py) or by our setters, read back through our readers
// with value and length exact.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <tuple>

#include "common/mgmtmsg_codes.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_value.h"
#include "support/fatal_capture.h"
#include "support/owned.h"

namespace {

using namespace std::string_literals;
using Reader = const char* (*)(void*, uint32_t*);

// The text a reader gives, cut to its length; a NUL must follow it.
std::string Read(Reader read, void* value) {
  uint32_t len = 12345;
  const char* data = read(value, &len);
  EXPECT_EQ(data[len], '\0');
  EXPECT_EQ(read(value, nullptr), data);
  return std::string(data, len);
}

// What every reader of the value gives, in one text; elements of a leaf list
// are read as values of their own.
std::string ReadAll(void* value) {
  uint32_t precision = 7;
  const int64_t digits = GNMI_TypedValue_ReadDecimal(value, &precision);
  std::string all = Read(GNMI_TypedValue_ReadString, value) + "|" +
                    std::to_string(GNMI_TypedValue_ReadInt(value)) + "|" +
                    std::to_string(GNMI_TypedValue_ReadUint(value)) + "|" +
                    std::to_string(GNMI_TypedValue_ReadBool(value)) + "|" +
                    Read(GNMI_TypedValue_ReadBytes, value) + "|" +
                    std::to_string(GNMI_TypedValue_ReadFloat(value)) + "|" +
                    std::to_string(digits) + "e-" + std::to_string(precision) + "|[";
  void* list = GNMI_TypedValue_ReadLeaflist(value);
  for (int32_t i = 0; i < GNMI_ScalarArray_ElementCount(list); ++i) {
    void* element = GNMI_ScalarArray_Element(list, i);
    all += std::to_string(GNMI_TypedValue_ValueCase(element)) + ":" + ReadAll(element) + ";";
  }
  return all + "]|" + Read(GNMI_TypedValue_ReadAnyTypeUrl, value) + "|" +
         Read(GNMI_TypedValue_ReadAnyValue, value) + "|" + Read(GNMI_TypedValue_ReadJson, value) +
         "|" + Read(GNMI_TypedValue_ReadJsonIetf, value) + "|" +
         Read(GNMI_TypedValue_ReadAscii, value) + "|" + Read(GNMI_TypedValue_ReadProtoBytes, value);
}

// ReadAll of a value holding nothing, with `field` (0 to 13, the fields of
// ReadAll's text in order) replaced by `text`, and so `field2` if given.
std::string Defaults(int field, const std::string& text, int field2 = 0,
                     const std::string& text2 = "") {
  std::string fields[] = {"", "0", "0", "0", "", "0.000000", "0e-0", "[]", "", "", "", "", "", ""};
  fields[field2] = field2 != 0 ? text2 : fields[field2];
  fields[field] = text;
  std::string all = fields[0];
  for (int i = 1; i < 14; ++i) {
    all += "|" + fields[i];
  }
  return all;
}

// What a leaf list of the int 7 and the string "x\0y" reads as.
const std::string kLeafList = "[2:" + Defaults(1, "7") + ";1:" + Defaults(0, "x\0y"s) + ";]";

// One row per update of examples/set_request.py's request, in its order:
// the member held, our setter of the same value, and ReadAll's text.
const struct Row {
  int32_t member;
  void (*set)(void*);
  std::string read;
} kRows[] = {
    {GNMI_TYPEDVALUE_STRING_VAL,
     [](void* v) {
       GNMI_TypedValue_SetStringVal(v,
                                    "eth\0"
                                    "0",
                                    5);
     },
     Defaults(0,
              "eth\0"
              "0"s)},
    {GNMI_TYPEDVALUE_INT_VAL, [](void* v) { GNMI_TypedValue_SetIntVal(v, -9000000000); },
     Defaults(1, "-9000000000")},
    {GNMI_TYPEDVALUE_UINT_VAL, [](void* v) { GNMI_TypedValue_SetUintVal(v, UINT64_MAX); },
     Defaults(2, "18446744073709551615")},
    {GNMI_TYPEDVALUE_BOOL_VAL, [](void* v) { GNMI_TypedValue_SetBoolVal(v, 9); }, Defaults(3, "1")},
    {GNMI_TYPEDVALUE_BYTES_VAL, [](void* v) { GNMI_TypedValue_SetBytesVal(v, "\0\xff\0", 3); },
     Defaults(4, "\0\xff\0"s)},
    {GNMI_TYPEDVALUE_FLOAT_VAL, [](void* v) { GNMI_TypedValue_SetFloatVal(v, -2.5F); },
     Defaults(5, "-2.500000")},
    {GNMI_TYPEDVALUE_DECIMAL_VAL, [](void* v) { GNMI_TypedValue_SetDecimalVal(v, -12345, 3); },
     Defaults(6, "-12345e-3")},
    {GNMI_TYPEDVALUE_LEAFLIST_VAL,
     [](void* v) {
       GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(GNMI_TypedValue_LeaflistVal(v)), 7);
       GNMI_TypedValue_SetStringVal(GNMI_TypedValue_AddElement(GNMI_TypedValue_LeaflistVal(v)),
                                    "x\0y", 3);
     },
     Defaults(7, kLeafList)},
    {GNMI_TYPEDVALUE_ANY_VAL,
     [](void* v) {
       GNMI_TypedValue_SetAnyVal(v, "type.googleapis.com/gnmi.Path", 29, "\x12\0", 2);
     },
     Defaults(8, "type.googleapis.com/gnmi.Path", 9, "\x12\0"s)},
    {GNMI_TYPEDVALUE_JSON_VAL, [](void* v) { GNMI_TypedValue_SetJsonVal(v, "{\"mtu\":1500}", 12); },
     Defaults(10, "{\"mtu\":1500}")},
    {GNMI_TYPEDVALUE_JSON_IETF_VAL,
     [](void* v) { GNMI_TypedValue_SetJsonIetfVal(v, "{\"a:b\":\"c\0d\"}", 13); },
     Defaults(11, "{\"a:b\":\"c\0d\"}"s)},
    {GNMI_TYPEDVALUE_ASCII_VAL, [](void* v) { GNMI_TypedValue_SetAsciiVal(v, "up\0down", 7); },
     Defaults(12, "up\0down"s)},
    {GNMI_TYPEDVALUE_PROTO_BYTES, [](void* v) { GNMI_TypedValue_SetProtoBytes(v, "\x08\0", 2); },
     Defaults(13, "\x08\0"s)},
    {GNMI_TYPEDVALUE_STRING_VAL, [](void* v) { GNMI_TypedValue_SetStringVal(v, nullptr, 0); },
     Defaults(0, "")},
    {GNMI_TYPEDVALUE_NONE, [](void*) {}, Defaults(0, "")},
};

TEST(TypedValues, EveryMemberReadsBackExactAndOurSettersWriteWhatThePeerWrote) {
  std::ifstream file(MGMTMSG_SET_REQUEST, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  auto ctx = testsupport::Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  ASSERT_EQ(GNMI_SetRequest_Parse(ctx.get(), bytes.data(), static_cast<int>(bytes.size())), 1);
  ASSERT_EQ(GNMI_SetRequest_UpdateSizeof(ctx.get()), static_cast<int>(std::size(kRows)));
  gnmi::TypedValue ours;  // each setter replaces the member set before
  for (int i = 0; i < GNMI_SetRequest_UpdateSizeof(ctx.get()); ++i) {
    void* value = GNMI_Update_GetVal(GNMI_SetRequest_GetUpdate(ctx.get(), i));
    const std::string peers = static_cast<gnmi::TypedValue*>(value)->SerializeAsString();
    EXPECT_EQ(GNMI_TypedValue_ValueCase(value), kRows[i].member) << "update " << i;
    EXPECT_EQ(ReadAll(value), kRows[i].read) << "update " << i;
    EXPECT_EQ(static_cast<gnmi::TypedValue*>(value)->SerializeAsString(), peers);
    if (kRows[i].member != GNMI_TYPEDVALUE_NONE) {
      kRows[i].set(&ours);
      EXPECT_EQ(ours.SerializeAsString(), peers) << "update " << i;
    }
  }
  GNMI_TypedValue_SetDecimalVal(&ours, 5, 1);
  GNMI_TypedValue_SetDecimalVal(&ours, 6, 2);
  EXPECT_EQ(ours.SerializeAsString(), "\x3a\x04\x08\x06\x10\x02"s);
  EXPECT_THROW(GNMI_TypedValue_SetBytesVal(&ours, nullptr, 1), std::logic_error);
  EXPECT_THROW(GNMI_TypedValue_SetAsciiVal(&ours, nullptr, 1), std::logic_error);
  EXPECT_THROW(GNMI_TypedValue_SetAnyVal(&ours, "t", 1, nullptr, 1), std::logic_error);
  EXPECT_THROW(GNMI_TypedValue_SetAnyVal(&ours, nullptr, 1, "v", 1), std::logic_error);
  EXPECT_EQ(ours.SerializeAsString(), "\x3a\x04\x08\x06\x10\x02"s);  // unchanged
}

TEST(TypedValues, LeafListElementIsFatalJustOutsideTheList) {
  gnmi::TypedValue value;
  kRows[GNMI_TYPEDVALUE_LEAFLIST_VAL - 1].set(&value);
  void* list = GNMI_TypedValue_ReadLeaflist(&value);
  for (int32_t index : {-1, 2}) {
    const auto report = testsupport::CaptureFatal([&] { GNMI_ScalarArray_Element(list, index); });
    EXPECT_EQ(std::tie(report.raised, report.file, report.message),
              std::make_tuple(true, "gnmi_value"s,
                              std::string(index < 0 ? testsupport::kNegativeIndex
                                                    : testsupport::kPastEndIndex)));
  }
}

}  // namespace
