// Usage: update_fleet [CLIENTS]
//
// Installations (2,000 of them) that follow five releases with a rollout, each by the real code of
// quillory-update, against a real nginx on the loopback. Of the connections one in twenty is
// dropped and one in fifty cut in the middle, by a proxy in between. Days pass by a clock that
// jumps from one check to the next. Prints whether all arrive, what that took, and what the
// arithmetic says.
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <queue>
#include <random>
#include <thread>

#include "formats/update_settings.h"
#include "packager/writing/update_settings_writer.h"
#include "support/clock.h"
#include "support/log.h"
#include "support/platform.h"
#include "tests/harness/temp_dir.h"
#include "tests/update/nginx.h"
#include "tests/update/release_folder.h"
#include "update/chance.h"
#include "update/commands.h"
#include "update/curl_transport.h"
#include "update/installation.h"
#include "update/state.h"

namespace {

namespace fs = std::filesystem;
using namespace quillory;
using namespace quillory::testing;

constexpr int kReleases = 5;
constexpr std::int64_t kDaysBetween = 3;
constexpr std::int64_t kRolloutDays = 1;
constexpr std::int64_t kHour = 3600;
constexpr double kDropped = 0.05;
constexpr double kCut = 0.02;
constexpr std::size_t kAppBytes = 60000;
constexpr std::size_t kChangedBytes = 4000;

// In milliseconds: what the clients' clock tells.
std::int64_t clockMillis = 0;
std::mt19937_64 chance(20260101);

double anyPart() { return std::uniform_real_distribution<double>(0, 1)(chance); }

std::string noise(unsigned seed, std::size_t size) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

// Between the clients and the server: one connection after another, some of which it spoils.
class Proxy {
 public:
  explicit Proxy(int serverPort) : serverPort_(serverPort), random_(4711) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(listener_, 64) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0)
      throw std::runtime_error("no port for the proxy");
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
  }
  ~Proxy() {
    isStopping_ = true;
    thread_.join();
    close(listener_);
  }
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;

  int port() const { return port_; }
  int connections = 0;
  int dropped = 0;
  int cut = 0;

 private:
  static sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
  }

  double part() { return std::uniform_real_distribution<double>(0, 1)(random_); }

  void run() {
    while (!isStopping_) {
      pollfd waiting{listener_, POLLIN, 0};
      if (poll(&waiting, 1, 50) != 1) continue;
      const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (client < 0) continue;
      ++connections;
      if (part() < kDropped) {
        ++dropped;
      } else {
        const bool isCut = part() < kCut;
        cut += isCut ? 1 : 0;
        relay(client, isCut ? static_cast<std::int64_t>(part() * 3000) : -1);
      }
      close(client);
    }
  }

  // Until one of the two ends it, or so many bytes of answers have passed.
  void relay(int client, std::int64_t mostAnswered) {
    const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(serverPort_);
    bool isOpen = connect(server, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    while (isOpen && !isStopping_) {
      pollfd ends[2] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
      if (poll(ends, 2, 50) <= 0) continue;
      if (ends[0].revents != 0) isOpen = pass(client, server, -1) > 0;
      if (isOpen && ends[1].revents != 0) {
        const std::int64_t passed = pass(server, client, mostAnswered);
        isOpen = passed > 0;
        if (mostAnswered >= 0) isOpen = isOpen && (mostAnswered -= passed) > 0;
      }
    }
    close(server);
  }

  static std::int64_t pass(int from, int to, std::int64_t most) {
    char bytes[16384];
    const ssize_t size = read(from, bytes, sizeof bytes);
    if (size <= 0) return 0;
    const std::int64_t passed = most < 0 ? size : std::min<std::int64_t>(size, most);
    for (std::int64_t sent = 0; sent < passed;) {
      const ssize_t now =
          send(to, bytes + sent, static_cast<std::size_t>(passed - sent), MSG_NOSIGNAL);
      if (now <= 0) return 0;
      sent += now;
    }
    return passed;
  }

  const int serverPort_;
  int listener_ = -1;
  int port_ = 0;
  std::mt19937_64 random_;
  std::atomic<bool> isStopping_ = false;
  std::thread thread_;
};

