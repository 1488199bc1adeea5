// Extracts any bytes: as an archive, or (when the first byte is odd) as entries of a tail, where
// suffixes count. Nothing may appear beside the destination folder.
#include <setjmp.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "formats/archive.h"
#include "formats/text_encodings.h"
#include "support/clock.h"
#include "support/owned.h"
#include "support/process.h"
#include "tests/fuzz/quiet.h"

namespace fs = std::filesystem;
using quillory::fuzz::promise;

// The process ends only where no stream is open any more, so that a jump loses nothing.
static jmp_buf refused;
static bool isExtracting = false;

extern "C" [[noreturn]] void __real_exit(int status);
extern "C" [[noreturn]] void __wrap_exit(int status) {
  if (!isExtracting) __real_exit(status);
  longjmp(refused, 1);
}

namespace {

struct Waited {};

fs::path site;
Rsa_key* key;

// A tool that copies its last but one argument to its last one.
int copyAsTool(pid_t* child, const char*, const posix_spawn_file_actions_t*,
               char* const arguments[], char* const[]) {
  int last = 1;
  while (arguments[last + 1] != nullptr) ++last;
  std::error_code ignored;
  fs::copy_file(arguments[last - 1], arguments[last], ignored);
  *child = 1;
  return 0;
}

Rsa_key* loadKey() {
  std::ifstream file(QUILLORY_SOURCE_DIR "/tests/data/signatures/key_1040.hex");
  const std::string hex{std::istreambuf_iterator<char>(file), {}};
  std::string der(hex.size() / 2 + 2, '\0');
  const int length = quillory::hexToBytes(reinterpret_cast<unsigned char*>(der.data()),
                                          static_cast<int>(der.size()), hex.c_str());
  return quillory::loadDEREncodedPublicKey(reinterpret_cast<unsigned char*>(der.data()), length);
}

void removeSite() { fs::remove_all(site); }

void extractAsTail(std::FILE* stream, const char* destDir) {
  while (quillory::extractArchiveFileIgnoreSignature("lzma64", "unpack200", destDir, stream, key) ==
         0) {
  }
}

// Waits and refusals end here.
void extract(bool asTail, const std::string& archive, const std::string& destDir) {
  const quillory::OwnedFile stream(std::fopen(archive.c_str(), "rb"));
  isExtracting = true;
  if (setjmp(refused) == 0) {
    try {
      if (asTail) {
        extractAsTail(stream.get(), destDir.c_str());
      } else {
        quillory::extractArchive("unpack200", archive.c_str(), destDir.c_str(), key);
      }
    } catch (const Waited&) {
    }
  }
  isExtracting = false;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  std::string name = (fs::temp_directory_path() / "quillory-fuzz-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) std::abort();
  site = name;
  std::atexit(removeSite);
  key = loadKey();
  quillory::timeCalls.sleepMicros = +[](std::uint64_t) { throw Waited(); };
  quillory::processCalls = {&copyAsTool,
                            +[](pid_t child, int* status) {
                              *status = 0;
                              return child;
                            },
                            +[](const char*) { return 0; }};
  return key == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string destDir = site / "dest";
  const std::string archive = site / "archive";
  fs::create_directory(destDir);
  std::ofstream(archive, std::ios::binary)
      .write(reinterpret_cast<const char*>(data + 1), static_cast<std::streamsize>(size - 1));

  extract(data[0] % 2 == 1, archive, destDir);

  for (const auto& entry : fs::directory_iterator(site))
    promise(entry.path() == archive || entry.path() == destDir);
  fs::remove_all(destDir);
  fs::remove(archive);
  return 0;
}
