#include "packager/commands/keygen.h"

#include <filesystem>
#include <memory>

#include "packager/bytes/abandoned.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/keys/signing_key.h"
#include "packager/report/exit_statuses.h"

namespace quillory::pack {
namespace {

struct KeygenOptions {
  std::string file = "signing.pem";
  int bits = 3072;
};

}  // namespace

void makeKeyFile(const std::string& path, int bits, Reporter& reporter) {
  std::error_code ignored;
  if (std::filesystem::symlink_status(path, ignored).type() !=
      std::filesystem::file_type::not_found) {
    throw PackError("exists already, and a key that applications were signed with must not be lost",
                    "name another file, or move this one away first", {path, 0});
  }
  reporter.line("making a key of " + std::to_string(bits) + " bits, which takes a few seconds");
  const SigningKey key = SigningKey::generate(bits);
  // One that was killed may have left half a key here.
  removeAbandoned(std::filesystem::path(path).parent_path().string());
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

Command keygenCommand() {
  const auto options = std::make_shared<KeygenOptions>();
  return {"keygen",
          "makes the key that signs archives",
          "quillory-pack keygen ~/keys/myapp.pem",
          {{.name = "FILE",
            .description = "where the key goes; it must not exist yet",
            .into = &options->file},
           {.name = "--bits",
            .description = "its size: 2048, 3072 or 4096",
            .into = &options->bits,
            .numbers = {2048, 3072, 4096}}},
          [options](Reporter& reporter) {
            makeKeyFile(options->file, options->bits, reporter);
            return kDone;
          }};
}

}  // namespace quillory::pack