// Counts what one client's requests take.
class CountingTransport : public update::Transport {
 public:
  update::TransferResult get(const update::TransferRequest& request,
                             update::TransferSink& sink) override {
    update::TransferResult result = transport_->get(request, sink);
    ++requests;
    bytes += result.bytesUp + result.bytesDown;
    return result;
  }
  std::int64_t requests = 0;
  std::int64_t bytes = 0;

 private:
  std::unique_ptr<update::Transport> transport_ = update::makeCurlTransport();
};

Content appOf(int version) {
  const auto seed = static_cast<unsigned>(version);
  return {{"app.jar", noise(1, kAppBytes - kChangedBytes) + noise(seed + 100, kChangedBytes)}};
}

// The releases, each of which is published when its day has come.
class Releases {
 public:
  Releases() {
    for (int version = 1; version <= kReleases + 1; ++version) {
      components_.push_back(
          folder_.add(kApplicationRole, "Demo", std::to_string(version), appOf(version)));
      for (int base = std::max(1, version - 5); base < version; ++base)
        folder_.addDelta(components_.back(), components_[static_cast<std::size_t>(base) - 1]);
    }
  }

  void publish(int version, std::int64_t now) {
    ReleaseList list =
        ReleaseFolder::list(version, {components_[static_cast<std::size_t>(version) - 1]});
    list.issued = now;
    list.expires = now + 90 * kDay;
    list.rollout = {.start = now, .days = kRolloutDays, .percent = 100};
    folder_.publish(list);
  }

  std::string path() const { return folder_.path(); }
  std::int64_t deltaBytes() const { return components_.back().deltas.back().file.length; }
  std::int64_t archiveBytes() const { return components_.back().archive.length; }
  std::int64_t listBytes() const {
    return static_cast<std::int64_t>(
        fs::file_size(folder_ / releaseListName("Demo", kStandardChannel)));
  }

 private:
  ReleaseFolder folder_;
  std::vector<ReleaseComponent> components_;
};

struct Client {
  update::Installation installation;
  std::int64_t requests = 0;
  std::int64_t bytes = 0;
  std::map<std::string, std::int64_t> arrived;  ///< version, seconds
};

Client makeClient(const std::string& master, const std::string& url) {
  Client client;
  update::Installation& its = client.installation;
  its.appName = "Demo";
  its.masterFolder = its.ownFolder = master;
  its.updaterFolder = master + "/Quillory-Quillory-1-complete";
  its.jreName = "JRE";
  its.updateUrl = url;
  UpdateSettings settings;
  settings.keys = {testKey("working").publicHex()};
  writeFile(its.updaterFolder + "/QuilloryLaunch", "launch");
  writeFile(its.updaterFolder + '/' + kUpdateSettingsFileName, pack::updateSettingsBytes(settings));
  writeFile(master + "/Quillory-Demo-1-complete/app.jar", appOf(1)["app.jar"]);
  return client;
}

// One run of "quillory-update background"; returns when the next one is due.
std::int64_t runClient(Client& client, int& lists) {
  CountingTransport transport;
  const auto note = [&](const update::Line& line) {
    if (line.text().starts_with("done version="))
      client.arrived[line.text().substr(13, line.text().find(' ', 13) - 13)] = clockMillis / 1000;
    if (line.text() == "phase name=CHECKING") ++lists;
  };
  update::runCommand({.command = update::Command::kBackground,
                      .installation = client.installation,
                      .transport = transport,
                      .lines = note,
                      .administratorsFolder = "/nonexistent"});
  client.requests += transport.requests;
  client.bytes += transport.bytes;
  return update::readState(client.installation.updatesFolder()).nextCheck;
}

void setSeams() {
  logCalls.show = [](const char*, std::size_t) {};
  platformCalls.systemLog = [](const char*) {};
  timeCalls.nowMillis = [] { return static_cast<std::uint64_t>(clockMillis); };
  timeCalls.sleepMicros = [](std::uint64_t micros) {
    clockMillis += static_cast<std::int64_t>(micros / 1000);
  };
  update::chanceCalls.next = [] { return static_cast<std::uint64_t>(chance()); };
}

