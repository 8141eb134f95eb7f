// mgmtmsg-frontend: the gRPC side of the reference device. See --help.
#include <grpcpp/grpcpp.h>
#include <signal.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "dial_out.h"
#include "options.h"
#include "relay.h"

namespace {

class RelayService : public grpc::CallbackGenericService {
 public:
  explicit RelayService(frontend::CallTable* table) : table_(table) {}
  grpc::ServerGenericBidiReactor* CreateReactor(grpc::GenericCallbackServerContext* ctx) override {
    return table_->Create(ctx);
  }

 private:
  frontend::CallTable* table_;
};

std::string ReadFile(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::shared_ptr<grpc::ServerCredentials> Credentials(const frontend::Options& options) {
  if (options.tls_cert.empty()) {
    return grpc::InsecureServerCredentials();
  }
  grpc::SslServerCredentialsOptions tls;
  tls.pem_key_cert_pairs.push_back({ReadFile(options.tls_key), ReadFile(options.tls_cert)});
  return grpc::SslServerCredentials(tls);
}

}  // namespace

int main(int argc, char** argv) {
  frontend::Options options;
  int status = frontend::ParseOptions(argc, argv, &options);
  if (status >= 0) {
    return status;
  }
  // The signals are taken by sigwait below, in no other thread.
  sigset_t signals;
  sigemptyset(&signals);
  for (int sig : {SIGINT, SIGTERM, SIGUSR1}) {
    sigaddset(&signals, sig);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  frontend::CallTable table({options.host, options.port, options.max_queued});
  frontend::DialOutSettings dial_out_settings;
  if (!options.dial_out_ca.empty()) {
    dial_out_settings.ca_pem = ReadFile(options.dial_out_ca);
  }
  frontend::DialOut dial_out(dial_out_settings);
  frontend::SouthChannel south(
      options.south,
      [&table, &dial_out](const frontend::SouthEvent& event) {
        if (frontend::ForClientCall(event)) {
          dial_out.OnEvent(event);
        } else {
          table.OnEvent(event);
        }
      },
      [&table, &dial_out] {
        table.EndAll(grpc::Status(grpc::StatusCode::UNAVAILABLE, "service module gone"));
        dial_out.EndAll();
      });
  table.Attach(&south);
  dial_out.Attach(&south);
  std::string error;
  if (!south.Start(&error)) {
    std::fprintf(stderr, "mgmtmsg-frontend: south channel: %s\n", error.c_str());
    return 1;
  }

  RelayService service(&table);
  grpc::ServerBuilder builder;
  const std::string address = options.host + ":" + std::to_string(options.port);
  builder.AddListeningPort(address, Credentials(options));
  builder.RegisterCallbackGenericService(&service);
  builder.SetMaxReceiveMessageSize(static_cast<int>(frontend::kMaxSouthMessage / 2));
  builder.SetMaxSendMessageSize(static_cast<int>(frontend::kMaxSouthMessage));
  std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  if (!server) {
    std::fprintf(stderr, "mgmtmsg-frontend: cannot listen on %s\n", address.c_str());
    return 1;
  }
  std::printf("listening on %s\n", address.c_str());
  std::fflush(stdout);

  int sig = 0;
  while (sigwait(&signals, &sig) == 0 && sig == SIGUSR1) {
    std::fprintf(stderr, "live calls: %zu, dial-out calls: %zu\n", table.Live(), dial_out.Live());
  }
  std::fprintf(stderr, "mgmtmsg-frontend: stopping\n");
  server->Shutdown(std::chrono::system_clock::now() + std::chrono::seconds(1));
  server.reset();
  south.Stop();
  dial_out.Stop();
  return 0;
}
