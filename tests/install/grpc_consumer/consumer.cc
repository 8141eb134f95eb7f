// A gNMI server's Get method as a C++ peer writes it with the installed
// schemas: the generated service class, the library's GetRequest class, and
// the request handed to the library's C entry points as bytes.
#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_ex.h>

#include <cstdio>
#include <string>

#include "github.com/openconfig/gnmi/proto/gnmi/gnmi.grpc.pb.h"

namespace {

class Target final : public gnmi::gNMI::Service {
 public:
  grpc::Status Get(grpc::ServerContext*, const gnmi::GetRequest* request,
                   gnmi::GetResponse* response) override {
    const std::string bytes = request->SerializeAsString();
    void* ctx = GNMI_Get_Init();
    const bool ok = GNMI_GetRequest_Parse(ctx, bytes.data(), static_cast<int>(bytes.size())) == 1 &&
                    GNMI_GetRequest_GetType(ctx) == GNMI_DATATYPE_STATE;
    GNMI_Get_DeInit(ctx);
    response->add_notification()->set_timestamp(1);
    return ok ? grpc::Status::OK : grpc::Status(grpc::StatusCode::INTERNAL, "not parsed");
  }
};

}  // namespace

int main() {
  Target target;
  gnmi::GetRequest request;
  request.set_type(gnmi::GetRequest::STATE);
  gnmi::GetResponse response;
  const bool ok =
      target.Get(nullptr, &request, &response).ok() && response.notification_size() == 1;
  std::puts(ok ? "grpc consumer: Get served over the library's classes" : "grpc consumer: failed");
  return ok ? 0 : 1;
}