int run(int count) {
  const std::int64_t start = kIssued;
  clockMillis = start * 1000;
  setSeams();
  Releases releases;
  releases.publish(1, start);
  const Nginx nginx(releases.path());
  Proxy proxy(std::atoi(nginx.url().substr(nginx.url().rfind(':') + 1).c_str()));
  const std::string url = "http://127.0.0.1:" + std::to_string(proxy.port()) + '/';

  const TempDir machines;
  std::vector<Client> clients;
  using Event = std::pair<std::int64_t, int>;
  std::priority_queue<Event, std::vector<Event>, std::greater<>> events;
  for (int i = 0; i < count; ++i) {
    clients.push_back(makeClient(machines / std::to_string(i), url));
    events.emplace(start + static_cast<std::int64_t>(anyPart() * static_cast<double>(kDay)), i);
  }

  const std::int64_t end = start + (kReleases + 1) * kDaysBetween * kDay;
  int published = 1;
  int lists = 0;
  std::map<std::int64_t, int> perHour;
  for (; !events.empty() && events.top().first < end;) {
    const auto [due, index] = events.top();
    events.pop();
    while (published <= kReleases && due >= start + published * kDaysBetween * kDay) {
      ++published;
      releases.publish(published, start + (published - 1) * kDaysBetween * kDay);
    }
    clockMillis = due * 1000;
    ++perHour[(due - start) / kHour];
    const std::int64_t next = runClient(clients[static_cast<std::size_t>(index)], lists);
    events.emplace(std::max(next, due + 1), index);
  }

  const std::string newest = std::to_string(kReleases + 1);
  int arrived = 0;
  std::int64_t requests = 0;
  std::int64_t bytes = 0;
  double slowest = 0;
  for (const Client& client : clients) {
    const auto found = client.arrived.find(newest);
    arrived += found != client.arrived.end() ? 1 : 0;
    requests += client.requests;
    bytes += client.bytes;
    if (found != client.arrived.end())
      slowest = std::max(
          slowest, static_cast<double>(found->second - (start + kReleases * kDaysBetween * kDay)) /
                       static_cast<double>(kHour));
  }
  // The first day is one in which clients begin, and the hours of back-off count with the others.
  int peak = 0;
  double sum = 0;
  int hours = 0;
  for (const auto& [hour, runs] : perHour) {
    if (hour < 48) continue;
    peak = std::max(peak, runs);
    sum += runs;
    ++hours;
  }
  const double days = static_cast<double>(end - start) / static_cast<double>(kDay) - 0.5;
  const double clientCount = count;
  const double expectedRequests = days + kReleases;
  std::printf("%d of %d clients have release %s; the last one %.0f hours behind its publication\n",
              arrived, count, newest.c_str(), slowest);
  std::printf("connections %d, of which %d dropped and %d cut\n", proxy.connections, proxy.dropped,
              proxy.cut);
  std::printf(
      "requests a client: %.1f in %.1f days; by arithmetic %.1f (a check a day, a delta a "
      "release)\n",
      static_cast<double>(requests) / clientCount, days, expectedRequests);
  const double checkBytes = 500;
  const double expectedBytes = days * checkBytes +
                               kReleases * static_cast<double>(releases.listBytes()) +
                               kReleases * static_cast<double>(releases.deltaBytes() + 400);
  std::printf(
      "bytes a client: %.0f; by arithmetic %.0f (delta %lld, whole archive %lld, list %lld)\n",
      static_cast<double>(bytes) / clientCount, expectedBytes,
      static_cast<long long>(releases.deltaBytes()),
      static_cast<long long>(releases.archiveBytes()),
      static_cast<long long>(releases.listBytes()));
  std::printf("runs an hour: %.1f on average, %d at most: %.2f times\n", sum / hours, peak,
              peak / (sum / hours));
  return arrived == count ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc > 1 ? std::atoi(argv[1]) : 2000);
  } catch (const std::exception& mistake) {
    std::fprintf(stderr, "update_fleet: %s\n", mistake.what());
    return 1;
  }
}
