#include "java/whole_copy.h"

#include <cstdio>
#include <vector>

#include "support/log.h"
#include "support/owned.h"

namespace quillory {
namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

bool copyContent(std::FILE* source, OutputFile& copy) {
  std::vector<char> block(kBlockBytes);
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), source))
    if (!copy.write(block.data(), count)) return false;
  return std::ferror(source) == 0 && copy.stream() != nullptr && std::fflush(copy.stream()) == 0;
}

}  // namespace

bool copyWhole(const std::string& source, OutputFile& copy, const std::string& target) {
  logMessage("[Extractor] Copying FILE %s\n", target.c_str());
  const OwnedFile from(std::fopen(source.c_str(), "rb"));
  if (from == nullptr) {
    logMessage("[Extractor] *************************** Unable to open source file for copy %s\n",
               source.c_str());
    return false;
  }
  if (copyContent(from.get(), copy) && copy.commit()) return true;
  logMessage(
      "[Extractor] *************************** Unable to open destination file for copy %s\n",
      target.c_str());
  return false;
}

}  // namespace quillory
