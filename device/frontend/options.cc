#include "options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace frontend {
namespace {

const char kUsage[] =
    "usage: mgmtmsg-frontend [options]\n"
    "Serves gNMI (Capabilities, Get, Set, Subscribe) and dial-in telemetry\n"
    "(gRPCConfigOper Subscribe, Cancel) over gRPC, relaying every call to the\n"
    "service module over the south channel, and makes the dial-out calls to\n"
    "collectors that the service module asks for.\n"
    "  --listen HOST:PORT  address to serve (default 127.0.0.1:9339; the port\n"
    "                      comes from GNMI_PORT when set)\n"
    "  --south PATH        south channel socket (default /tmp/mgmtmsg-south.sock)\n"
    "  --tls-cert FILE     TLS certificate chain (PEM), with --tls-key\n"
    "  --tls-key FILE      TLS private key (PEM)\n"
    "  --insecure          allow plaintext on an address that is not loopback\n"
    "  --max-queue N       replies queued per call before it ends\n"
    "                      RESOURCE_EXHAUSTED (default 256)\n"
    "  --dial-out-ca FILE  CA certificates (PEM) that collectors' certificates\n"
    "                      are checked against on dial-out calls over TLS\n"
    "                      (default: the system's)\n"
    "  --help              this text\n"
    "Credentials come from the call metadata username/password.\n"
    "SIGUSR1 prints the number of live calls on stderr.\n";

bool ParsePort(const char* text, uint32_t* port) {
  char* end = nullptr;
  unsigned long value = std::strtoul(text, &end, 10);
  if (*text == '\0' || *end != '\0' || value > 65535) {
    return false;
  }
  *port = static_cast<uint32_t>(value);
  return true;
}

bool ParseListen(const std::string& text, Options* options) {
  size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) {
    return false;
  }
  options->host = text.substr(0, colon);
  return ParsePort(text.c_str() + colon + 1, &options->port);
}

bool Loopback(const std::string& host) {
  return host.rfind("127.", 0) == 0 || host == "localhost" || host == "[::1]" || host == "::1";
}

int Fail(const char* what, const char* value) {
  std::fprintf(stderr, "mgmtmsg-frontend: %s%s\n%s", what, value, kUsage);
  return 2;
}

}  // namespace

int ParseOptions(int argc, char** argv, Options* options) {
  const char* port = std::getenv("GNMI_PORT");
  if (port != nullptr && *port != '\0' && !ParsePort(port, &options->port)) {
    return Fail("GNMI_PORT is no port: ", port);
  }
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
    if (arg == "--help") {
      std::fputs(kUsage, stdout);
      return 0;
    }
    if (arg == "--insecure") {
      options->insecure = true;
      continue;
    }
    if (value == nullptr) {
      return Fail("unknown option or missing value: ", arg.c_str());
    }
    ++i;
    if (arg == "--listen") {
      if (!ParseListen(value, options)) {
        return Fail("--listen wants HOST:PORT, not ", value);
      }
    } else if (arg == "--south") {
      options->south = value;
    } else if (arg == "--tls-cert") {
      options->tls_cert = value;
    } else if (arg == "--tls-key") {
      options->tls_key = value;
    } else if (arg == "--dial-out-ca") {
      options->dial_out_ca = value;
    } else if (arg == "--max-queue") {
      options->max_queued = std::strtoul(value, nullptr, 10);
      if (options->max_queued == 0) {
        return Fail("--max-queue wants a positive count, not ", value);
      }
    } else {
      return Fail("unknown option: ", arg.c_str());
    }
  }
  if (options->tls_cert.empty() != options->tls_key.empty()) {
    return Fail("--tls-cert and --tls-key go together", "");
  }
  if (options->tls_cert.empty() && !options->insecure && !Loopback(options->host)) {
    return Fail("plaintext is served on a loopback address only (--insecure): ",
                options->host.c_str());
  }
  return -1;
}

}  // namespace frontend
