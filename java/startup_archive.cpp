#include "java/startup_archive.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include "formats/record_stream.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace quillory {
namespace {

constexpr char kPrefix[] = "StartupArchive-";
constexpr char kFormat[] = "1";
constexpr long kFirstJava = 13;  // with archives of applications by default, and without surprises
constexpr long kFirstLinkingJava = 24;  // links classes where the archive is made
constexpr off_t kMostBadStarts = 2;

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

/// The number that JAVA_VERSION of a runtime's release file begins with; 0 without one.
long majorVersionIn(const std::string& home) {
  const OwnedFile file(std::fopen((home + "/release").c_str(), "rb"));
  if (!file) return 0;
  std::array<char, 256> line;
  constexpr std::string_view kKey = "JAVA_VERSION=\"";
  while (std::fgets(line.data(), line.size(), file.get()) != nullptr)
    if (std::strncmp(line.data(), kKey.data(), kKey.size()) == 0)
      return std::strtol(line.data() + kKey.size(), nullptr, 10);
  return 0;
}

/// FNV-1a of all that an archive depends on: it is to notice what has changed, not who did it.
class Fingerprint {
 public:
  void add(std::string_view text) {
    for (const char c : text) addByte(static_cast<unsigned char>(c));
    addByte(0);
  }
  void addFile(const std::string& path) {
    add(path);
    const std::optional<struct stat> status = statusOf(path);
    add(status ? std::to_string(status->st_size) + ' ' + std::to_string(status->st_mtime) : "none");
  }
  std::string text() const {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%016" PRIx64, hash_);
    return text.data();
  }

 private:
  void addByte(unsigned char byte) { hash_ = (hash_ ^ byte) * 0x100000001b3; }

  std::uint64_t hash_ = 0xcbf29ce484222325;
};

/// The system and the kind of processor are this program's own.
void addMachine([[maybe_unused]] Fingerprint& fingerprint) {
#if defined(__x86_64__)
  // What the processor is and can: leaves of CPUID, without the number of the core that is asked.
  for (const unsigned leaf : {0U, 1U, 7U}) {
    unsigned a = 0, b = 0, c = 0, d = 0;
    __get_cpuid_count(leaf, 0, &a, &b, &c, &d);
    fingerprint.add(std::to_string(a) + ' ' + (leaf == 1 ? "" : std::to_string(b)) + ' ' +
                    std::to_string(c) + ' ' + std::to_string(d));
  }
#endif
}

std::string fingerprintOf(const ArchivePlace& place, const LaunchCommand& command) {
  Fingerprint fingerprint;
  addMachine(fingerprint);
  fingerprint.addFile(place.javaHome + "/lib/modules");
  fingerprint.addFile(place.javaHome + "/release");
  for (const std::string& entry : command.classPath) fingerprint.addFile(entry);
  for (const std::string& option : command.jvmOptions) fingerprint.add(option);
  return fingerprint.text();
}

/// Whether a JVM with these options takes an archive whose classes are linked already: one that was
/// given other modules, an agent or another class loader refuses it, and says so in five lines.
bool mayBeLinked(const std::vector<std::string>& options) {
  constexpr std::array<std::string_view, 7> kInTheWay = {"--",
                                                         "-javaagent:",
                                                         "-agentlib:",
                                                         "-Xrun",
                                                         "-agentpath:",
                                                         "-Xbootclasspath",
                                                         "-Djava.system.class.loader="};
  return std::none_of(options.begin(), options.end(), [&](const std::string& option) {
    return std::any_of(kInTheWay.begin(), kInTheWay.end(),
                       [&](std::string_view begin) { return option.starts_with(begin); });
  });
}

enum class Archive { kNone, kUsable, kUnmakable };

Archive archiveAt(const std::string& base, const std::string& fingerprint) {
  const OwnedFile guard(std::fopen((base + ".guard").c_str(), "rb"));
  if (!guard || readText(guard.get(), "Guard VER") != kFormat ||
      readText(guard.get(), "Fingerprint") != fingerprint)
    return Archive::kNone;
  const long length = readLong(guard.get(), "Archive Length");
  const long seconds = readLong(guard.get(), "Archive Time");
  if (length == 0) return Archive::kUnmakable;
  const std::optional<struct stat> status = statusOf(base + ".jsa");
  const bool isWhole = status && S_ISREG(status->st_mode) && status->st_size == length &&
                       status->st_mtime == seconds;
  return isWhole ? Archive::kUsable : Archive::kNone;
}

/// Whether it could be noted: what nobody counts is not tried.
bool noteStart(const std::string& tries) {
  const OwnedFile file(std::fopen(tries.c_str(), "ab"));
  return file && std::fputc('.', file.get()) != EOF && std::fflush(file.get()) == 0;
}

}  // namespace

void addStartupArchive(const ArchivePlace& place, LaunchCommand& command) {
  const long version = place.folder.empty() ? 0 : majorVersionIn(place.javaHome);
  if (version < kFirstJava) return;
  const std::size_t name = place.applicationFolder.rfind('/') + 1;
  const std::string base = joinPath(place.folder, kPrefix + place.applicationFolder.substr(name));
  const std::string tries = base + ".tries";
  const std::optional<struct stat> tried = statusOf(tries);
  if (tried && tried->st_size >= kMostBadStarts) {
    logMessage("[Extractor] Two starts with the startup archive have failed. Not used.\n");
    return;
  }
  const std::string fingerprint = fingerprintOf(place, command);
  const Archive archive = archiveAt(base, fingerprint);
  if (archive == Archive::kUnmakable) return;
  if (archive == Archive::kUsable) {
    if (!noteStart(tries)) return;
    logMessage("[Extractor] Using the startup archive %s.jsa\n", base.c_str());
    command.jvmOptions.push_back("-XX:SharedArchiveFile=" + base + ".jsa");
    command.jvmOptions.emplace_back("-Xshare:auto");
    command.jvmOptions.push_back("-Dquillory.archive.tries=" + tries);
    return;
  }
  const bool isLinked = version >= kFirstLinkingJava && mayBeLinked(command.jvmOptions);
  mkdir(place.folder.c_str(), 0777);  // Less the umask; it is there in most starts.
  if (!statusOf(place.folder)) return;
  command.jvmOptions.push_back("-XX:DumpLoadedClassList=" + base + ".classes");
  command.jvmOptions.push_back("-Dquillory.archive.base=" + base);
  command.jvmOptions.push_back("-Dquillory.archive.fingerprint=" + fingerprint);
  if (isLinked) command.jvmOptions.emplace_back("-Dquillory.archive.linked=true");
}

}  // namespace quillory
