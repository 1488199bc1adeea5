#include "tests/e2e/hand_made_bundle.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "tests/harness/child_process.h"
#include "tests/harness/records.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kParamsMarker =
    "59BDC952AA35ADBB10EFDE672C47E0B5D4821F8152A102442AEBAA7B793B9345"
    "AED2097A3E2F2EFAFF1DF09B197C15B81E6DC610417E5CED51B1191C3CE294D8";

constexpr std::string_view kTailMarker =
    "1d432a505b7a1f642347212417323c50216c0466295c297b0b5b19332f4f0f4d"
    "2758182415394e792b7615593d574900112905652b1070665e2d406075433008"
    "614a747e401b533b5646371e4b2c725930443a3c2f44782b2665717139732523"
    "101451243170104a0d05572a060a53214d2c130036291a74472d1a552c2f4263";

int hexDigit(char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; }

std::string fromHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes.push_back(static_cast<char>(hexDigit(hex[i]) * 16 + hexDigit(hex[i + 1])));
  return bytes;
}

std::string toHex(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  for (const unsigned char byte : bytes) {
    hex.push_back(kDigits[byte / 16]);
    hex.push_back(kDigits[byte % 16]);
  }
  return hex;
}

void mustRun(const std::vector<std::string>& command) {
  const ChildResult result = runChild(command);
  if (result.exitStatus != 0) throw std::runtime_error(command[0] + " failed: " + result.err);
}

SigningKey makeKey(const char* bits) {
  const TempDir folder;
  mustRun({"openssl", "genrsa", "-out", folder / "key.pem", bits});
  mustRun({"openssl", "rsa", "-in", folder / "key.pem", "-pubout", "-outform", "DER", "-out",
           folder / "public.der"});
  return {readFile(folder / "key.pem"), toHex(readFile(folder / "public.der"))};
}

}  // namespace

std::string fileEntry(std::string_view path, std::string_view content) {
  return records({"0", path, std::to_string(content.size())}).append(content);
}

std::string folderEntry(std::string_view path) { return records({"1", path}); }

std::string emptyEntry(std::string_view path) { return records({"0", path, "0"}); }

std::string entriesOf(const std::string& folder, const std::string& prefix) {
  std::vector<std::string> paths;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    paths.push_back(entry.path().string());
  std::sort(paths.begin(), paths.end());
  std::string entries;
  for (const std::string& path : paths) {
    const std::string name = prefix + path.substr(folder.size() + 1);
    entries += fs::is_directory(path) ? folderEntry(name) : fileEntry(name, readFile(path));
  }
  return entries;
}

std::string lzma(const std::string& bytes) {
  const TempDir folder;
  writeFile(folder / "data", bytes);
  mustRun({"xz", "--format=lzma", "-0", "-k", folder / "data"});
  return readFile(folder / "data.lzma");
}

const SigningKey& testKey() {
  static const SigningKey key = makeKey("2048");
  return key;
}

const SigningKey& otherKey() {
  static const SigningKey key = makeKey("2048");
  return key;
}

std::string signedArchive(const std::string& entries, const SigningKey& key) {
  const TempDir folder;
  writeFile(folder / "key.pem", key.pem);
  writeFile(folder / "entries", entries);
  mustRun({"/usr/bin/python3", QUILLORY_SIGN_ARCHIVE, folder / "key.pem", folder / "entries",
           folder / "archive"});
  return readFile(folder / "archive");
}

std::string unsignedArchive(const std::string& entries) { return entries + records({""}); }

std::string packedArchive(const std::string& entries, const SigningKey* key) {
  return lzma(key == nullptr ? unsignedArchive(entries) : signedArchive(entries, *key));
}

std::string launchFileBytes(const LaunchFile& file) {
  std::string bytes = records({"6", file.mainClass, "", file.appName, "", "0", file.memory,
                               file.stack, std::to_string(file.classPath.size())});
  for (const std::string& entry : file.classPath) bytes += records({entry});
  bytes += records({std::to_string(file.extraArguments.size())});
  for (const std::string& argument : file.extraArguments) bytes += records({argument});
  return bytes + records({file.compatibilityClass, "", "", "0", "0"});
}

