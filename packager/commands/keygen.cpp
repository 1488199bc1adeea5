#include "packager/commands/keygen.h"

#include <filesystem>

#include "packager/bytes/byte_sinks.h"
#include "packager/keys/signing_key.h"

namespace quillory::pack {

void makeKeyFile(const std::string& path, int bits, Reporter& reporter) {
  std::error_code ignored;
  if (std::filesystem::symlink_status(path, ignored).type() !=
      std::filesystem::file_type::not_found) {
    throw PackError("exists already, and a key that applications were signed with must not be lost",
                    "name another file, or move this one away first", {path, 0});
  }
  reporter.line("making a key of " + std::to_string(bits) + " bits, which takes a few seconds");
  const SigningKey key = SigningKey::generate(bits);
  writeWholeFile(path, key.privatePem(), 0600);
  reporter.value("key", path);
  reporter.value("fingerprint", fingerprint(key.publicDer()));
  reporter.result("key:         " + path);
  reporter.result("fingerprint: " + fingerprint(key.publicDer()));
  reporter.line(
      "\nName it in quillory.toml:  [signing]  key = \"" + path +
      "\"\n"
      "\nKeep a copy where a dead disk cannot reach it, and keep it out of version control."
      "\nWhoever has this file can sign updates that your users' machines accept. Whoever loses it"
      "\ncan never again sign an update that the applications shipped so far accept.");
}

}  // namespace quillory::pack
