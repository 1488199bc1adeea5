// Application bundles put together byte by byte, as a producer without our packager would, with the
// system's own tools (xz, openssl, PyCryptodome) for compression and signatures.
#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/e2e/programs.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

/// Entries of an archive or a tail.
std::string fileEntry(std::string_view path, std::string_view content);
std::string folderEntry(std::string_view path);
std::string emptyEntry(std::string_view path);
/// Every file and folder below `folder`, with `prefix` before the paths, in byte order.
std::string entriesOf(const std::string& folder, const std::string& prefix = "");

/// LZMA-alone, by xz.
std::string lzma(const std::string& bytes);

/// An RSA key pair made by openssl.
struct SigningKey {
  std::string pem;
  std::string publicHex;  ///< DER of the public key, as the tail holds it
};
const SigningKey& testKey();
const SigningKey& otherKey();

/// An archive signed with `key`, or unsigned without one, LZMA-compressed: as it travels in a tail
/// and lies under an update URL.
std::string packedArchive(const std::string& entries, const SigningKey* key);
/// The entries with a signature block behind them.
std::string signedArchive(const std::string& entries, const SigningKey& key = testKey());
/// The entries with the empty record that ends an unsigned archive.
std::string unsignedArchive(const std::string& entries);

struct LaunchFile {
  std::string mainClass = "Report";
  std::string appName = "report";
  std::string memory = "0";
  std::string stack = "0";
  std::vector<std::string> classPath = {"report.jar"};
  std::vector<std::string> extraArguments;
  std::string compatibilityClass = "Compatible";
};
std::string launchFileBytes(const LaunchFile& file = {});

/// What the tail says, in the order of its records, and what follows them.
struct Tail {
  std::string appName = "Demo";
  std::string appVersion;
  std::string jreVersion;
  std::string guVersion = "1";
  std::string minSplashMillis = "0";
  std::string publicKey;
  std::string canOverrideSplash = "0";
  std::string installType = "perm_user";
  std::string silentParameter;
  std::string requiredJava;
  std::string updateUrl = "http://no.invalid/";
  std::string entries;
};
std::string tailBytes(const Tail& tail);

/// The bytes that stand before a tail in an executable, and before the parameters in their file.
std::string tailMarker();
std::string paramsMarker();

using Parameters = std::vector<std::pair<std::string, std::string>>;
std::string parameterBytes(const Parameters& parameters);

/// The five entries that every tail with an updater begins with: the LZMA tool, the splash picture
/// and the updater's archive with the test application Report.
std::string updaterEntries(const LaunchFile& launchFile = {}, const SigningKey* key = &testKey());
/// What the archive of a real Java runtime holds, in the shape of a bundle.
std::string runtimeContent();
/// The entry of that runtime, unsigned for speed unless a key is given.
std::string runtimeEntry(const SigningKey* key = nullptr);
/// What the archive of a stand-in for a runtime holds: small, without a JVM library, with a script
/// as `java` that writes its arguments, a line each, to the file "started" beside the bundle.
std::string scriptRuntimeContent();
/// The entry of that stand-in.
std::string scriptRuntimeEntry(const SigningKey* key = nullptr);
/// The two entries of an application whose archive holds `content`.
std::string applicationEntries(const std::string& content, const SigningKey* key = &testKey());

/// <folder>/App.app with a copy of the launcher in it.
class HandMadeBundle {
 public:
  HandMadeBundle(const std::string& folder, const Tail& tail, const Parameters& parameters = {});
  std::string executable() const { return contents_ + "/MacOS/launcher"; }
  std::string resource(const std::string& name) const { return contents_ + "/Resources/" + name; }
  std::string contents() const { return contents_; }

 private:
  std::string contents_;
};

/// Everything: updater 1, runtime 17 and application 3.
Tail offlineTail();
/// The same with the stand-in for a runtime: installs in a moment.
Tail quickTail();

}  // namespace quillory::testing