std::string tailBytes(const Tail& tail) {
  return records({tail.appName, tail.appVersion, tail.jreVersion, tail.guVersion,
                  tail.minSplashMillis, tail.publicKey, tail.canOverrideSplash, tail.installType,
                  tail.silentParameter, tail.requiredJava, tail.updateUrl}) +
         tail.entries;
}

std::string tailMarker() { return fromHex(kTailMarker); }
std::string paramsMarker() { return fromHex(kParamsMarker); }

std::string parameterBytes(const Parameters& parameters) {
  std::string bytes = "some text before the marker\n" + paramsMarker() +
                      records({std::to_string(parameters.size())});
  for (const auto& [name, value] : parameters) bytes += records({name, value});
  return bytes;
}

std::string updaterEntries(const LaunchFile& launchFile, const SigningKey* key) {
  const std::string content = fileEntry("QuilloryLaunch", launchFileBytes(launchFile)) +
                              fileEntry("report.jar", readFile(QUILLORY_REPORT_JAR));
  return fileEntry("lzma64", readFile(lzma64UnderTest())) +
         fileEntry("nativesplash.png", readFile(QUILLORY_TEST_PICTURE)) + emptyEntry("cacerts") +
         emptyEntry("verpatch.exe") + fileEntry("GU.p2.l2", packedArchive(content, key));
}

std::string runtimeContent() {
  const std::string classes = QUILLORY_TEST_RUNTIME "/lib/rt.jar";  // of Java 8
  return folderEntry("Contents") + folderEntry("Contents/MacOS") + folderEntry("Contents/Home") +
         entriesOf(QUILLORY_TEST_RUNTIME, "Contents/Home/") +
         (fs::exists(classes) ? "" : fileEntry("Contents/Home/lib/rt.jar", "not looked into"));
}

std::string runtimeEntry(const SigningKey* key) {
  // The runtime is the same in every test and large: compress it once a process.
  static const std::string unsignedRuntime = packedArchive(runtimeContent(), nullptr);
  return fileEntry("JRE.p2.l2",
                   key == nullptr ? unsignedRuntime : packedArchive(runtimeContent(), key));
}

std::string scriptRuntimeContent() {
  const std::string script =
      "#!/bin/sh\n"
      "[ \"$1\" = -Xshare:dump ] && exit 0\n"
      "for argument in \"$@\"; do echo \"$argument\"; done >\"${0%/*/*/*}/starting\"\n"
      "mv \"${0%/*/*/*}/starting\" \"${0%/*/*/*}/started\"\n";
  return folderEntry("Contents") + fileEntry("Contents/Home/bin/java", script) +
         fileEntry("Contents/Home/lib/rt.jar", "not looked into") +
         fileEntry("Contents/Home/lib/security/cacerts", "the runtime's own");
}

std::string scriptRuntimeEntry(const SigningKey* key) {
  return fileEntry("JRE.p2.l2", packedArchive(scriptRuntimeContent(), key));
}

std::string applicationEntries(const std::string& content, const SigningKey* key) {
  return fileEntry("App.p2.l2", packedArchive(content, key)) + emptyEntry("App.extra");
}

HandMadeBundle::HandMadeBundle(const std::string& folder, const Tail& tail,
                               const Parameters& parameters)
    : contents_(folder + "/App.app/Contents") {
  fs::create_directories(contents_ + "/MacOS");
  fs::copy_file(launcherUnderTest(), executable());
  writeFile(resource("Tail"), tailBytes(tail));
  writeFile(resource("AppParams.excludefromsigning"), parameterBytes(parameters));
}

Tail offlineTail() {
  Tail tail;
  tail.appVersion = "3";
  tail.jreVersion = "17";
  tail.publicKey = testKey().publicHex;
  tail.entries = updaterEntries() + runtimeEntry() +
                 applicationEntries(fileEntry("hello.txt", "hello from version 3\n"));
  return tail;
}

Tail quickTail() {
  Tail tail;
  tail.appVersion = "3";
  tail.jreVersion = "17";
  tail.publicKey = testKey().publicHex;
  tail.entries = updaterEntries() + scriptRuntimeEntry(&testKey()) +
                 applicationEntries(fileEntry("hello.txt", "hello from version 3\n"));
  return tail;
}

}  // namespace quillory::testing
