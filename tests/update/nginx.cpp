#include "tests/update/nginx.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/harness/eventually.h"
#include "tests/harness/http_server.h"

namespace quillory::testing {
namespace {

constexpr char kProgram[] = "/usr/sbin/nginx";

bool isAnswering(int port) {
  const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool is = connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  close(client);
  return is;
}

std::string configuration(int port, const std::string& root, const std::string& settings) {
  // As root it would give the work to a user who cannot read a test's folder.
  const std::string user = geteuid() == 0 ? "user root root;\n" : "";
  return user + "daemon off;\nmaster_process off;\npid nginx.pid;\nevents {}\nhttp {\n" +
         "log_format short '$status $request_uri $bytes_sent';\naccess_log access.log short;\n" +
         "client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi;\n" +
         "uwsgi_temp_path uwsgi; scgi_temp_path scgi;\nserver { listen 127.0.0.1:" +
         std::to_string(port) + "; root " + root + ";\n" + settings + "}\n}\n";
}

}  // namespace

bool Nginx::isThere() { return access(kProgram, X_OK) == 0; }

Nginx::Nginx(const std::string& folder, const std::string& settings) : port_(unusedPort()) {
  writeFile(folder_ / "nginx.conf", configuration(port_, folder, settings));
  server_ = std::make_unique<BackgroundChild>(std::vector<std::string>{
      kProgram, "-p", folder_.str() + '/', "-e", "error.log", "-c", "nginx.conf"});
  if (!eventually([this] { return isAnswering(port_); }))
    throw std::runtime_error("nginx does not start: " + server_->err());
}

std::string Nginx::url() const { return "http://127.0.0.1:" + std::to_string(port_) + '/'; }

std::vector<std::string> Nginx::log() const {
  std::vector<std::string> lines;
  std::ifstream file(folder_ / "access.log");
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

}  // namespace quillory::testing
