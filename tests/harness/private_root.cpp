#include "tests/harness/private_root.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

constexpr char kScript[] = QUILLORY_SOURCE_DIR "/tests/harness/private_root.sh";
constexpr const char* kSystemFolders[] = {"usr",   "bin", "sbin", "lib", "lib32",
                                          "lib64", "etc", "dev",  "proc"};

// What sudo lets through, so that a sanitizer in an elevated program knows its options.
constexpr char kSudoers[] = "Defaults env_reset, env_keep += \"ASAN_OPTIONS LC_ALL\"\n";

std::string probe() {
  if (geteuid() != 0) return "only root can have a root folder of its own";
  const TempDir folder;
  const ChildResult result = runChild({"unshare", "--mount", "--propagation", "private", "mount",
                                       "-t", "tmpfs", "none", folder.str()});
  return result.exitStatus == 0 ? "" : "no mount namespace of its own here: " + result.err;
}

}  // namespace

std::string PrivateRoot::whyImpossible() {
  static const std::string reason = probe();
  return reason;
}

PrivateRoot::PrivateRoot() {
  // Else only root could go into it.
  chmod(root_.str().c_str(), 0755);
  for (const std::string name : kSystemFolders) {
    const fs::path original = "/" + name;
    if (fs::is_symlink(original)) {
      fs::copy_symlink(original, *this / name);
    } else if (fs::is_directory(original)) {
      fs::create_directory(*this / name);
    }
  }
  fs::create_directories(*this / "run");
  fs::create_directories(*this / "root");
  fs::create_directories(*this / "var/tmp");
  fs::create_directory(*this / "tmp");
  chmod((*this / "tmp").c_str(), 01777);
  makeUserFolder(kHome);
  // The names of the system, since its other account files know them.
  const std::string ids = std::to_string(kUser) + ":" + std::to_string(kUser);
  writeFile(*this / "run/passwd",
            "root:x:0:0:root:/root:/bin/sh\nnobody:x:" + ids + "::" + kHome + ":/bin/sh\n");
  writeFile(*this / "run/sudoers", kSudoers);
  chmod((*this / "run/sudoers").c_str(), 0440);
}

void PrivateRoot::makeUserFolder(const std::string& inside) const {
  fs::create_directories(*this / inside);
  if (chown((*this / inside).c_str(), kUser, kUser) != 0) throw std::runtime_error("chown failed");
}

void PrivateRoot::allowSudo(const std::string& commands) const {
  std::ofstream(*this / "run/sudoers", std::ios::app)
      << "#" << kUser << " ALL=(root) NOPASSWD: " << commands << '\n';
}

ChildResult PrivateRoot::runAsRoot(const std::vector<std::string>& command,
                                   ChildOptions options) const {
  // A session of its own has no terminal that something could ask a password on. It is a process
  // group of its own as well, which runChild() does not know: it ends itself a little earlier.
  const auto limit = options.limit - std::chrono::seconds(1);
  const std::string origin = fs::read_symlink("/proc/self/ns/mnt").string();
  std::vector<std::string> whole = {"unshare",
                                    "--mount",
                                    "--propagation",
                                    "private",
                                    "sh",
                                    kScript,
                                    root_.str(),
                                    origin,
                                    "setsid",
                                    "--wait",
                                    "timeout",
                                    "--signal=KILL",
                                    std::to_string(limit.count())};
  whole.insert(whole.end(), command.begin(), command.end());
  return runChild(whole, options);
}

ChildResult PrivateRoot::runAsUser(const std::vector<std::string>& command,
                                   ChildOptions options) const {
  options.environment.insert({"HOME", kHome});
  const std::string user = std::to_string(kUser);
  std::vector<std::string> whole = {"setpriv", "--reuid=" + user, "--regid=" + user,
                                    "--clear-groups"};
  whole.insert(whole.end(), command.begin(), command.end());
  return runAsRoot(whole, options);
}

}  // namespace quillory::testing
