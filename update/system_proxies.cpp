#include "update/system_proxies.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "support/log.h"
#include "support/program.h"
#include "support/running_program.h"

namespace quillory::update {
namespace {

constexpr std::string_view kSeparator = "://";

std::string_view schemeOf(std::string_view url) { return url.substr(0, url.find(kSeparator)); }

std::string_view hostOf(std::string_view url) {
  const std::size_t scheme = url.find(kSeparator);
  if (scheme == url.npos) return "";
  std::string_view host = url.substr(scheme + kSeparator.size());
  host = host.substr(0, host.find_first_of("/?#"));
  if (const std::size_t user = host.rfind('@'); user != host.npos) host.remove_prefix(user + 1);
  if (host.starts_with('[')) return host.substr(0, host.find(']') + 1);
  return host.substr(0, host.find(':'));
}

bool isThisMachine(std::string_view host) {
  return host == "localhost" || host.starts_with("127.") || host == "[::1]";
}

bool isSet(const char* variable) { return std::getenv(variable) != nullptr; }

Proxies askOwnProgram(const std::string& url) {
  const std::string program = runningProgram();
  if (program.empty()) return {};
  ProgramOptions quietly;
  quietly.output = ProgramOutput::kCaptured;
  const ProgramResult asked = runProgram({program, "proxies", url}, quietly);
  if (!asked.exited || asked.status != 0) {
    logMessage("[Update] The system's settings of proxies could not be asked\n");
    return {};
  }
  Proxies proxies;
  std::istringstream lines(asked.output);
  for (std::string line; std::getline(lines, line);) proxies.push_back(line);
  return proxies;
}

}  // namespace

ProxyCalls proxyCalls{+[](const std::string&) { return Proxies(); }};

void askSystemForProxies() { proxyCalls.proxiesFor = askOwnProgram; }

bool isForSystemProxies(const std::string& url) {
  if (isThisMachine(hostOf(url)) || isSet("all_proxy") || isSet("ALL_PROXY")) return false;
  const std::string_view scheme = schemeOf(url);
  // HTTP_PROXY is what a web server would make of a request's head: libcurl does not look at it.
  if (scheme == "http") return !isSet("http_proxy");
  return scheme == "https" && !isSet("https_proxy") && !isSet("HTTPS_PROXY");
}

std::string proxyOf(const std::string& answer) {
  const std::string_view scheme = schemeOf(answer);
  if (scheme == kNoProxy) return kNoProxy;
  if (hostOf(answer).empty()) return "";
  if (scheme == "http" || scheme == "https" || scheme == "socks4") return answer;
  // The proxy looks names up: ours may be known to it alone.
  if (scheme == "socks" || scheme == "socks5") return "socks5h" + answer.substr(scheme.size());
  return "";
}

int tellProxies(const std::string& url) {
  alarm(kProxyLimitSeconds);
  // What a library of a desktop starts, or says, is not for who reads these lines.
  fcntl(STDOUT_FILENO, F_SETFD, FD_CLOEXEC);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);
  for (const std::string& proxy : proxiesOfSystem(url)) std::printf("%s\n", proxy.c_str());
  // Its exit handlers may wait for threads.
  std::_Exit(std::fflush(stdout) == 0 ? 0 : 1);
}

}  // namespace quillory::update
