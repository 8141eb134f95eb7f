// Capabilities request bytes from outside: parsed, its extensions read and
// echoed in the response, whose bytes must carry them unchanged.
#include "fuzz/walk.h"
#include "gnmi/gnmi_ex.h"

using namespace fuzzwalk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto ctx = Parsed<GNMI_Capability_Init, GNMI_Capability_DeInit>(GNMI_CapabilityRequest_Parse,
                                                                  data, size);
  if (!ctx) return 0;
  const Extensions extensions = ReadExtensions(ctx.get(), GNMI_CapabilityRequest_ExtensionSizeof,
                                               GNMI_CapabilityRequest_GetExtension);

  static const std::string kVersion = "0.7.0";
  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), kVersion.data(),
                                         static_cast<int>(kVersion.size()));
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), static_cast<int>(extensions.size()));
  AppendExtensions(extensions, ctx.get(), GNMI_CapabilityResponse_AppendExtension);

  const auto response =
      Reply<gnmi::CapabilityResponse>(GNMI_CapabilityResponse_Serialize, ctx.get());
  Check(response.gnmi_version() == kVersion, "gNMI version");
  Check(response.supported_encodings_size() == 1 &&
            response.supported_encodings(0) == static_cast<int>(extensions.size()),
        "supported encodings");
  CheckExtensions(response.extension(), extensions);
  return 0;
}
