/* A gNMI Set handler as a device's service module writes it: the
 * SetRequest's bytes in (from a file here, from the transport on the device),
 * every update read whatever member its value holds, one UPDATE result per
 * update in the SetResponse, the reply's bytes out. */
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "common/mgmtmsg_codes.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "gnmi/gnmi_value.h"
#include "gnmi_common.h"

/* The largest request this handler takes. */
#define MAX_REQUEST 65536

/* Prints len bytes as C text: printable ASCII as it is, others escaped. */
static void PrintText(const char* data, uint32_t len) {
  uint32_t i;
  putchar('"');
  for (i = 0; i < len; i++) {
    unsigned char byte = (unsigned char)data[i];
    if (byte >= 0x20 && byte < 0x7f && byte != '"' && byte != '\\') {
      putchar(byte);
    } else {
      printf("\\x%02x", byte);
    }
  }
  printf("\" (%" PRIu32 " bytes)", len);
}

/* Prints a text or bytes member read with its length. */
static void PrintRead(const char* kind, const char* (*read)(void*, uint32_t*), void* value) {
  uint32_t len = 0;
  const char* data = read(value, &len);
  printf("%s ", kind);
  PrintText(data, len);
}

/* Prints the value as "kind value", whichever member it holds. */
static void PrintValue(void* value) {
  uint32_t precision = 0;
  int64_t digits;
  int32_t i;
  switch (GNMI_TypedValue_ValueCase(value)) {
    case GNMI_TYPEDVALUE_STRING_VAL:
      PrintRead("string", GNMI_TypedValue_ReadString, value);
      break;
    case GNMI_TYPEDVALUE_INT_VAL:
      printf("int %" PRId64, GNMI_TypedValue_ReadInt(value));
      break;
    case GNMI_TYPEDVALUE_UINT_VAL:
      printf("uint %" PRIu64, GNMI_TypedValue_ReadUint(value));
      break;
    case GNMI_TYPEDVALUE_BOOL_VAL:
      printf("bool %s", GNMI_TypedValue_ReadBool(value) ? "true" : "false");
      break;
    case GNMI_TYPEDVALUE_BYTES_VAL:
      PrintRead("bytes", GNMI_TypedValue_ReadBytes, value);
      break;
    case GNMI_TYPEDVALUE_FLOAT_VAL:
      printf("float %g", (double)GNMI_TypedValue_ReadFloat(value));
      break;
    case GNMI_TYPEDVALUE_DECIMAL_VAL:
      digits = GNMI_TypedValue_ReadDecimal(value, &precision);
      printf("decimal %" PRId64 "e-%" PRIu32, digits, precision);
      break;
    case GNMI_TYPEDVALUE_LEAFLIST_VAL:
      value = GNMI_TypedValue_ReadLeaflist(value);
      printf("leaflist [");
      for (i = 0; i < GNMI_ScalarArray_ElementCount(value); i++) {
        printf(i == 0 ? "" : ", ");
        PrintValue(GNMI_ScalarArray_Element(value, i));
      }
      printf("]");
      break;
    case GNMI_TYPEDVALUE_ANY_VAL:
      PrintRead("any", GNMI_TypedValue_ReadAnyTypeUrl, value);
      PrintRead(",", GNMI_TypedValue_ReadAnyValue, value);
      break;
    case GNMI_TYPEDVALUE_JSON_VAL:
      PrintRead("json", GNMI_TypedValue_ReadJson, value);
      break;
    case GNMI_TYPEDVALUE_JSON_IETF_VAL:
      PrintRead("json_ietf", GNMI_TypedValue_ReadJsonIetf, value);
      break;
    case GNMI_TYPEDVALUE_ASCII_VAL:
      PrintRead("ascii", GNMI_TypedValue_ReadAscii, value);
      break;
    case GNMI_TYPEDVALUE_PROTO_BYTES:
      PrintRead("proto_bytes", GNMI_TypedValue_ReadProtoBytes, value);
      break;
    default:
      printf("none");
  }
}

/* Reads the request's updates and answers each with an UPDATE result. */
static void HandleUpdates(void* ctx) {
  char text[256];
  int i;
  for (i = 0; i < GNMI_SetRequest_UpdateSizeof(ctx); i++) {
    void* update = GNMI_SetRequest_GetUpdate(ctx, i);
    void* result = GNMI_SetResponse_AppendUpdateResult(ctx);
    printf("update %s = ", GnmiPathText(GNMI_Update_GetPath(update), text, sizeof text));
    PrintValue(GNMI_Update_GetVal(update));
    printf("\n");
    GNMI_Path_CopyFrom(GNMI_UpdateResult_AddPath(result), GNMI_Update_GetPath(update));
    GNMI_UpdateResult_SetOp(result, GNMI_UPDATERESULT_UPDATE);
  }
}

/* Reads the file's bytes into request; returns their count, or -1. */
static long ReadFile(const char* name, char* request) {
  FILE* file = fopen(name, "rb");
  size_t len;
  if (file == NULL) {
    perror(name);
    return -1;
  }
  len = fread(request, 1, MAX_REQUEST, file);
  fclose(file);
  return (long)len;
}

int main(int argc, char** argv) {
  static char request[MAX_REQUEST];
  void* ctx;
  long len;
  void* out = NULL;
  int outLen = 0;
  int ok;
  if (argc != 2 || strcmp(argv[1], "--help") == 0) {
    printf("usage: %s SETREQUEST_FILE\nAnswers the encoded gNMI SetRequest in the file.\n",
           argv[0]);
    return argc == 2 ? 0 : 2;
  }
  len = ReadFile(argv[1], request);
  ctx = len < 0 ? NULL : GNMI_Set_Init();
  if (ctx == NULL || !GNMI_SetRequest_Parse(ctx, request, (int)len)) {
    fprintf(stderr, "%s: no SetRequest\n", argv[1]);
    GNMI_Set_DeInit(ctx);
    return 1;
  }
  HandleUpdates(ctx);
  GNMI_SetResponse_SetTimestamp(ctx, INT64_C(1700000000000000000));
  ok = GNMI_SetResponse_Serialize(ctx, &out, &outLen);
  if (ok) {
    printf("answered %d updates: SetResponse of %d bytes\n", GNMI_SetRequest_UpdateSizeof(ctx),
           outLen);
  }
  GNMI_Set_DeInit(ctx);
  return ok ? 0 : 1;
}
