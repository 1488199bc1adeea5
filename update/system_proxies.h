// The proxies that the system's own settings name, where the environment names none: on Linux by
// libproxy, which knows the desktops' settings, on macOS by CFNetwork.
//
// Neither is let into a process that has more to do: libproxy may bring a desktop's libraries, an
// interpreter for a network's script, and threads, or wait for a name server. Another process of
// quillory-update (`quillory-update proxies URL`) asks, within so many seconds, and prints the
// answer.
#pragma once
#include <string>
#include <vector>

namespace quillory::update {

/// "direct", or an address as libcurl takes it, such as "http://proxy.example:3128"; the first one
/// that can be reached counts.
using Proxies = std::vector<std::string>;

inline constexpr char kNoProxy[] = "direct";
inline constexpr unsigned kProxyLimitSeconds = 10;

struct ProxyCalls {
  /// None where there is nobody to be asked, or nothing is known.
  Proxies (*proxiesFor)(const std::string& url);
};
/// Asks nobody, until askSystemForProxies().
extern ProxyCalls proxyCalls;

/// From now on the program that runs is asked, in a process of its own.
void askSystemForProxies();

/// Whether the system is to be asked: not for a server on this machine, and not where a variable of
/// the environment names a proxy for such addresses, or says by being empty that there is none.
bool isForSystemProxies(const std::string& url);

/// What the system says, in this process.
Proxies proxiesOfSystem(const std::string& url);

/// An answer of the system ("http://...", "direct://", "socks://...") as a proxy of ours; "" for
/// what is of no use.
std::string proxyOf(const std::string& answer);

/// The work of `quillory-update proxies`: an exit status. Ends this process after
/// kProxyLimitSeconds.
int tellProxies(const std::string& url);

}  // namespace quillory::update
