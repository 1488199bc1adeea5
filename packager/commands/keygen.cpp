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
  std::string file;  ///< "": what the kind of key is called
  int bits = 3072;
  bool isReserve = false;
};

constexpr char kSigningKeyFile[] = "signing.pem";
constexpr char kReserveKeyFile[] = "reserve.pem";

void requireFree(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::symlink_status(path, ignored).type() !=
      std::filesystem::file_type::not_found) {
    throw PackError("exists already, and a key that applications were signed with must not be lost",
                    "name another file, or move this one away first", {path, 0});
  }
}

SigningKey makeKey(const std::string& path, int bits, Reporter& reporter) {
  requireFree(path);
  reporter.line("making a key of " + std::to_string(bits) + " bits, which takes a few seconds");
  SigningKey key = SigningKey::generate(bits);
  // One that was killed may have left half a key here.
  removeAbandoned(std::filesystem::path(path).parent_path().string());
  return key;
}

void tellFingerprint(const SigningKey& key, Reporter& reporter) {
  reporter.value("fingerprint", fingerprint(key.publicDer()));
  reporter.result("fingerprint: " + fingerprint(key.publicDer()));
}

}  // namespace

void makeKeyFile(const std::string& path, int bits, Reporter& reporter) {
  const SigningKey key = makeKey(path, bits, reporter);
  writeWholeFile(path, key.privatePem(), 0600);
  reporter.value("key", path);
  reporter.result("key:         " + path);
  tellFingerprint(key, reporter);
  reporter.line(
      "\nName it in quillory.toml:  [signing]  key = \"" + path +
      "\"\n"
      "\nKeep a copy where a dead disk cannot reach it, and keep it out of version control."
      "\nWhoever has this file can sign updates that your users' machines accept. Whoever loses it"
      "\ncan never again sign an update that the applications shipped so far accept.");
}

std::string publicHalfPath(const std::string& path) {
  const std::filesystem::path given(path);
  const std::string end =
      given.extension() == ".pem" ? ".pem" : given.extension().string() + ".pem";
  return (given.parent_path() / (given.stem().string() + ".public" + end)).string();
}

void makeReserveKeyFiles(const std::string& path, int bits, Reporter& reporter) {
  const std::string half = publicHalfPath(path);
  requireFree(half);
  const SigningKey key = makeKey(path, bits, reporter);
  writeWholeFile(path, key.privatePem(), 0600);
  writeWholeFile(half, key.publicPem());
  reporter.value("key", path);
  reporter.value("public", half);
  reporter.result("reserve key: " + path + "\npublic half: " + half);
  tellFingerprint(key, reporter);
  reporter.line("\nName the public half in quillory.toml:  [update]  reserve-key = \"" + half +
                "\"\n"
                "\nMove " +
                path +
                " to two places that no network reaches, and delete it here. Nothing needs it"
                "\nbefore the signing key is lost or stolen; then it signs the release that names "
                "new keys.");
}

Command keygenCommand() {
  const auto options = std::make_shared<KeygenOptions>();
  return {"keygen",
          "makes the key that signs archives",
          "quillory-pack keygen ~/keys/myapp.pem",
          {{.name = "FILE",
            .description = std::string("where the key goes, ") + kSigningKeyFile + " or " +
                           kReserveKeyFile + " without it; it must not exist yet",
            .into = &options->file},
           {.name = "--bits",
            .description = "its size: 2048, 3072 or 4096",
            .into = &options->bits,
            .numbers = {2048, 3072, 4096}},
           {.name = "--reserve",
            .description = "make the second key, which is kept offline until the first one is lost",
            .into = &options->isReserve}},
          [options](Reporter& reporter) {
            if (options->isReserve) {
              makeReserveKeyFiles(options->file.empty() ? kReserveKeyFile : options->file,
                                  options->bits, reporter);
            } else {
              makeKeyFile(options->file.empty() ? kSigningKeyFile : options->file, options->bits,
                          reporter);
            }
            return kDone;
          }};
}

}  // namespace quillory::pack
